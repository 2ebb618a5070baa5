#include "dialogs/protocols/SessionTelnetPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionTelnetPage::SessionTelnetPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"Telnet", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  // Telnet logs on at the host's own prompt: nothing to ask here.
  NAddConnectionRows(form, connect, connect.m_telnetPort, NLogon::kNone);
  form.CheckBox(u"Force character mode", connect.m_telnetForceCharacterMode)
      .Tip(u"Send each key at once, even when the host asks for line mode.");
}
