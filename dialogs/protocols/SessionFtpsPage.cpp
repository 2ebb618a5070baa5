#include "dialogs/protocols/SessionFtpsPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionFtpsPage::SessionFtpsPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"FTPS", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  NAddConnectionRows(form, connect, connect.m_ftpsPort, NLogon::kUsernameAndPassword);
  form.CheckBox(u"Implicit TLS", connect.m_ftpsImplicitTls)
      .Tip(u"TLS from the first byte, rather than after AUTH TLS.");
  form.CheckBox(u"Passive mode", connect.m_ftpPassiveMode);
}
