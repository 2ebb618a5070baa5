#include "dialogs/global/GlobalAppearancePage.h"

#include <cmath>
#include <string>

#include "config/NControlCodecs.h"

GlobalAppearancePage::GlobalAppearancePage(GlobalConfig& global, unsigned screenDpi) : NPropertyTreePage(u"Appearance") {
  NForm& form = Form();
  form.Group(u"Fonts");
  form.CheckBox(u"Allow proportional fonts", global.m_allowProportionalFonts);
  form.CheckBox(u"Smooth fonts", global.m_enableFontSmoothing);
  form.Font(u"Connect dialog font", global.m_connectDialogFont);
  const double points = std::abs(static_cast<double>(global.m_connectDialogFont.Get().height)) * 72.0 /
                        (screenDpi > 0 ? screenDpi : 96);
  // A label cannot follow edits: it gives the size the font has now.
  form.Label(u"The saved connect dialog font is " + NUnicodeString::FromUtf8(std::to_string(std::lround(points))) +
             u" points on this screen.");
  form.CheckBox(u"Zoom with Ctrl and the scroll wheel", global.m_zoomOnCtrlScrollwheel);
  form.CheckBox(u"Zoom with the keyboard", global.m_zoomOnKeyboardShortcut);

  form.Group(u"Window");
  form.CheckBox(u"Horizontal scroll bar", global.m_horizontalScrollbar);
  form.CheckBox(u"Vertical scroll bar", global.m_verticalScrollbar);
  form.Number(u"Left margin (pixels)", global.m_viewLeftMargin, 0, 100);
  form.CheckBox(u"Disable resizing", global.m_disableResize);
  form.CheckBox(u"Clip on resize", global.m_clipOnResize);
  form.CheckBox(u"Use the system caret", global.m_useSystemCaret);
  form.CheckBox(u"Blink whether focused or not", global.m_focusDoesNotAffectBlink);
  NFormControl& alpha = form.CheckBox(u"Transparency", global.m_alphaTransparency);
  form.Number(u"Active window opacity", global.m_activeWindowAlpha, 25, 255).EnabledWhenChecked(alpha);
  form.Number(u"Inactive window opacity", global.m_inactiveWindowAlpha, 25, 255).EnabledWhenChecked(alpha);

  form.Group(u"Indicators");
  form.CheckBox(u"Show the cursor position", global.m_showCursorPositionIndicator);
  form.CheckBox(u"Show the window size", global.m_showWindowSizeIndicator);
  NFormControl& elapsed = form.CheckBox(u"Show the elapsed time", global.m_showElapsedTime);
  form.CheckBox(u"Never show seconds", global.m_neverShowSeconds).EnabledWhenChecked(elapsed);
  form.EndGroup();
}
