#include "dialogs/session/SessionMappedKeysPage.h"

SessionMappedKeysPage::SessionMappedKeysPage(ISessionConfig& session, GlobalConfig& global)
    : NPropertyTreePage(u"Mapped Keys"), m_global(global) {
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
}
