#include "platform/windows/NWindowsPlatform.h"

#include <windows.h>
#include <sddl.h>

#include <string>
#include <utility>
#include <vector>

// The interface's own names, not the Win32 A/W macros.
#undef DeleteFile
#undef MoveFile

#include "platform/windows/NWindowsFile.h"

namespace {

// Not in every SDK's enumeration (Windows 10 1709 and later).
constexpr FILE_INFO_BY_HANDLE_CLASS kFileDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

const wchar_t* Wide(const char16_t* p) { return reinterpret_cast<const wchar_t*>(p); }

std::u16string Narrow(std::wstring_view text) {
  return std::u16string(reinterpret_cast<const char16_t*>(text.data()), text.size());
}

// Win32 wants NUL-terminated paths; an embedded NUL would name another file.
bool ToSystemPath(std::u16string_view path, std::wstring* out) {
  if (path.empty() || path.find(u'\0') != std::u16string_view::npos) return false;
  out->assign(Wide(path.data()), path.size());
  return true;
}

NStatus Failure(const char* operation, std::u16string_view path) {
  return NStatus::Error(GetLastError(), operation, path);
}

// A handle closed when it goes out of scope.
class NHandle {
 public:
  explicit NHandle(HANDLE handle = INVALID_HANDLE_VALUE) : m_handle(handle) {}
  ~NHandle() {
    if (m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
  }
  NHandle(const NHandle&) = delete;
  NHandle& operator=(const NHandle&) = delete;

  explicit operator bool() const { return m_handle != INVALID_HANDLE_VALUE; }
  HANDLE Get() const { return m_handle; }
  HANDLE Release() { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }

 private:
  HANDLE m_handle;
};

// The security of new files and folders that are the user's alone: a
// protected DACL with one entry, full access for the user the process runs
// as, inherited by what a folder holds. The user's own SID rather than OWNER
// RIGHTS: the owner of what an elevated administrator creates is the
// Administrators group, and Wine does not honour OWNER RIGHTS at all. Made
// once; the process's user does not change.
class NOwnerOnly {
 public:
  static const NOwnerOnly& Get() {
    static const NOwnerOnly instance;
    return instance;
  }
  ~NOwnerOnly() { LocalFree(m_descriptor); }
  NOwnerOnly(const NOwnerOnly&) = delete;
  NOwnerOnly& operator=(const NOwnerOnly&) = delete;

  // Fills `attributes` for `security`: no descriptor for the default. Fails
  // rather than let a private file be made with the default access.
  NStatus Attributes(NFileSecurity security, SECURITY_ATTRIBUTES* attributes, const char* operation,
                     std::u16string_view path) const {
    *attributes = {sizeof *attributes, nullptr, FALSE};
    if (security != NFileSecurity::kOwnerOnly) return NStatus::Ok();
    if (!m_descriptor) return NStatus::Error(m_error, operation, path);
    attributes->lpSecurityDescriptor = m_descriptor;
    return NStatus::Ok();
  }

 private:
  NOwnerOnly() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) {
      m_error = GetLastError();
      return;
    }
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<BYTE> buffer(size);
    wchar_t* sid = nullptr;
    if (size && GetTokenInformation(token, TokenUser, buffer.data(), size, &size) &&
        ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(buffer.data())->User.Sid, &sid)) {
      const std::wstring sddl = L"D:P(A;OICI;FA;;;" + std::wstring(sid) + L")";
      LocalFree(sid);
      if (!ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl.c_str(), SDDL_REVISION_1, &m_descriptor,
                                                                nullptr)) {
        m_descriptor = nullptr;
      }
    }
    if (!m_descriptor) m_error = GetLastError();
    CloseHandle(token);
  }

  PSECURITY_DESCRIPTOR m_descriptor = nullptr;
  DWORD m_error = ERROR_SUCCESS;
};

DWORD ShareMode(unsigned share) {
  DWORD mode = 0;
  if (share & kShareRead) mode |= FILE_SHARE_READ;
  if (share & kShareWrite) mode |= FILE_SHARE_WRITE;
  if (share & kShareDelete) mode |= FILE_SHARE_DELETE;
  return mode;
}

// Whether a reparse point leads to another name: a symbolic link, a
// junction and the like. Other reparse points (cloud placeholders,
// deduplicated files) are ordinary files and folders to their users. Wine
// marks a Unix link to a folder as a reparse point without a tag.
bool IsLink(DWORD attributes, DWORD tag) {
  return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) && (tag == 0 || IsReparseTagNameSurrogate(tag));
}

