#include "dialogs/global/GlobalTerminalAdvancedPage.h"

GlobalTerminalAdvancedPage::GlobalTerminalAdvancedPage(GlobalConfig& global) : NPropertyTreePage(u"Advanced") {
  NForm& form = Form();
  form.Group(u"Command window and button bar");
  form.CheckBox(u"Show the command window", global.m_showChatWindow);
  form.Number(u"Command history", global.m_maxChatWindowHistory, 0, 10000);
  form.CheckBox(u"Send commands to all tabs at startup", global.m_enableSendChatToAllTabsOnStartup);
  form.CheckBox(u"Swap Enter and Ctrl+Enter in the command window", global.m_swapEnterAndCtrlEnterInCommandWindow);
  form.Text(u"Button bar shown", global.m_userButtonBar);
  form.Radio(u"Button bar", global.m_buttonBarLocation, {{u"Bottom", std::int64_t{0}}, {u"Top", std::int64_t{1}}});

  form.Group(u"Keys and transfers");
  form.CheckBox(u"Show the default key mappings", global.m_showDefaultKeyMappings);
  form.CheckBox(u"Upload ZMODEM files as text", global.m_zmodemUploadAscii);
  form.CheckBox(u"Upload Kermit files as text", global.m_kermitUploadAscii);
  form.CheckBox(u"Use the keychain", global.m_useKeychain);
  form.CheckBox(u"Keep the agent open", global.m_keepSharedMemoryAgentOpen);
  NFormControl& execute = form.CheckBox(u"Run commands from escape sequences", global.m_executeEscapeSequence);
  form.CheckBox(u"Hide their exit codes", global.m_suppressExecuteEscapeSequenceExitCodes).EnabledWhenChecked(execute);
  form.Number(u"Hex view buffer (KB)", global.m_hexViewBuffer, 1, 100000);
  form.Text(u"Hex view font", global.m_hexViewFont);

  form.Group(u"Prompts not shown");
  form.CheckBox(u"Different window geometry", global.m_suppressDifferentGeometryDialog);
  form.CheckBox(u"Several sessions open", global.m_suppressMultipleSessionsWarning);
  form.CheckBox(u"Disconnect the selected sessions", global.m_suppressDisconnectSelectedPrompt);
  form.CheckBox(u"Disconnect all sessions", global.m_suppressDisconnectAllPrompt);
  form.CheckBox(u"Edit several sessions", global.m_suppressEditMultipleSessionsDialog);
  form.CheckBox(u"Read-only session options", global.m_suppressReadOnlySessionOptionsWarning);
  form.CheckBox(u"A mapped key does what it does by default", global.m_suppressMappedKeyIsDefaultWarning);
  form.EndGroup();
}
