#include "dialogs/session/SessionEmacsPage.h"

SessionEmacsPage::SessionEmacsPage(ISessionConfig& session) : NPropertyTreePage(u"Emacs") {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  NFormControl& emacs = form.CheckBox(u"Use Alt as meta key", terminal.m_emacsMode);
  form.CheckBox(u"Send 8-bit meta key", terminal.m_emacsMode8Bit).EnabledWhenChecked(emacs);
  form.CheckBox(u"Preserve Alt-Gr", terminal.m_preserveAltGr);
}
