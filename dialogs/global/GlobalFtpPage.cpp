#include "dialogs/global/GlobalFtpPage.h"

#include "config/NControlCodecs.h"
#include "dialogs/NPolicyLocks.h"

GlobalFtpPageBase::GlobalFtpPageBase(GlobalConfig& global) : NPropertyTreePage(u"FTP") {
  NForm& form = Form();
  form.Radio(u"Data connection", global.m_dataConnectionType,
             {{u"Passive", std::int64_t{0}}, {u"Active", std::int64_t{1}}});
  NFormControl& range = form.CheckBox(u"Limit active ports to a range", global.m_ftpEnablePortRange);
  form.Number(u"Lowest port", global.m_ftpPortRangeMinimum, 1024, 65535).EnabledWhenChecked(range);
  form.Number(u"Highest port", global.m_ftpPortRangeMaximum, 1024, 65535).EnabledWhenChecked(range);
  form.CheckBox(u"Keep connections alive", global.m_keepAlive);
  form.CheckBox(u"Disable server-to-server transfers", global.m_disableServerToServerTransfers);
  form.CheckBox(u"Disable folder tree detection", global.m_disableDirectoryTreeDetection);
  form.CheckBox(u"Resolve symbolic links", global.m_resolveSymbolicLinks);
  form.CheckBox(u"Backslashes always separate folders", global.m_prwclBackslashesAlwaysPathSeparators);
  form.Password(u"Anonymous password", global.m_anonymousPassword).LockedWhen(NSavePasswordsLock(NReadPolicy()));
}
