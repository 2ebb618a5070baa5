#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "Telnet": the host and how characters are sent.
class SessionTelnetPage final : public SessionProtocolPage {
 public:
  SessionTelnetPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