NPathKind KindOf(DWORD attributes, DWORD tag) {
  if (IsLink(attributes, tag)) return NPathKind::kOther;
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) ? NPathKind::kFolder : NPathKind::kFile;
}

// The reparse tag of what `path` names itself; 0 when it has none.
DWORD ReparseTagOf(const std::wstring& path) {
  WIN32_FIND_DATAW data;
  HANDLE find = FindFirstFileExW(path.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr, 0);
  if (find == INVALID_HANDLE_VALUE) return 0;
  FindClose(find);
  return (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) ? data.dwReserved0 : 0;
}

bool IsLinkHandle(HANDLE handle) {
  FILE_ATTRIBUTE_TAG_INFO info = {};
  return GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &info, sizeof info) &&
         IsLink(info.FileAttributes, info.ReparseTag);
}

// The path the system reached the open file or folder by, every link
// resolved, as a drive or UNC path.
bool FinalPath(HANDLE handle, std::wstring* path) {
  std::wstring buffer(MAX_PATH, L'\0');
  DWORD n = GetFinalPathNameByHandleW(handle, buffer.data(), static_cast<DWORD>(buffer.size()), FILE_NAME_NORMALIZED);
  if (n >= buffer.size()) {
    buffer.resize(n + 1);
    n = GetFinalPathNameByHandleW(handle, buffer.data(), static_cast<DWORD>(buffer.size()), FILE_NAME_NORMALIZED);
  }
  if (n == 0 || n >= buffer.size()) return false;
  std::wstring_view result(buffer.data(), n);
  // The call adds the long-path prefix, which no caller wants back.
  if (result.substr(0, 8) == L"\\\\?\\UNC\\") {
    path->assign(L"\\\\").append(result.substr(8));
  } else if (result.substr(0, 4) == L"\\\\?\\") {
    path->assign(result.substr(4));
  } else {
    path->assign(result);
  }
  return true;
}

// The absolute form of `path`, with "." and ".." resolved and "/" made "\".
bool FullPath(const std::wstring& path, std::wstring* full) {
  DWORD n = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  if (n == 0) return false;
  full->assign(n, L'\0');
  n = GetFullPathNameW(path.c_str(), n, full->data(), nullptr);
  if (n == 0 || n >= full->size()) return false;
  full->resize(n);
  return true;
}

