#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "SCP": the host and the logon, with SSH2's key file.
class SessionScpPage final : public SessionProtocolPage {
 public:
  SessionScpPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
