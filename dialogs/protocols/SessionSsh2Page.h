#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "SSH2": the host, the logon, the authentication methods offered and the channel's options.
class SessionSsh2Page final : public SessionProtocolPage {
 public:
  SessionSsh2Page(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
