#include "dialogs/protocols/SessionSsh2Page.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionSsh2Page::SessionSsh2Page(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"SSH2", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  NAddConnectionRows(form, connect, connect.m_port, NLogon::kUsernameAndPassword);
  form.Group(u"Authentication");
  form.CheckBox(u"Password authentication", connect.m_ssh2PasswordAuthentication);
  NFormControl& publicKey = form.CheckBox(u"Public key authentication", connect.m_ssh2PublicKeyAuthentication);
  form.File(u"Identity file", connect.m_identityFilename).EnabledWhenChecked(publicKey);
  form.CheckBox(u"Keyboard-interactive authentication", connect.m_ssh2KeyboardInteractiveAuthentication);
  form.Group(u"Options");
  form.CheckBox(u"Compression", connect.m_compression);
  form.CheckBox(u"Agent forwarding", connect.m_agentForwarding);
  form.CheckBox(u"X11 forwarding", connect.m_x11Forwarding);
  form.Text(u"Ciphers", connect.m_cipherList)
      .Tip(u"In order of preference, separated by commas; empty for the default.");
  form.EndGroup();
}
