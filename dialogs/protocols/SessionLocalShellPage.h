#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "Local Shell": the program run on this machine and where it starts.
class SessionLocalShellPage final : public SessionProtocolPage {
 public:
  SessionLocalShellPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
