#include "dialogs/session/SessionLogonScriptsPage.h"

namespace {

bool SendsInitialReturn(const NUnicodeString& protocol) {
  for (const char16_t* name : {u"Telnet", u"RLogin", u"Serial", u"TAPI"}) {
    if (protocol.EqualsIgnoreCase(name)) return true;
  }
  return false;
}

}  // namespace

SessionLogonScriptsPage::SessionLogonScriptsPage(ISessionConfig& session)
    : NPropertyTreePage(u"Logon Actions"), m_session(session) {
  SessionConfig& config = session.Config();
  NForm& form = Form();
  const auto connects = [this] { return !Protocol().EqualsIgnoreCase(u"None"); };
  form.CheckBox(u"Send initial carriage return", config.m_sendInitialCarriageReturn).EnabledWhen([this] {
    return SendsInitialReturn(Protocol());
  });

  form.Group(u"Login script").EnabledWhen(connects);
  NFormControl& script = form.CheckBox(u"Use login script", config.m_useLoginScript);
  form.StringList(u"Expect and send strings", config.m_loginScriptStrings).EnabledWhenChecked(script);

  form.Group(u"Script file").EnabledWhen(connects);
  NFormControl& file = form.CheckBox(u"Run a script file", config.m_useScriptFile);
  form.File(u"Script file name", config.m_scriptFilename).EnabledWhenChecked(file);
  form.Text(u"Script arguments", config.m_scriptArguments).EnabledWhenChecked(file);

  form.Group(u"Prompt").EnabledWhen(connects);
  NFormControl& wait = form.CheckBox(u"Wait for prompt", config.m_waitForPrompt);
  form.Text(u"Prompt text", config.m_waitForPromptText).EnabledWhenChecked(wait);
  form.Number(u"Prompt timeout (seconds)", config.m_waitForPromptTimeout, 0, 3600).EnabledWhenChecked(wait);
  form.EndGroup();
}

NUnicodeString SessionLogonScriptsPage::Protocol() const {
  return m_connect ? m_connect->TerminalProtocol() : m_session.Config().m_connect.m_protocolName.Get();
}

// The rules ask for the protocol each time; only the record's values need
// reloading.
void SessionLogonScriptsPage::Refresh() { NPropertyTreePage::Refresh(); }