// Whether the open `handle` is what `expected` (an absolute path) names
// without any link: the final path then differs at most in case and, where
// `expected` uses them, in short 8.3 names.
bool ReachedDirectly(HANDLE handle, const std::wstring& expected) {
  std::wstring final;
  // Where the system cannot tell, the path is taken as it stands.
  if (!FinalPath(handle, &final)) return true;
  // A root comes back as "C:\" or "\\server\share\", with a separator at the end.
  auto trimmed = [](std::wstring_view path) {
    while (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
    return path;
  };
  auto same = [&](std::wstring_view path) {
    const std::wstring_view a = trimmed(final), b = trimmed(path);
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
  };
  if (same(expected)) return true;
  std::wstring longName(expected.size() + MAX_PATH, L'\0');
  const DWORD n = GetLongPathNameW(expected.c_str(), longName.data(), static_cast<DWORD>(longName.size()));
  if (n == 0 || n >= longName.size()) return false;
  longName.resize(n);
  return same(longName);
}

// Before a file is made at `full` with noLinks: the folder it goes into must
// be reached without a link, or the file would be made outside.
NStatus CheckFolderForCreate(const std::wstring& full, std::u16string_view path) {
  const size_t cut = full.find_last_of(L'\\');
  if (cut == std::wstring::npos) return NStatus::Ok();
  // "C:" alone would name the drive's current folder, not its root.
  const std::wstring folder = full.substr(0, cut > 0 && full[cut - 1] == L':' ? cut + 1 : cut);
  NHandle handle(CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                             FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  // A missing folder is left to the open, which reports it.
  if (!handle) return NStatus::Ok();
  if (!ReachedDirectly(handle.Get(), folder)) return NStatus::Error(NStatus::kAccessDenied, "open", path);
  return NStatus::Ok();
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
  std::wstring full;
  if (options.noLinks) {
    if (!FullPath(systemPath, &full)) return Failure("open", path);
    if (options.mode != NOpenMode::kExistingOnly) {
      if (NStatus status = CheckFolderForCreate(full, path); !status) return status;
    }
  }
  const bool writable = options.access == NFileAccess::kReadWrite;
  DWORD access = GENERIC_READ;
  if (writable) access |= GENERIC_WRITE;
  // Without noFollow a link at the end is followed; with noLinks no link
  // anywhere is.
  const bool refuseLink = options.noFollow || options.noLinks;
  const DWORD flags = FILE_ATTRIBUTE_NORMAL | (refuseLink ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
  // kCreateAlways cuts an existing file only once it is known to be one the
  // options allow, as on POSIX.
  const DWORD disposition = options.mode == NOpenMode::kExistingOnly ? OPEN_EXISTING : OPEN_ALWAYS;
  SECURITY_ATTRIBUTES security;
  if (NStatus status = NOwnerOnly::Get().Attributes(options.security, &security, "open", path); !status) {
    return status;
  }
  NHandle handle(CreateFileW(systemPath.c_str(), access, ShareMode(options.share), &security, disposition, flags,
                             nullptr));
  if (!handle) return Failure("open", path);
  const bool created = disposition == OPEN_ALWAYS && GetLastError() != ERROR_ALREADY_EXISTS;

  // A device ("NUL", "COM1" in any folder) or a pipe is no file to keep
  // values in; POSIX refuses all but regular files alike.
  if (GetFileType(handle.Get()) != FILE_TYPE_DISK) return NStatus::Error(NStatus::kAccessDenied, "open", path);
  if (refuseLink && IsLinkHandle(handle.Get())) return NStatus::Error(NStatus::kAccessDenied, "open", path);
  if (options.noLinks && !ReachedDirectly(handle.Get(), full)) {
    // Only a folder swapped for a link since the check above (or a link the
    // system followed in spite of the flag) gets here; what was made through
    // it goes again.
    std::wstring made;
    if (created && FinalPath(handle.Get(), &made)) DeleteFileW(made.c_str());
    return NStatus::Error(NStatus::kAccessDenied, "open", path);
  }
  auto owned = std::make_unique<NWindowsFile>(handle.Release(), std::u16string(path), writable);
  if (options.mode == NOpenMode::kCreateAlways && !created) {
    if (NStatus status = owned->Truncate(0); !status) return status;
  }
  *file = std::move(owned);
  return NStatus::Ok();
}

NStatus NWindowsPlatform::DeleteFile(std::u16string_view path) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "delete", path);
  // A link is opened as itself, so that a link to a folder goes like a link
  // to a file does, and never what it names.
  NHandle handle(CreateFileW(systemPath.c_str(), DELETE | FILE_READ_ATTRIBUTES,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                             FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!handle) return Failure("delete", path);
  FILE_ATTRIBUTE_TAG_INFO info = {};
  if (!GetFileInformationByHandleEx(handle.Get(), FileAttributeTagInfo, &info, sizeof info)) {
    return Failure("delete", path);
  }
  // DeleteFileW refuses a folder so.
  if ((info.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) && !IsLink(info.FileAttributes, info.ReparseTag)) {
    return NStatus::Error(NStatus::kAccessDenied, "delete", path);
  }
  // The name goes at once where the file system can (NTFS since Windows 10
  // 1709), not when the last handle closes: until then it could not be used
  // again nor its folder removed while another process reads the file.
  FILE_DISPOSITION_INFO_EX now = {FILE_DISPOSITION_FLAG_DELETE | FILE_DISPOSITION_FLAG_POSIX_SEMANTICS};
  if (SetFileInformationByHandle(handle.Get(), kFileDispositionInfoEx, &now, sizeof now)) return NStatus::Ok();
  FILE_DISPOSITION_INFO atClose = {TRUE};
  if (SetFileInformationByHandle(handle.Get(), FileDispositionInfo, &atClose, sizeof atClose)) return NStatus::Ok();
  return Failure("delete", path);
}

NStatus NWindowsPlatform::MoveFile(std::u16string_view from, std::u16string_view to) {
  std::wstring source, target;
  if (!ToSystemPath(from, &source) || !ToSystemPath(to, &target)) {
    return NStatus::Error(NStatus::kInvalidParameter, "move", from);
  }
  if (MoveFileExW(source.c_str(), target.c_str(), 0)) return NStatus::Ok();
  const DWORD error = GetLastError();
  // Name the path the error is about, as POSIX does: the target when it
  // exists or its folder does not.
  if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) {
    return NStatus::Error(NStatus::kAlreadyExists, "move", to);
  }
  if (error == ERROR_PATH_NOT_FOUND && GetFileAttributesW(source.c_str()) != INVALID_FILE_ATTRIBUTES) {
    return NStatus::Error(error, "move", to);
  }
  return NStatus::Error(error, "move", from);
}

NStatus NWindowsPlatform::CreateFolder(std::u16string_view path, NFileSecurity security) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "create folder", path);
  SECURITY_ATTRIBUTES attributes;
  if (NStatus status = NOwnerOnly::Get().Attributes(security, &attributes, "create folder", path); !status) {
    return status;
  }
  return CreateDirectoryW(systemPath.c_str(), &attributes) ? NStatus::Ok() : Failure("create folder", path);
}

