#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "TAPI": the number the modem dials.
class SessionTapiPage final : public SessionProtocolPage {
 public:
  SessionTapiPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
