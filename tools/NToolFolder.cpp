#include "tools/NToolFolder.h"

#include "location/NConfigFolder.h"
#include "platform/NPlatform.h"
#include "platform/NUserFolders.h"

NToolFolder NResolveToolFolder(const std::string& given, const std::string& appName) {
  if (!given.empty()) return {given, "--config"};
  const std::u16string program = NPlatform::Default().ExecutablePath();
  const std::size_t slash = program.find_last_of(u"\\/");
  const NUnicodeString besideProgram =
      GetAppConfigPathUnderExe(NUnicodeString(program.substr(0, slash == std::u16string::npos ? 0 : slash)).c_str());
  if (!besideProgram.empty()) return {besideProgram.ToUtf8(), "beside the program"};
  const NUnicodeString remembered = GetAppConfigPath(NUnicodeString::FromUtf8(appName).c_str());
  if (!remembered.empty()) return {remembered.ToUtf8(), "the remembered Config Path"};
  NUnicodeString fallback(NUserConfigRoot());
  fallback += NPlatform::Default().PathSeparator();
  fallback += NUnicodeString::FromUtf8(appName);
  fallback += NPlatform::Default().PathSeparator();
  fallback += u"Config";
  return {fallback.ToUtf8(), "the default under the user's configuration directory"};
}
