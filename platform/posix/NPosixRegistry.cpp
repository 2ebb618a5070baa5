#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/NRegistry.h"
#include "platform/NUnicode.h"

namespace {

// An environment variable's value; empty when unset.
std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string(value) : std::string();
}

bool HomeFolder(std::string* home) {
  *home = Environment("HOME");
  if (!home->empty()) return true;
  // A service started without HOME still has an account.
  long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
  struct passwd entry;
  struct passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir) {
    return false;
  }
  *home = found->pw_dir;
  return !home->empty();
}

}  // namespace

NStatus NRegistryFolder(NRegistryHive hive, std::u16string* folder) {
  const char* hiveName = hive == NRegistryHive::kCurrentUser ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE";
  if (const std::string override = Environment("CFGDECK_REGISTRY_DIR"); !override.empty()) {
    *folder = NUtf8ToUtf16(override + "/" + hiveName);
    return NStatus::Ok();
  }
  if (hive == NRegistryHive::kLocalMachine) {
    *folder = u"/etc/cfgdeck/registry";
    return NStatus::Ok();
  }
  // A relative XDG_CONFIG_HOME is invalid and ignored, as the base-directory
  // rules say.
  std::string config = Environment("XDG_CONFIG_HOME");
  if (config.empty() || config[0] != '/') {
    std::string home;
    if (!HomeFolder(&home)) {
      folder->clear();
      return NStatus::Error(NStatus::kPathNotFound, "find the home folder for the registry folder");
    }
    config = home + "/.config";
  }
  *folder = NUtf8ToUtf16(config + "/cfgdeck/registry");
  return NStatus::Ok();
}

NRegistry* NNativeRegistry() { return nullptr; }
