#include <cstdlib>
#include <string>

#include "platform/NUnicode.h"
#include "platform/NUserFolders.h"

std::u16string NUserConfigRoot() {
  // A relative XDG_CONFIG_HOME is invalid and ignored, as the base-directory
  // rules say.
  const char* config = std::getenv("XDG_CONFIG_HOME");
  std::string base;
  if (config && config[0] == '/') {
    base = config;
  } else if (const char* home = std::getenv("HOME"); home && home[0] == '/') {
    base = std::string(home) + "/.config";
  } else {
    return std::u16string();
  }
  return NUtf8ToUtf16(base + "/cfgdeck");
}
