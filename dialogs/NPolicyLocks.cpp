#include "dialogs/NPolicyLocks.h"

NLockRule NSavePasswordsLock(const NPolicy& policy) {
  return [policy]() -> std::optional<NUnicodeString> {
    if (policy.PasswordsDisabled())
      return NUnicodeString(u"Passwords are turned off by the \"Disable Passwords\" policy.");
    if (policy.FixesSavePasswords())
      return NUnicodeString(u"The \"Save Passwords\" policy does not allow passwords to be saved.");
    return std::nullopt;
  };
}

NLockRule NSaveUsernamesLock(const NPolicy& policy) {
  return [policy]() -> std::optional<NUnicodeString> {
    if (policy.FixesSaveUsernames())
      return NUnicodeString(u"The \"Save Usernames\" policy does not allow user names to be saved.");
    return std::nullopt;
  };
}
