#include "dialogs/global/GlobalAdvancedOptionsPage.h"

GlobalAdvancedOptionsPage::GlobalAdvancedOptionsPage(GlobalConfig& global) : NPropertyTreePage(u"Advanced") {
  NForm& form = Form();
  form.Group(u"Connection");
  form.Number(u"Time-out (seconds, 0: none)", global.m_timeout, 0, 3600);
  form.Number(u"Retry attempts", global.m_retryAttempts, 0, 1000);
  form.Number(u"Retry delay (seconds)", global.m_retryDelay, 0, 3600);
  form.CheckBox(u"Disconnect after a resume time-out", global.m_disconnectAfterResumeTimeout);
  form.CheckBox(u"Verify the status of retrieved files", global.m_verifyRetrieveFileStatus);
  form.Number(u"Receive buffer (bytes, 0: the system's)", global.m_receiveBufferSize, 0, 16777216);
  form.Number(u"Send buffer (bytes, 0: the system's)", global.m_sendBufferSize, 0, 16777216);
  form.Number(u"Refresh delay (ms)", global.m_refreshDelay, 0, 60000);

  form.Group(u"Logs");
  NFormControl& log = form.CheckBox(u"Write a log file", global.m_enableLogFile);
  form.File(u"Log file", global.m_logFile, u"Log files (*.log)").EnabledWhenChecked(log);
  NFormControl& syncLog = form.CheckBox(u"Write a synchronisation log", global.m_enableSynchronizeAppLogFile);
  form.File(u"Synchronisation log", global.m_synchronizeAppLogFile, u"Log files (*.log)").EnabledWhenChecked(syncLog);
  form.Number(u"Log buffer (lines)", global.m_logBufferSize, 0, 1000000);
  form.CheckBox(u"Open logs for writing only", global.m_logUsesGenericWriteFlag);

  form.Group(u"Permissions and editing");
  form.Number(u"New file permissions (octal as decimal)", global.m_filePermissions, 0, 7777);
  form.Number(u"New folder permissions (octal as decimal)", global.m_directoryPermissions, 0, 7777);
  form.File(u"Editor", global.m_notepad, u"Programs (*.exe)");
  form.Choice(u"After a remote file is edited", global.m_remoteEditUploadAction,
              {{u"Ask before uploading it", std::int64_t{0}}, {u"Upload it", std::int64_t{1}}});
  form.CheckBox(u"Upload an edited file when it is saved", global.m_remoteEditUploadOnModify);
  form.CheckBox(u"Never edit from the cache", global.m_neverUseCachedFileForRemoteEditing);
  form.EndGroup();
}
