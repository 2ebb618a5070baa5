#include "dialogs/session/SessionFtpSftpPage.h"

#include "config/NControlCodecs.h"

SessionFtpSftpPage::SessionFtpSftpPage(ISessionConfig& session, bool readOnly)
    : NPropertyTreePage(u"FTP/SFTP"), m_session(session) {
  SessionConfig& config = session.Config();
  NForm& form = Form();
  form.SetReadOnly(readOnly);

  form.Group(u"Transfers");
  form.CheckBox(u"Verify retrieve file status", config.m_verifyRetrieveFileStatus);
  form.CheckBox(u"Resolve symbolic links", config.m_resolveSymbolicLinks);
  form.CheckBox(u"Disable directory tree detection", config.m_disableDirectoryTreeDetection);
  form.CheckBox(u"Disable remote file system watches", config.m_disableRemoteFileSystemWatches);
  form.Number(u"Restart data size (bytes)", config.m_restartDataSize, 0, INT32_MAX);
  form.Text(u"Restart data file", config.m_restartDatafilePath);
  form.Number(u"Trace level", config.m_parrowTraceLevel, 0, 10);
  form.StringList(u"Commands after login", config.m_parrowPostLoginUserCommands);

  form.Group(u"SFTP").EnabledWhen([this] { return TransferProtocol().EqualsIgnoreCase(u"SFTP"); });
  form.CheckBox(u"Use multiple SFTP channels", config.m_useMultipleSftpChannels);
  form.CheckBox(u"Disable STAT for SFTP directory validation", config.m_disableStatForSftpDirectoryValidation);

  form.Group(u"FTP").EnabledWhen([this] {
    const NUnicodeString protocol = TransferProtocol();
    return protocol.EqualsIgnoreCase(u"FTP") || protocol.EqualsIgnoreCase(u"FTPS");
  });
  form.CheckBox(u"Disable MLSX", config.m_disableMlsx);
  form.CheckBox(u"Use control address for data connections", config.m_parrowUseControlAddressForData);

  form.Group(u"SCP").EnabledWhen([this] { return TransferProtocol().EqualsIgnoreCase(u"SCP"); });
  form.StringList(u"SCP shell prompts", config.m_scpShellPrompts);
  form.Password(u"SCP shell password", config.m_scpShellPassword);

  form.Group(u"PGP");
  NFormControl& pgp = form.CheckBox(u"Use PGP for all transfers", config.m_usePgpForAllTransfers);
  form.Text(u"PGP upload command", config.m_pgpUploadCommand).EnabledWhenChecked(pgp);
  form.Text(u"PGP download command", config.m_pgpDownloadCommand).EnabledWhenChecked(pgp);
  form.EndGroup();
}

NUnicodeString SessionFtpSftpPage::TransferProtocol() const {
  return m_connect ? m_connect->TransferProtocol() : m_session.Config().m_connect.m_fileTransferProtocolName.Get();
}

// The rules ask for the protocol each time; only the record's values need
// reloading.
void SessionFtpSftpPage::Refresh() { NPropertyTreePage::Refresh(); }
