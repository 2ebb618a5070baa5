#pragma once

#include <functional>
#include <optional>

#include "base/NUnicodeString.h"
#include "location/NPolicy.h"

// Why a policy locks a control, as the control shows it: a reason while the
// policy decides the setting, nothing otherwise. Each keeps a copy of the
// policy read when its dialog was made.
using NLockRule = std::function<std::optional<NUnicodeString>()>;

// Saving a password: "Disable Passwords" or "Save Passwords" 0.
NLockRule NSavePasswordsLock(const NPolicy& policy);
// Saving a user name: "Save Usernames" 0.
NLockRule NSaveUsernamesLock(const NPolicy& policy);
