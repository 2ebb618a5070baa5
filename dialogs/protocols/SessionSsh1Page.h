#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "SSH1": the host, the logon, the cipher and the authentication method.
class SessionSsh1Page final : public SessionProtocolPage {
 public:
  SessionSsh1Page(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
