#include "platform/windows/NWindowsPlatform.h"

#include <windows.h>
#include <sddl.h>

// The interface's own names, not the Win32 A/W macros.
#undef DeleteFile
#undef MoveFile

#include "platform/windows/NWindowsFile.h"

namespace {

const wchar_t* Wide(const char16_t* p) { return reinterpret_cast<const wchar_t*>(p); }

// Win32 wants NUL-terminated paths; an embedded NUL would name another file.
bool ToSystemPath(std::u16string_view path, std::wstring* out) {
  if (path.empty() || path.find(u'\0') != std::u16string_view::npos) return false;
  out->assign(Wide(path.data()), path.size());
  return true;
}

NStatus Failure(const char* operation, std::u16string_view path) {
  return NStatus::Error(GetLastError(), operation, path);
}

// Owner-only access: a protected DACL granting full access to the owner.
class OwnerOnlySecurity {
 public:
  OwnerOnlySecurity() {
    m_attributes.nLength = sizeof m_attributes;
    m_attributes.bInheritHandle = FALSE;
    ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;OICI;FA;;;OW)", SDDL_REVISION_1,
                                                         &m_attributes.lpSecurityDescriptor, nullptr);
  }
  ~OwnerOnlySecurity() { LocalFree(m_attributes.lpSecurityDescriptor); }
  OwnerOnlySecurity(const OwnerOnlySecurity&) = delete;
  OwnerOnlySecurity& operator=(const OwnerOnlySecurity&) = delete;

  SECURITY_ATTRIBUTES* Get(NFileSecurity security) {
    return security == NFileSecurity::kOwnerOnly && m_attributes.lpSecurityDescriptor ? &m_attributes : nullptr;
  }

 private:
  SECURITY_ATTRIBUTES m_attributes = {};
};

DWORD Disposition(NOpenMode mode) {
  switch (mode) {
    case NOpenMode::kExistingOnly:
      return OPEN_EXISTING;
    case NOpenMode::kCreateIfMissing:
      return OPEN_ALWAYS;
    case NOpenMode::kCreateAlways:
      return CREATE_ALWAYS;
  }
  return OPEN_EXISTING;
}

DWORD ShareMode(unsigned share) {
  DWORD mode = 0;
  if (share & kShareRead) mode |= FILE_SHARE_READ;
  if (share & kShareWrite) mode |= FILE_SHARE_WRITE;
  if (share & kShareDelete) mode |= FILE_SHARE_DELETE;
  return mode;
}

NPathKind KindOf(DWORD attributes) {
  if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) return NPathKind::kOther;
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? NPathKind::kFolder : NPathKind::kFile;
}

bool FormatFrom(DWORD source, HMODULE module, std::uint32_t code, std::u16string* text) {
  wchar_t* buffer = nullptr;
  const DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | source;
  DWORD n = FormatMessageW(flags, module, code, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US),
                           reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  if (n == 0 && GetLastError() == ERROR_RESOURCE_LANG_NOT_FOUND) {
    n = FormatMessageW(flags, module, code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  }
  if (n == 0) return false;
  text->assign(reinterpret_cast<const char16_t*>(buffer), n);
  LocalFree(buffer);
  return true;
}

}  // namespace

NPlatform& NPlatform::Default() {
  static NWindowsPlatform platform;
  return platform;
}

NStatus NWindowsPlatform::OpenFile(std::u16string_view path, const NOpenOptions& options,
                                   std::unique_ptr<NFile>* file) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "open", path);
  OwnerOnlySecurity security;
  DWORD access = GENERIC_READ;
  if (options.access == NFileAccess::kReadWrite) access |= GENERIC_WRITE;
  DWORD flags = FILE_ATTRIBUTE_NORMAL;
  if (options.noFollow) flags |= FILE_FLAG_OPEN_REPARSE_POINT;
  HANDLE handle = CreateFileW(systemPath.c_str(), access, ShareMode(options.share), security.Get(options.security),
                              Disposition(options.mode), flags, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return Failure("open", path);
  *file = std::make_unique<NWindowsFile>(handle, std::u16string(path));
  return NStatus::Ok();
}

