#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/NStatus.h"

// The settings store of the system that the library keeps its own few
// values in (the remembered configuration folder, the administrator's
// policies): the Windows registry, or on other systems, and wherever
// CFGDECK_REGISTRY_DIR is set, a folder of INI files laid out like it.

enum class NRegistryHive { kCurrentUser, kLocalMachine };

// An open key. Value names and string values are UTF-16. Missing values are
// kFileNotFound, as the registry reports them, so that callers can tell "not
// set" from a failure. Closed when destroyed.
class NRegistryKey {
 public:
  // A value that exists with another type than the one asked for
  // (ERROR_UNSUPPORTED_TYPE).
  static constexpr std::uint32_t kWrongType = 1630;

  NRegistryKey() = default;
  NRegistryKey(const NRegistryKey&) = delete;
  NRegistryKey& operator=(const NRegistryKey&) = delete;
  virtual ~NRegistryKey() = default;

  virtual NStatus QueryString(std::u16string_view name, std::u16string* value) = 0;
  virtual NStatus QueryDword(std::u16string_view name, std::uint32_t* value) = 0;
  // Written at once. A key opened without `create` is read-only.
  virtual NStatus SetString(std::u16string_view name, std::u16string_view value) = 0;
  virtual NStatus SetDword(std::u16string_view name, std::uint32_t value) = 0;
};

class NRegistry {
 public:
  NRegistry() = default;
  NRegistry(const NRegistry&) = delete;
  NRegistry& operator=(const NRegistry&) = delete;
  virtual ~NRegistry() = default;

  // Opens `path` ("SOFTWARE\\Nerrin\\Skeldon", names separated by "\") under
  // `hive`: for reading, or with `create` for reading and writing, making
  // the key and those above it when missing. A missing key opened for
  // reading is kFileNotFound.
  virtual NStatus OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                          std::unique_ptr<NRegistryKey>* key) = 0;
};

// The folder that stands in for `hive`. With CFGDECK_REGISTRY_DIR set, its
// "HKEY_CURRENT_USER" or "HKEY_LOCAL_MACHINE" subfolder on every system, so
// that tests and portable installations never touch the user's real
// settings. Otherwise empty on Windows, meaning the native registry, and on
// other systems "$XDG_CONFIG_HOME/cfgdeck/registry" (by default
// "$HOME/.config/cfgdeck/registry") for the current user and
// "/etc/cfgdeck/registry" for the local machine. Fails only when the user's
// home folder cannot be found.
NStatus NRegistryFolder(NRegistryHive hive, std::u16string* folder);

// The system's own registry; null where there is none.
NRegistry* NNativeRegistry();
