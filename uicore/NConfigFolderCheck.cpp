#include "uicore/NConfigFolderCheck.h"

#include "platform/NPlatform.h"

namespace {

// "/x", "\\server\share" or "C:\x": a path that does not hang on the
// current folder.
bool IsAbsolute(std::u16string_view path) {
  if (!path.empty() && (path[0] == u'/' || path[0] == u'\\')) return true;
  return path.size() >= 3 && path[1] == u':' && (path[2] == u'\\' || path[2] == u'/');
}

}  // namespace

bool NIsValidConfigFolder(std::u16string_view path, NPlatform& platform) {
  return IsAbsolute(path) && platform.IsFolder(path);
}

bool IsValidConfigFolder(const char16_t* path) {
  return path && NIsValidConfigFolder(path, NPlatform::Default());
}
