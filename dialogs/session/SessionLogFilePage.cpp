#include "dialogs/session/SessionLogFilePage.h"

#include <cstdint>

SessionLogFilePage::SessionLogFilePage(ISessionConfig& session) : NPropertyTreePage(u"Log File") {
  SessionConfig& config = session.Config();
  NForm& form = Form();
  form.File(u"Log file name", config.m_logFilename);

  form.Group(u"Options");
  form.Choice(u"When the file exists", config.m_logMode,
              {{u"Overwrite", std::int64_t{0}}, {u"Append", std::int64_t{1}}});
  form.CheckBox(u"Prompt for file name", config.m_logPrompt);
  form.CheckBox(u"Start log upon connect", config.m_startLogUponConnect);
  form.CheckBox(u"Raw log", config.m_rawLog);
  form.CheckBox(u"Log multiple sessions", config.m_logMultipleSessions);
  form.CheckBox(u"Unique file name when the file is in use", config.m_uniqueLogFileNameWhenInUse);
  form.CheckBox(u"New log file at midnight", config.m_newLogFileAtMidnight);
  form.Number(u"Trace level", config.m_traceLevel, 0, 10);

  form.Group(u"Custom log messages");
  form.Text(u"On connect", config.m_customLogMessageConnect);
  form.Text(u"On disconnect", config.m_customLogMessageDisconnect);
  form.Text(u"On each line", config.m_customLogMessageEachLine);
  form.CheckBox(u"Log only custom messages", config.m_logOnlyCustom);
  form.EndGroup();
}
