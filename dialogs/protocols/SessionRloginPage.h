#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "RLogin": the host and the user name the login carries.
class SessionRloginPage final : public SessionProtocolPage {
 public:
  SessionRloginPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