NStatus NWindowsPlatform::DeleteFile(std::u16string_view path) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "delete", path);
  return DeleteFileW(systemPath.c_str()) ? NStatus::Ok() : Failure("delete", path);
}

NStatus NWindowsPlatform::MoveFile(std::u16string_view from, std::u16string_view to) {
  std::wstring source, target;
  if (!ToSystemPath(from, &source) || !ToSystemPath(to, &target)) {
    return NStatus::Error(NStatus::kInvalidParameter, "move", from);
  }
  return MoveFileExW(source.c_str(), target.c_str(), 0) ? NStatus::Ok() : Failure("move", from);
}

NStatus NWindowsPlatform::CreateFolder(std::u16string_view path, NFileSecurity security) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "create folder", path);
  OwnerOnlySecurity attributes;
  return CreateDirectoryW(systemPath.c_str(), attributes.Get(security)) ? NStatus::Ok()
                                                                        : Failure("create folder", path);
}

NStatus NWindowsPlatform::RemoveFolder(std::u16string_view path) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "remove folder", path);
  return RemoveDirectoryW(systemPath.c_str()) ? NStatus::Ok() : Failure("remove folder", path);
}

NStatus NWindowsPlatform::ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  std::wstring pattern;
  if (!ToSystemPath(path, &pattern)) return NStatus::Error(NStatus::kInvalidParameter, "list folder", path);
  pattern += L"\\*";
  WIN32_FIND_DATAW data;
  HANDLE find = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr, 0);
  if (find == INVALID_HANDLE_VALUE) return Failure("list folder", path);
  entries->clear();
  do {
    const std::wstring_view name = data.cFileName;
    if (name == L"." || name == L"..") continue;
    entries->push_back({std::u16string(reinterpret_cast<const char16_t*>(name.data()), name.size()),
                        KindOf(data.dwFileAttributes)});
  } while (FindNextFileW(find, &data));
  const DWORD error = GetLastError();
  FindClose(find);
  return error == ERROR_NO_MORE_FILES ? NStatus::Ok() : NStatus::Error(error, "list folder", path);
}

NStatus NWindowsPlatform::CanonicalPath(std::u16string_view path, std::u16string* canonical) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "resolve", path);
  HANDLE handle = CreateFileW(systemPath.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return Failure("resolve", path);
  std::wstring buffer(MAX_PATH, L'\0');
  DWORD n = GetFinalPathNameByHandleW(handle, buffer.data(), static_cast<DWORD>(buffer.size()), FILE_NAME_NORMALIZED);
  if (n >= buffer.size()) {
    buffer.resize(n + 1);
    n = GetFinalPathNameByHandleW(handle, buffer.data(), static_cast<DWORD>(buffer.size()), FILE_NAME_NORMALIZED);
  }
  const DWORD error = GetLastError();
  CloseHandle(handle);
  if (n == 0) return NStatus::Error(error, "resolve", path);
  std::wstring_view result(buffer.data(), n);
  if (result.substr(0, 4) == L"\\\\?\\") result.remove_prefix(4);  // the long-path prefix the call adds
  canonical->assign(reinterpret_cast<const char16_t*>(result.data()), result.size());
  return NStatus::Ok();
}

NPathKind NWindowsPlatform::GetPathKind(std::u16string_view path) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NPathKind::kNone;
  const DWORD attributes = GetFileAttributesW(systemPath.c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ? NPathKind::kNone : KindOf(attributes);
}

bool NWindowsPlatform::LookupSystemMessage(std::uint32_t code, std::u16string* text) {
  return FormatFrom(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, text);
}

bool NWindowsPlatform::LookupNtStatusMessage(std::uint32_t code, std::u16string* text) {
  // Looked up once; NTDLL is mapped into every process and never unloaded.
  static const HMODULE ntdll = GetModuleHandleW(L"NTDLL.DLL");
  return ntdll && FormatFrom(FORMAT_MESSAGE_FROM_HMODULE, ntdll, code, text);
}

std::u16string NWindowsPlatform::ExecutablePath() {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (n == 0) return {};
    if (n < buffer.size()) return std::u16string(reinterpret_cast<const char16_t*>(buffer.data()), n);
    buffer.resize(buffer.size() * 2);
  }
}
