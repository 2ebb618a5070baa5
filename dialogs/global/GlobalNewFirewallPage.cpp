#include "dialogs/global/GlobalNewFirewallPage.h"

#include "config/NControlCodecs.h"
#include "dialogs/NPolicyLocks.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"

GlobalNewFirewallPage::GlobalNewFirewallPage() : NPropertyTreePage(u"Firewall") {
  m_firewall.Load();
  const NPolicy policy = NReadPolicy();
  NForm& form = Form();
  NFormControl& type = form.Choice(u"Type", m_firewall.m_type,
                                   {{u"None", std::int64_t{NFirewallConfig::kNone}},
                                    {u"SOCKS version 4", std::int64_t{NFirewallConfig::kSocks4}},
                                    {u"SOCKS version 5", std::int64_t{NFirewallConfig::kSocks5}},
                                    {u"HTTP (CONNECT)", std::int64_t{NFirewallConfig::kHttpConnect}}});
  form.Group(u"Firewall").EnabledWhen([&type] {
    const std::int64_t* chosen = std::get_if<std::int64_t>(&type.Value());
    return chosen && *chosen != NFirewallConfig::kNone;
  });
  form.Text(u"Hostname", m_firewall.m_hostname);
  form.Number(u"Port", m_firewall.m_port, 1, 65535);
  form.Text(u"Username", m_firewall.m_username).LockedWhen(NSaveUsernamesLock(policy));
  form.Password(u"Password", m_firewall.m_password).LockedWhen(NSavePasswordsLock(policy));
  form.CheckBox(u"Connect to this computer directly", m_firewall.m_localConnectionsDirect);
  form.EndGroup();
}

bool GlobalNewFirewallPage::OnOK() {
  if (!NPropertyTreePage::OnOK()) return false;
  if (!m_firewall.IsModified()) return true;
  NReportMessageParams params;
  if (m_firewall.Save(params)) return true;
  NMessageBox(nullptr, params.GetCode(), params.GetText(), NGetAppName(), kMessageBoxOk | kMessageBoxIconError);
  return false;
}
