#include "dialogs/protocols/SessionRloginPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionRloginPage::SessionRloginPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"RLogin", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  // The user name travels with the connection; a password, if any, is
  // asked by the host.
  NAddConnectionRows(Form(), connect, connect.m_rloginPort, NLogon::kUsername);
}
