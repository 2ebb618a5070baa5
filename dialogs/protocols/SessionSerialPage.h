#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "Serial": the port and its line settings.
class SessionSerialPage final : public SessionProtocolPage {
 public:
  SessionSerialPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
