#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "SFTP": the host and the logon, with SSH2's key file.
class SessionSftpPage final : public SessionProtocolPage {
 public:
  SessionSftpPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
