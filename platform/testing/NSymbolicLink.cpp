#include "platform/testing/NSymbolicLink.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <system_error>

bool NMakeSymbolicLink(const std::filesystem::path& target, const std::filesystem::path& link, bool folder) {
#ifdef _WIN32
  DWORD flags = SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE;
  if (folder) flags |= SYMBOLIC_LINK_FLAG_DIRECTORY;
  if (!CreateSymbolicLinkW(link.c_str(), target.c_str(), flags)) return false;
  // Wine reports success and makes nothing.
  const DWORD attributes = GetFileAttributesW(link.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT);
#else
  std::error_code error;
  if (folder) {
    std::filesystem::create_directory_symlink(target, link, error);
  } else {
    std::filesystem::create_symlink(target, link, error);
  }
  return !error;
#endif
}
