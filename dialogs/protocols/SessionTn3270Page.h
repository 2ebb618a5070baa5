#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "TN3270": the host, the terminal type negotiated and TLS.
class SessionTn3270Page final : public SessionProtocolPage {
 public:
  SessionTn3270Page(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
