#include "dialogs/session/SessionAppearancePage.h"

#include <cmath>
#include <cstdint>
#include <string>

#include "config/NControlCodecs.h"

namespace {

// A font height in pixels as points at `dpi`.
long Points(std::int32_t height, int dpi) {
  return std::lround(std::abs(static_cast<double>(height)) * 72.0 / (dpi > 0 ? dpi : 96));
}

}  // namespace

SessionAppearancePage::SessionAppearancePage(ISessionConfig& session, GlobalConfig& global, int screenDpi,
                                             bool& fontsChanged)
    : NPropertyTreePage(u"Appearance"), m_fontsChanged(fontsChanged) {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  const auto redrawn = [this](NFormControl& control) -> NFormControl& {
    m_redrawn.push_back(&control);
    return control;
  };

  form.Group(u"Colours");
  redrawn(form.Text(u"Colour scheme", terminal.m_colorScheme));
  redrawn(form.CheckBox(u"Colour scheme overrides ANSI colour", terminal.m_colorSchemeOverridesAnsiColor));
  redrawn(form.Color(u"Foreground colour", terminal.m_foreground));
  redrawn(form.Color(u"Background colour", terminal.m_background));
  redrawn(form.Color(u"Bold colour", terminal.m_bold));

  form.Group(u"Fonts");
  redrawn(form.Font(u"Normal font", terminal.m_normalFont));
  // A label cannot follow edits: it gives the size the session has now.
  form.Label(u"The saved normal font is " +
             NUnicodeString::FromUtf8(std::to_string(Points(terminal.m_normalFont.Get().height, screenDpi))) +
             u" points on this screen.");
  NFormControl& narrow = redrawn(form.CheckBox(u"Use narrow font", terminal.m_useNarrowFont));
  redrawn(form.Font(u"Narrow font", terminal.m_narrowFont)).EnabledWhenChecked(narrow);
  redrawn(form.Text(u"Font family", terminal.m_fontFamily));
  redrawn(form.Number(u"Font size (points)", terminal.m_fontSize, 1, 200));
  form.Label(global.m_allowProportionalFonts.Get()
                 ? u"Proportional fonts are allowed (Appearance page in the Global Options dialog)."
                 : u"Only fixed-width fonts are allowed (Appearance page in the Global Options dialog).");

  form.Group(u"Cursor");
  form.Choice(u"Cursor style", terminal.m_cursorStyle,
              {{u"Block", std::int64_t{0}}, {u"Underline", std::int64_t{1}}, {u"Vertical bar", std::int64_t{2}}});
  form.CheckBox(u"Blinking cursor", terminal.m_blinkingCursor);
  NFormControl& useCursorColour = redrawn(form.CheckBox(u"Use cursor colour", terminal.m_useCursorColor));
  redrawn(form.Color(u"Cursor colour", terminal.m_cursorColor)).EnabledWhenChecked(useCursorColour);
  form.EndGroup();
}

bool SessionAppearancePage::OnOK() {
  // Asked before storing, which makes every control unchanged again.
  bool redraw = false;
  for (const NFormControl* control : m_redrawn) redraw = redraw || control->IsChanged();
  const bool stored = NPropertyTreePage::OnOK();
  if (redraw) m_fontsChanged = true;
  return stored;
}
