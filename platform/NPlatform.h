#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/NFile.h"
#include "platform/NStatus.h"

enum class NOpenMode {
  kExistingOnly,     // fails with kFileNotFound / kPathNotFound when missing
  kCreateIfMissing,  // opens an existing file as it is, or creates it empty
  kCreateAlways,     // creates the file, or cuts an existing one to length 0
};

enum class NFileAccess { kRead, kReadWrite };

// Which other openers may use the file meanwhile. POSIX has no share modes
// and ignores them; Windows enforces them.
enum NShareFlags : unsigned {
  kShareNone = 0,
  kShareRead = 1,
  kShareWrite = 2,
  kShareDelete = 4,
  kShareAll = kShareRead | kShareWrite | kShareDelete,
};

// Access for files and folders that are created. On POSIX it becomes a file
// mode applied whatever the umask; an existing file's mode is never widened.
enum class NFileSecurity {
  kDefault,    // the platform's default for new files
  kOwnerOnly,  // files 0600 and folders 0700 on POSIX; owner-only on Windows
};

struct NOpenOptions {
  NOpenMode mode = NOpenMode::kExistingOnly;
  NFileAccess access = NFileAccess::kRead;
  unsigned share = kShareAll;
  NFileSecurity security = NFileSecurity::kDefault;
  // Refuse to open through a symbolic link at the last component.
  bool noFollow = false;
  // Refuse a symbolic link anywhere in the path (kAccessDenied), so that no
  // link inside a folder can lead an open out of it. Give it a path whose
  // folders are real (see CanonicalPath). Where the system cannot enforce
  // it, the path is opened as it stands.
  bool noLinks = false;
  // The caller treats a missing file and a missing folder on its path
  // alike: either may fail with kFileNotFound. POSIX tells the two apart
  // only by a further look at the folder, which this spares.
  bool anyMissingIsFile = false;
};

enum class NPathKind { kNone, kFile, kFolder, kOther };

struct NFolderEntry {
  std::u16string name;
  NPathKind kind = NPathKind::kOther;  // a symbolic link is kOther, whatever it points to
};

// What a folder is and when its entries last changed: equal stamps taken at
// two moments mean that no entry was added, removed or renamed in between,
// provided the changes it records were already settled at the first
// (the file system's clock may not have ticked since; see Settled).
struct NFolderStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t modified = 0;  // ns since 1970-01-01 UTC, as the system keeps them
  std::int64_t changed = 0;
  std::int64_t taken = 0;  // when the stamp was taken, same clock

  // The last change lies far enough before the stamp that any later one
  // gets other times, even on file systems that keep them to 2 seconds.
  bool Settled() const {
    constexpr std::int64_t kCoarsestTick = 2'000'000'000;
    return (modified > changed ? modified : changed) < taken - kCoarsestTick;
  }
  friend bool operator==(const NFolderStamp& a, const NFolderStamp& b) {
    return a.device == b.device && a.inode == b.inode && a.modified == b.modified && a.changed == b.changed;
  }
};

// Everything the library needs from the operating system, behind one
// interface so that tests can substitute an in-memory or fault-injecting
// platform and so that no code above this layer knows which system it runs
// on. Paths are UTF-16; the POSIX layer converts them to UTF-8 at the system
// call. Implementations are thread-safe.
class NPlatform {
 public:
  NPlatform() = default;
  NPlatform(const NPlatform&) = delete;
  NPlatform& operator=(const NPlatform&) = delete;
  virtual ~NPlatform() = default;

  // The real operating system. Lives for the whole process.
  static NPlatform& Default();

  virtual NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) = 0;
  virtual NStatus DeleteFile(std::u16string_view path) = 0;
  // Fails when `to` exists.
  virtual NStatus MoveFile(std::u16string_view from, std::u16string_view to) = 0;

  // Creates one folder; fails with kAlreadyExists when it is there.
  virtual NStatus CreateFolder(std::u16string_view path, NFileSecurity security = NFileSecurity::kDefault) = 0;
  // Creates every missing folder of the chain; succeeds when all exist.
  virtual NStatus CreateFolderChain(std::u16string_view path, NFileSecurity security = NFileSecurity::kDefault);
  // Removes an empty folder.
  virtual NStatus RemoveFolder(std::u16string_view path) = 0;
  // Makes the folder's entries (a file created or removed in it) durable, as
  // Sync does a file's bytes. Where the system keeps them durable by itself,
  // or offers no way to flush a folder, it does nothing.
  virtual NStatus SyncFolder(std::u16string_view path);
  // Lists a folder without "." and "..", in the system's order.
  virtual NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) = 0;
  // The same, refusing (access denied) a folder reached through a symbolic
  // link anywhere on its path, as NOpenOptions::noLinks does for files.
  virtual NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) = 0;
  // The stamp of a folder, not following a symbolic link at its end; false
  // when it has none (missing, not a folder, or a layer that does not tell):
  // a caller then lists the folder afresh.
  virtual bool GetFolderStamp(std::u16string_view path, NFolderStamp* stamp);
  // The absolute path of an existing file or folder, with every symbolic
  // link resolved.
  virtual NStatus CanonicalPath(std::u16string_view path, std::u16string* canonical) = 0;
  // What the path names, without following a symbolic link at its end
  // (a link is kOther).
  virtual NPathKind GetPathKind(std::u16string_view path) = 0;

  bool IsFile(std::u16string_view path) { return GetPathKind(path) == NPathKind::kFile; }
  bool IsFolder(std::u16string_view path) { return GetPathKind(path) == NPathKind::kFolder; }

  // The English text of a system error code (Win32) or of an NTSTATUS value,
  // with its insertions still in place; false when the system has none.
  virtual bool LookupSystemMessage(std::uint32_t code, std::u16string* text) = 0;
  virtual bool LookupNtStatusMessage(std::uint32_t code, std::u16string* text) = 0;

  // Now, as a Windows file time (100 ns units since 1601-01-01, UTC).
  virtual std::uint64_t CurrentFileTime();

  // The full path of the running program.
  virtual std::u16string ExecutablePath() = 0;

  // The separator this system uses between path components.
  virtual char16_t PathSeparator() const = 0;
};
