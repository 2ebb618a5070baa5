#include "platform/posix/NPosixPlatform.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/limits.h>
#include <stdio.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <linux/openat2.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include "platform/NUnicode.h"
#include "platform/posix/NPosixErrors.h"
#include "platform/posix/NPosixFile.h"
#include "platform/posix/NSystemMessageTable.h"

namespace {

constexpr mode_t kOwnerOnlyFile = 0600;
constexpr mode_t kOwnerOnlyFolder = 0700;

NStatus Failure(const char* operation, std::u16string_view path, int error = errno) {
  return NStatus::Error(NWin32ErrorFromErrno(error), operation, path);
}

// ENOENT stands both for a missing last component and for a missing folder on
// the way; Windows tells the two apart and callers test for it.
std::uint32_t NotFoundCode(const std::string& systemPath) {
  const size_t end = systemPath.find_last_not_of('/');
  const size_t cut = end == std::string::npos ? std::string::npos : systemPath.find_last_of('/', end);
  if (cut == std::string::npos) return NStatus::kFileNotFound;  // in the current folder, which exists
  const std::string parent = systemPath.substr(0, cut == 0 ? 1 : cut);
  struct stat st;
  return ::stat(parent.c_str(), &st) == 0 && S_ISDIR(st.st_mode) ? NStatus::kFileNotFound : NStatus::kPathNotFound;
}

NStatus Failure(const char* operation, std::u16string_view path, const std::string& systemPath, int error = errno) {
  if (error == ENOENT) return NStatus::Error(NotFoundCode(systemPath), operation, path);
  return Failure(operation, path, error);
}

bool IsSymbolicLink(const std::string& path) {
  struct stat st;
  return ::lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode);
}

// A path with an embedded NUL would be cut short by the system call and name
// another file; refuse it instead.
bool ToSystemPath(std::u16string_view path, std::string* out) {
  if (path.find(u'\0') != std::u16string_view::npos || path.empty()) return false;
  *out = NUtf16ToUtf8(path);
  return true;
}

NPathKind KindOf(mode_t mode) {
  if (S_ISREG(mode)) return NPathKind::kFile;
  if (S_ISDIR(mode)) return NPathKind::kFolder;
  return NPathKind::kOther;
}

// openat2 refusing every symbolic link on the way; -1 with errno ENOSYS
// where the kernel lacks it.
int OpenWithoutLinks(const std::string& path, int flags, mode_t mode) {
  struct open_how how = {};
  how.flags = static_cast<std::uint64_t>(flags);
  how.mode = (flags & O_CREAT) ? mode : 0;
  how.resolve = RESOLVE_NO_SYMLINKS;
  return static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how));
}

int OpenFlags(const NOpenOptions& options) {
  // O_CLOEXEC: the applications start local shells, which must not inherit
  // an open key file and the lock on it. O_NONBLOCK keeps a FIFO planted in
  // the folder from blocking the open; only regular files are kept open, and
  // for them Linux ignores the flag, so it stays set.
  int flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  flags |= options.access == NFileAccess::kRead ? O_RDONLY : O_RDWR;
  if (options.noFollow) flags |= O_NOFOLLOW;
  return flags;
}

// Opens, creating when asked; *created tells whether this call made the file.
int OpenOrCreate(const std::string& path, const NOpenOptions& options, bool* created) {
  const int flags = OpenFlags(options);
  const mode_t mode = options.security == NFileSecurity::kOwnerOnly ? kOwnerOnlyFile : 0666;
  static std::atomic<bool> noOpenat2{false};
  auto open = [&](int openFlags) {
    if (options.noLinks && !noOpenat2.load(std::memory_order_relaxed)) {
      const int fd = OpenWithoutLinks(path, openFlags, mode);
      if (fd >= 0 || errno != ENOSYS) return fd;
      noOpenat2.store(true, std::memory_order_relaxed);  // an old kernel: open as the path stands
    }
    return ::open(path.c_str(), openFlags, mode);
  };
  *created = false;
  for (;;) {
    int fd;
    if (options.mode == NOpenMode::kExistingOnly) {
      fd = open(flags);
    } else {
      fd = open(flags | O_CREAT | O_EXCL);
      if (fd >= 0) {
        *created = true;
      } else if (errno == EEXIST) {
        fd = open(flags);
        // Deleted in between: try again. A dangling link fails both ways, and
        // for ever; it names no file, so it is reported missing.
        if (fd < 0 && errno == ENOENT) {
          if (!IsSymbolicLink(path)) continue;
          errno = ENOENT;
        }
      }
    }
    if (fd < 0 && errno == EINTR) continue;
    return fd;
  }
}

}  // namespace

