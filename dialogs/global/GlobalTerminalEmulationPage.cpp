#include "dialogs/global/GlobalTerminalEmulationPage.h"

GlobalTerminalEmulationPage::GlobalTerminalEmulationPage(GlobalConfig& global) : NPropertyTreePage(u"Terminal") {
  NForm& form = Form();
  form.Group(u"Mouse and clipboard");
  form.CheckBox(u"Copy on select", global.m_copyOnSelect);
  form.CheckBox(u"Paste on middle button", global.m_pasteOnMiddleButton);
  form.CheckBox(u"Paste on right button", global.m_pasteOnRightButton);
  form.CheckBox(u"Hide the mouse pointer while typing", global.m_hideMousePointerOnKeypress);
  form.CheckBox(u"Open links with Ctrl+click", global.m_openUrlWithCtrlClick);
  form.Radio(u"Clipboard format", global.m_clipboardDataFormat,
             {{u"Unicode text", std::int64_t{0}}, {u"Text", std::int64_t{1}}, {u"Rich text", std::int64_t{2}}});

  form.Group(u"Connection");
  form.CheckBox(u"Show the connection closed dialog", global.m_showConnectionClosedDialog);
  form.CheckBox(u"Confirm disconnection", global.m_showConfirmDisconnectDialog);
  NFormControl& reconnect = form.CheckBox(u"Reconnect automatically", global.m_autoReconnect);
  form.Number(u"Reconnect interval (seconds)", global.m_autoReconnectInterval, 1, 3600).EnabledWhenChecked(reconnect);
  form.CheckBox(u"Hide the reconnect dialog", global.m_hideAutoReconnectDialog).EnabledWhenChecked(reconnect);
  form.Choice(u"Alt key", global.m_altSelectsMenu,
              {{u"Is the meta key", std::int64_t{0}}, {u"Selects the menu", std::int64_t{1}}});
  form.Choice(u"Check the Telnet command of a shell session", global.m_checkShellTelnetCommand,
              {{u"Never", std::int64_t{0}}, {u"Always", std::int64_t{1}}});

  form.Group(u"Buffer and sending");
  form.Number(u"Most scrollback lines", global.m_maxScrollbackBufferSize, 0, 1024000);
  form.Number(u"Most columns", global.m_maxColumns, 80, 1024);
  form.Number(u"Line send delay (ms)", global.m_lineSendDelay, 0, 10000);
  form.Number(u"Character send delay (ms)", global.m_characterSendDelay, 0, 10000);
  form.CheckBox(u"Treat ambiguous CJK characters as wide", global.m_treatCjkAmbiguousCharsAsWide);
  form.File(u"Terminal log file", global.m_terminalLogFile, u"Log files (*.log)");
  form.EndGroup();
}
