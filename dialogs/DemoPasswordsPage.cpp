#include "dialogs/DemoPasswordsPage.h"

#include "dialogs/NPolicyLocks.h"

DemoPasswordsPage::DemoPasswordsPage(GlobalConfig& global, const NPolicy& policy) : NPropertyTreePage(u"Passwords") {
  NForm& form = Form();
  form.Password(u"Anonymous FTP password", global.m_anonymousPassword).LockedWhen(NSavePasswordsLock(policy));
  form.CheckBox(u"Always prompt for credentials", global.m_alwaysPromptForAuthInfo);
}