NStatus NWindowsPlatform::RemoveFolder(std::u16string_view path) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "remove folder", path);
  return RemoveDirectoryW(systemPath.c_str()) ? NStatus::Ok() : Failure("remove folder", path);
}

NStatus NWindowsPlatform::ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  std::wstring pattern;
  if (!ToSystemPath(path, &pattern)) return NStatus::Error(NStatus::kInvalidParameter, "list folder", path);
  const std::wstring folder = pattern;
  if (pattern.back() != L'\\' && pattern.back() != L'/') pattern += L'\\';
  pattern += L'*';
  WIN32_FIND_DATAW data;
  HANDLE find = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &data, FindExSearchNameMatch, nullptr, 0);
  if (find == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
      // A volume's root has no "." entry: nothing matches in an empty one.
      if (error == ERROR_FILE_NOT_FOUND) {
        entries->clear();
        return NStatus::Ok();
      }
      return NStatus::Error(error, "list folder", path);
    }
    // A file is no folder to list; the systems differ in how they say so.
    if (attributes != INVALID_FILE_ATTRIBUTES) return NStatus::Error(NStatus::kPathNotFound, "list folder", path);
    return NStatus::Error(error == ERROR_FILE_NOT_FOUND ? error : NStatus::kPathNotFound, "list folder", path);
  }
  entries->clear();
  do {
    const std::wstring_view name = data.cFileName;
    if (name == L"." || name == L"..") continue;
    const DWORD tag = (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) ? data.dwReserved0 : 0;
    entries->push_back({Narrow(name), KindOf(data.dwFileAttributes, tag)});
  } while (FindNextFileW(find, &data));
  const DWORD error = GetLastError();
  FindClose(find);
  return error == ERROR_NO_MORE_FILES ? NStatus::Ok() : NStatus::Error(error, "list folder", path);
}

NStatus NWindowsPlatform::ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  std::wstring systemPath, full;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "list folder", path);
  if (!FullPath(systemPath, &full)) return Failure("list folder", path);
  // The folder is held open while it is listed, so that it cannot be
  // swapped for a link between the check and the listing.
  NHandle handle(CreateFileW(full.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!handle) {
    const DWORD error = GetLastError();
    return NStatus::Error(error == ERROR_FILE_NOT_FOUND ? NStatus::kPathNotFound : error, "list folder", path);
  }
  if (IsLinkHandle(handle.Get()) || !ReachedDirectly(handle.Get(), full)) {
    return NStatus::Error(NStatus::kAccessDenied, "list folder", path);
  }
  return ListFolder(path, entries);
}

NStatus NWindowsPlatform::CanonicalPath(std::u16string_view path, std::u16string* canonical) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "resolve", path);
  NHandle handle(CreateFileW(systemPath.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!handle) return Failure("resolve", path);
  std::wstring final;
  if (!FinalPath(handle.Get(), &final)) return Failure("resolve", path);
  *canonical = Narrow(final);
  return NStatus::Ok();
}

NPathKind NWindowsPlatform::GetPathKind(std::u16string_view path) {
  std::wstring systemPath;
  if (!ToSystemPath(path, &systemPath)) return NPathKind::kNone;
  const DWORD attributes = GetFileAttributesW(systemPath.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return NPathKind::kNone;
  // Only a reparse point pays for the look at its tag.
  const DWORD tag = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) ? ReparseTagOf(systemPath) : 0;
  return KindOf(attributes, tag);
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
    if (n < buffer.size()) return Narrow(std::wstring_view(buffer.data(), n));
    buffer.resize(buffer.size() * 2);
  }
}
