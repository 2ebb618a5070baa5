#include "dialogs/protocols/SessionSsh1Page.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionSsh1Page::SessionSsh1Page(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"SSH1", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  NAddConnectionRows(form, connect, connect.m_port, NLogon::kUsernameAndPassword);
  form.Choice(u"Cipher", connect.m_ssh1Cipher, NNumberChoices({{u"3DES", 0}, {u"Blowfish", 1}, {u"DES", 2}}));
  form.Choice(u"Authentication", connect.m_ssh1Authentication,
              NNumberChoices({{u"Password", 0}, {u"RSA", 1}, {u"TIS", 2}}));
}
