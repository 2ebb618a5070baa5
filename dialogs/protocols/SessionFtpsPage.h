#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "FTPS": the host, the logon and how TLS starts.
class SessionFtpsPage final : public SessionProtocolPage {
 public:
  SessionFtpsPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
