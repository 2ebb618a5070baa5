#include "dialogs/NKeymapFileCheck.h"

#include <filesystem>

bool NCheckCustomKeymapFile(bool useCustom, std::u16string_view fileName, const NPathTokenRoots& roots,
                            NPlatform& platform, NReportMessageParams& params) {
  if (!useCustom) return true;
  if (fileName.empty()) {
    params.SetCode(kMsgKeymapFilenameEmpty);
    return false;
  }
  NUnicodeString path = NExpandPathTokens(fileName, roots);
  if (!roots.config.empty() && !std::filesystem::path(path.View()).is_absolute()) {
    path = roots.config + NUnicodeString(1, platform.PathSeparator()) + path;
  }
  // A link to a file is as good as the file.
  std::u16string target;
  if (platform.IsFile(path) || (platform.CanonicalPath(path, &target).IsOk() && platform.IsFile(target))) return true;
  params.SetCode(kMsgKeymapFileNotFound);
  return false;
}

bool NCheckCustomKeymapFile(bool useCustom, std::u16string_view fileName, NReportMessageParams& params) {
  return NCheckCustomKeymapFile(useCustom, fileName, NGetPathTokenRoots(), NPlatform::Default(), params);
}
