#include "dialogs/protocols/SessionFtpPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionFtpPage::SessionFtpPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"FTP", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  const NConnectionRows rows = NAddConnectionRows(form, connect, connect.m_ftpPort, NLogon::kUsernameAndPassword);
  NFormControl& anonymous = form.CheckBox(u"Anonymous login", connect.m_ftpAnonymousLogin);
  // An anonymous login sends "anonymous" and the global anonymous password.
  const auto named = [&anonymous] {
    const bool* ticked = std::get_if<bool>(&anonymous.Value());
    return !(ticked && *ticked);
  };
  rows.username->EnabledWhen(named);
  rows.password->EnabledWhen(named);
  form.CheckBox(u"Passive mode", connect.m_ftpPassiveMode);
}