NPlatform& NPlatform::Default() {
  static NPosixPlatform platform;
  return platform;
}

NStatus NPosixPlatform::OpenFile(std::u16string_view path, const NOpenOptions& options,
                                 std::unique_ptr<NFile>* file) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "open", path);
  bool created = false;
  const int fd = OpenOrCreate(systemPath, options, &created);
  if (fd < 0) {
    // ELOOP here is a link that the options refused.
    const int error = errno;
    if (error == ENOENT && options.anyMissingIsFile) return NStatus::Error(NStatus::kFileNotFound, "open", path);
    return Failure("open", path, systemPath, error == ELOOP && (options.noFollow || options.noLinks) ? EACCES : error);
  }
  struct stat st;
  if (::fstat(fd, &st) != 0) {
    const int error = errno;
    ::close(fd);
    return Failure("open", path, error);
  }
  auto owned = std::make_unique<NPosixFile>(fd, std::u16string(path), static_cast<std::uint64_t>(st.st_size));
  // Windows cannot open a folder as a file; keep the two systems alike.
  if (!S_ISREG(st.st_mode)) return NStatus::Error(NStatus::kAccessDenied, "open", path);
  if (created && options.security == NFileSecurity::kOwnerOnly && ::fchmod(fd, kOwnerOnlyFile) != 0) {
    return Failure("open", path);  // the umask must not loosen a private file
  }
  if (options.mode == NOpenMode::kCreateAlways && !created) {
    if (NStatus status = owned->Truncate(0); !status) return status;
  }
  *file = std::move(owned);
  return NStatus::Ok();
}

NStatus NPosixPlatform::DeleteFile(std::u16string_view path) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "delete", path);
  struct stat st;
  // Windows refuses DeleteFile on a folder with access denied; unlink would
  // say EISDIR on Linux but EPERM elsewhere.
  if (::lstat(systemPath.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    return NStatus::Error(NStatus::kAccessDenied, "delete", path);
  }
  return ::unlink(systemPath.c_str()) == 0 ? NStatus::Ok() : Failure("delete", path, systemPath);
}

NStatus NPosixPlatform::MoveFile(std::u16string_view from, std::u16string_view to) {
  std::string source, target;
  if (!ToSystemPath(from, &source) || !ToSystemPath(to, &target)) {
    return NStatus::Error(NStatus::kInvalidParameter, "move", from);
  }
  if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return NStatus::Ok();
  if (errno == EEXIST) return NStatus::Error(NStatus::kAlreadyExists, "move", to);
  struct stat st;
  if (errno == EINVAL || errno == ENOSYS) {
    // The file system cannot refuse to replace; check first, then rename.
    if (::lstat(target.c_str(), &st) == 0) return NStatus::Error(NStatus::kAlreadyExists, "move", to);
    if (::rename(source.c_str(), target.c_str()) == 0) return NStatus::Ok();
  }
  if (errno != ENOENT) return Failure("move", from);
  // The source is there, so the target's folder is not.
  if (::lstat(source.c_str(), &st) == 0) return NStatus::Error(NStatus::kPathNotFound, "move", to);
  return Failure("move", from, source, ENOENT);
}

NStatus NPosixPlatform::CreateFolder(std::u16string_view path, NFileSecurity security) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "create folder", path);
  const bool ownerOnly = security == NFileSecurity::kOwnerOnly;
  if (::mkdir(systemPath.c_str(), ownerOnly ? kOwnerOnlyFolder : 0777) != 0) {
    if (errno == EEXIST) return NStatus::Error(NStatus::kAlreadyExists, "create folder", path);
    return Failure("create folder", path, systemPath);
  }
  if (ownerOnly && ::chmod(systemPath.c_str(), kOwnerOnlyFolder) != 0) return Failure("create folder", path);
  return NStatus::Ok();
}

NStatus NPosixPlatform::RemoveFolder(std::u16string_view path) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "remove folder", path);
  if (::rmdir(systemPath.c_str()) == 0) return NStatus::Ok();
  if (errno == ENOTDIR) return NStatus::Error(NStatus::kDirectory, "remove folder", path);
  return Failure("remove folder", path, systemPath);
}

NStatus NPosixPlatform::SyncFolder(std::u16string_view path) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "sync folder", path);
  const int fd = ::open(systemPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd == -1) return Failure("sync folder", path, systemPath);
  int result;
  do {
    result = ::fsync(fd);
  } while (result == -1 && errno == EINTR);
  const int error = errno;
  ::close(fd);
  return result == 0 ? NStatus::Ok() : Failure("sync folder", path, error);
}

