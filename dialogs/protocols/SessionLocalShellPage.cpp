#include "dialogs/protocols/SessionLocalShellPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionLocalShellPage::SessionLocalShellPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"Local Shell", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  form.Text(u"Shell command", connect.m_shellCommand).Tip(u"Empty for your own shell.");
  form.Folder(u"Start directory", connect.m_startDirectory);
}
