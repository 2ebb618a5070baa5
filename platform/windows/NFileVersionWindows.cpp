#include <windows.h>

#include <string>
#include <vector>

#include "platform/NFileVersion.h"

bool NReadFileVersion(std::u16string_view path, NFileVersion* version) {
  // Win32 wants a NUL-terminated path; an embedded NUL would name another file.
  if (path.empty() || path.find(u'\0') != std::u16string_view::npos) return false;
  const std::wstring systemPath(reinterpret_cast<const wchar_t*>(path.data()), path.size());
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(systemPath.c_str(), &ignored);
  if (size == 0) return false;
  std::vector<unsigned char> data(size);
  if (!GetFileVersionInfoW(systemPath.c_str(), 0, size, data.data())) return false;
  void* value = nullptr;
  UINT valueSize = 0;
  if (!VerQueryValueW(data.data(), L"\\", &value, &valueSize) || value == nullptr ||
      valueSize < sizeof(VS_FIXEDFILEINFO)) {
    return false;
  }
  const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
  if (fixed->dwSignature != 0xFEEF04BD) return false;
  version->fileType = fixed->dwFileType;
  version->major = HIWORD(fixed->dwFileVersionMS);
  version->minor = LOWORD(fixed->dwFileVersionMS);
  version->build = HIWORD(fixed->dwFileVersionLS);
  version->revision = LOWORD(fixed->dwFileVersionLS);
  return true;
}
