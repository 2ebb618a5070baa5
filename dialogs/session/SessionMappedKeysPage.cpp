#include "dialogs/session/SessionMappedKeysPage.h"

SessionMappedKeysPage::SessionMappedKeysPage(ISessionConfig& session, GlobalConfig& global)
    : NPropertyTreePage(u"Mapped Keys") {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  form.Group(u"Keymap");
  form.Text(u"Keymap name", terminal.m_keymapName);
  form.File(u"Keymap file", terminal.m_keymapFilename, u"Keymap files (*.key)");
  form.StringList(u"Key mappings", terminal.m_keymap);
  form.Group(u"Other mappings");
  form.CheckBox(u"Map Delete key", terminal.m_mapDelete);
  form.CheckBox(u"Map Backspace key", terminal.m_mapBackspace);
  form.EndGroup();
  // Alt combinations then open the menu bar unless a mapping takes them first.
  if (global.m_altSelectsMenu.Get() != 0) {
    form.Label(u"Alt opens the menu bar (a global option): map an Alt combination to send it to the host.");
  }
}
