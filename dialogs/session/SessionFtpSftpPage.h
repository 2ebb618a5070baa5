#pragma once

#include "config/ISessionConfig.h"
#include "dialogs/session/SessionConnectPage.h"
#include "uicore/NPropertyTreePage.h"

// "FTP/SFTP": the file-transfer session's options; those of one protocol
// are offered only while that protocol is chosen.
class SessionFtpSftpPage final : public NPropertyTreePage {
 public:
  SessionFtpSftpPage(ISessionConfig& session, bool readOnly);

  // From now on the rules read the protocol chosen on `connect` (which
  // must outlive this page) rather than the stored one.
  void FollowProtocols(const SessionConnectPage& connect) { m_connect = &connect; }
  void Refresh() override;

 private:
  NUnicodeString TransferProtocol() const;

  ISessionConfig& m_session;
  const SessionConnectPage* m_connect = nullptr;
};
