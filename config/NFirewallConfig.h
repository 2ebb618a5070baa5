#pragma once

#include "config/NProfile.h"
#include "location/NReportMessageParams.h"

// The firewall that connections go through, under the key
// "Firewalls\Default" of the configuration store. The Global Options
// dialog's "Firewall" page edits it.
class NFirewallConfig final : public NProfileRecord {
 public:
  enum Type : std::int32_t { kNone = 0, kSocks4 = 1, kSocks5 = 2, kHttpConnect = 3 };

  // Reads the record from the registered store; the defaults when the store
  // or the key is missing.
  void Load();
  // Writes the changed fields and flushes the key; false, with params, when
  // the key could not be opened or written.
  bool Save(NReportMessageParams& params);

  NProfileInt m_type{this, u"Type"};
  NProfileString m_hostname{this, u"Hostname"};
  NProfileInt m_port{this, u"Port", 1080};
  NProfileString m_username{this, u"Username"};
  NProfileEncrypted m_password{this, u"Password V2"};
  NProfileBool m_localConnectionsDirect{this, u"Local Connections Direct", true};
};
