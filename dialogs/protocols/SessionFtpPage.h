#pragma once

#include "dialogs/protocols/SessionProtocolPage.h"

// "FTP": the host, the logon (or an anonymous one) and the data connection's mode.
class SessionFtpPage final : public SessionProtocolPage {
 public:
  SessionFtpPage(ISessionConfig& session, int mode, NPropertyTreePage& connection);
};