namespace {

// Lists the folder open on `fd` and closes it. getdents64 straight away:
// the directory stream of readdir costs three more system calls a folder
// (fstat, and two fcntl calls to check the descriptor's mode and flags).
NStatus ListOpenFolder(int fd, std::u16string_view path, std::vector<NFolderEntry>* entries) {
  struct Closer {
    int fd;
    ~Closer() { ::close(fd); }
  } closer{fd};
  entries->clear();
  alignas(dirent64) char buffer[32768];
  for (;;) {
    const ssize_t got = ::getdents64(fd, buffer, sizeof buffer);
    if (got == 0) return NStatus::Ok();
    if (got < 0) {
      if (errno == EINTR) continue;
      return Failure("list folder", path);
    }
    for (ssize_t at = 0; at < got;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
      at += entry->d_reclen;
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") continue;
      NFolderEntry item{NUtf8ToUtf16(name), NPathKind::kOther};
      if (entry->d_type == DT_REG) {
        item.kind = NPathKind::kFile;
      } else if (entry->d_type == DT_DIR) {
        item.kind = NPathKind::kFolder;
      } else if (entry->d_type == DT_UNKNOWN) {
        struct stat st;
        if (::fstatat(fd, entry->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0) item.kind = KindOf(st.st_mode);
      }
      entries->push_back(std::move(item));
    }
  }
}

}  // namespace

NStatus NPosixPlatform::ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "list folder", path);
  const int fd = ::open(systemPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return Failure("list folder", path, systemPath, errno == ENOTDIR ? ENOENT : errno);
  return ListOpenFolder(fd, path, entries);
}

NStatus NPosixPlatform::ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "list folder", path);
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;
  int fd = OpenWithoutLinks(systemPath, flags, 0);
  if (fd < 0 && errno == ENOSYS) fd = ::open(systemPath.c_str(), flags);  // an old kernel, as OpenFile does
  if (fd < 0) {
    // A link at the end is refused with ENOTDIR (the flags ask for a
    // folder), one on the way with ELOOP.
    const int error = errno;
    if (error == ELOOP || (error == ENOTDIR && IsSymbolicLink(systemPath))) {
      return NStatus::Error(NStatus::kAccessDenied, "list folder", path);
    }
    return Failure("list folder", path, systemPath, error == ENOTDIR ? ENOENT : error);
  }
  return ListOpenFolder(fd, path, entries);
}

bool NPosixPlatform::GetFolderStamp(std::u16string_view path, NFolderStamp* stamp) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return false;
  // The clock first: a change after it cannot look settled.
  timespec now;
  ::clock_gettime(CLOCK_REALTIME, &now);
  struct stat st;
  if (::lstat(systemPath.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return false;
  auto nanoseconds = [](const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
  };
  stamp->device = st.st_dev;
  stamp->inode = st.st_ino;
  stamp->modified = nanoseconds(st.st_mtim);
  stamp->changed = nanoseconds(st.st_ctim);
  stamp->taken = nanoseconds(now);
  return true;
}

NStatus NPosixPlatform::CanonicalPath(std::u16string_view path, std::u16string* canonical) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NStatus::Error(NStatus::kInvalidParameter, "resolve", path);
  std::unique_ptr<char, void (*)(void*)> resolved(::realpath(systemPath.c_str(), nullptr), std::free);
  if (!resolved) return Failure("resolve", path, systemPath);
  *canonical = NUtf8ToUtf16(resolved.get());
  return NStatus::Ok();
}

NPathKind NPosixPlatform::GetPathKind(std::u16string_view path) {
  std::string systemPath;
  if (!ToSystemPath(path, &systemPath)) return NPathKind::kNone;
  struct stat st;
  if (::lstat(systemPath.c_str(), &st) != 0) return NPathKind::kNone;
  return KindOf(st.st_mode);
}

bool NPosixPlatform::LookupSystemMessage(std::uint32_t code, std::u16string* text) {
  std::u16string_view found;
  if (!NFindWin32Message(code, &found)) return false;
  text->assign(found);
  return true;
}

bool NPosixPlatform::LookupNtStatusMessage(std::uint32_t code, std::u16string* text) {
  std::u16string_view found;
  if (!NFindNtStatusMessage(code, &found)) return false;
  text->assign(found);
  return true;
}

std::u16string NPosixPlatform::ExecutablePath() {
  char buffer[PATH_MAX];
  const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer);
  return n > 0 ? NUtf8ToUtf16(std::string_view(buffer, static_cast<size_t>(n))) : std::u16string();
}
