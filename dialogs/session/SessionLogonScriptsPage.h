#pragma once

#include "config/ISessionConfig.h"
#include "dialogs/session/SessionConnectPage.h"
#include "uicore/NPropertyTreePage.h"

// "Logon Actions": what runs once the session connects. Offered only with
// a terminal protocol; the initial carriage return only where the
// protocol has no logon exchange of its own.
class SessionLogonScriptsPage final : public NPropertyTreePage {
 public:
  explicit SessionLogonScriptsPage(ISessionConfig& session);

  // From now on the rules read the protocol chosen on `connect` (which
  // must outlive this page) rather than the stored one.
  void FollowProtocols(const SessionConnectPage& connect) { m_connect = &connect; }
  void Refresh() override;

 private:
  NUnicodeString Protocol() const;

  ISessionConfig& m_session;
  const SessionConnectPage* m_connect = nullptr;
};
