#pragma once

#include "config/NProfile.h"

// What a session connects to and with which protocols. The protocol modules
// keep their own settings beside these; the options dialogs read the two
// protocol names to choose their pages.
class ConnectConfig final : public NProfileRecord {
 public:
  NProfileString m_protocolName{this, u"Protocol Name", NUnicodeString(u"SSH2")};
  NProfileString m_fileTransferProtocolName{this, u"File Transfer Protocol Name", NUnicodeString(u"SFTP")};
  NProfileString m_hostname{this, u"Hostname"};
  NProfileInt m_port{this, u"Port", 22};
  NProfileString m_username{this, u"Username"};
};
