#include "dialogs/protocols/SessionTn3270Page.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionTn3270Page::SessionTn3270Page(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"TN3270", mode, connection) {
  SessionConfig& config = session.Config();
  ConnectConfig& connect = config.m_connect;
  NForm& form = Form();
  NAddConnectionRows(form, connect, connect.m_tn3270Port, NLogon::kNone);
  std::vector<NChoiceItem> types;
  for (const NUnicodeString& type : TerminalConfig::Tn3270TerminalTypes()) types.push_back({type, type});
  form.Choice(u"Terminal type", config.m_terminal.m_terminalType, std::move(types));
  form.CheckBox(u"Use TLS", connect.m_tn3270UseTls);
}
