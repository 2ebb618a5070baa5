#include "dialogs/session/SessionAnsiColorPage.h"

#include <cstddef>
#include <cstdint>
#include <memory>

#include "dialogs/NColorTableEntryBinding.h"

SessionAnsiColorPage::SessionAnsiColorPage(ISessionConfig& session, GlobalConfig& global)
    : NPropertyTreePage(u"ANSI Color"), m_global(global) {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  NFormControl& useGlobal = form.CheckBox(u"Use global ANSI colours", terminal.m_useGlobalAnsiColors);
  form.Group(u"Session palette").EnabledWhenUnchecked(useGlobal);
  for (std::size_t i = 0; i < m_colours.size(); ++i) {
    m_colours[i] = &form.Bound(NControlKind::kColor, kAnsiColourNames[i],
                               std::make_unique<NColorTableEntryBinding>(terminal.m_ansiColorRgb, i));
  }
  form.Button(u"Use the global colours", [this] { ShowGlobalColours(); });
  form.EndGroup();
}

void SessionAnsiColorPage::ShowGlobalColours() {
  const NColorTable& palette = m_global.m_ansiColorRgb.Get();
  for (std::size_t i = 0; i < m_colours.size(); ++i) m_colours[i]->SetValue(static_cast<std::int64_t>(palette[i]));
}
