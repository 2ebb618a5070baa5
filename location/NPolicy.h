#pragma once

#include <optional>

#include "base/NExport.h"
#include "platform/NRegistry.h"

// The administrator's policies: DWORD values (non-zero = true) under
// "Software\Policies\Nerrin" and its subkey "Global", in the hive that the
// registry base was found in (location/NRegistryBase.h). A value in
// "Global" takes the place of the same value in the key above it.
//
// A policy only ever takes a choice away from the user, never forces one
// on: "Save Passwords" 0 means passwords are never saved, whatever the user
// chose; "Save Usernames" 0 likewise for user names; "Disable Passwords"
// non-zero turns passwords off altogether, and with them their saving. A
// policy value of 1, or none, leaves the user's choice as it is.
struct NPolicy {
  std::optional<bool> savePasswords;     // "Save Passwords"
  std::optional<bool> saveUsernames;     // "Save Usernames"
  std::optional<bool> disablePasswords;  // "Disable Passwords"

  bool PasswordsDisabled() const { return disablePasswords.value_or(false); }
  // Whether the policy decides the option, whatever the user chose.
  bool FixesSavePasswords() const { return PasswordsDisabled() || !savePasswords.value_or(true); }
  bool FixesSaveUsernames() const { return !saveUsernames.value_or(true); }
  // The user's choice as the policy leaves it.
  bool SavePasswords(bool userChoice) const { return userChoice && !FixesSavePasswords(); }
  bool SaveUsernames(bool userChoice) const { return userChoice && !FixesSaveUsernames(); }
};

// The policies now in force. A missing key or value is no policy; a value
// that cannot be read counts as missing.
CFGDECK_API NPolicy NReadPolicy();

// The policies under `hive` of `registry`.
NPolicy NReadPolicy(NRegistry& registry, NRegistryHive hive);
