#include "dialogs/protocols/SessionScpPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionScpPage::SessionScpPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"SCP", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  NAddConnectionRows(form, connect, connect.m_port, NLogon::kUsernameAndPassword);
  form.File(u"Identity file", connect.m_identityFilename);
}
