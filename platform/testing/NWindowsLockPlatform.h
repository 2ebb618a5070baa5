#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "platform/NForwardingPlatform.h"

// A platform that forwards to another one and enforces, among the files it
// opened, what Windows enforces and POSIX does not:
//
// - Byte-range locks are mandatory. A read fails with kLockViolation where
//   another handle holds an exclusive lock; a write, Truncate (which touches
//   everything from the new length on) or Reserve (which touches what it adds
//   past the end) fails where another handle holds any lock, or where the same
//   handle holds a shared one.
// - A lock waits for a conflicting lock of another handle. The same handle may
//   stack shared locks, each needing its own Unlock, but asking for a lock that
//   overlaps its own exclusive lock, or an exclusive one over its own lock,
//   fails with kLockViolation at once instead of waiting for itself forever.
// - Unlock must name exactly a range that the handle locked (kNotLocked).
// - Share modes: an open that the existing handles' share flags exclude, or
//   whose own flags exclude their access, fails with kSharingViolation, as do
//   DeleteFile and MoveFile of a file open without kShareDelete. A refused
//   kCreateAlways open leaves the file as it was.
//
// Locks are also passed to the real file, so that other processes see them;
// conflicts between handles of this platform are settled here and never reach
// the real file. Files are told apart by NFileInfo::fileId, whatever path
// opened them. Handles opened some other way, for example straight through
// the target, are not seen.
//
// Owned by the test; it must outlive every file it opened. Thread-safe; each
// file it hands out is used by one thread at a time, as any NFile.
class NWindowsLockPlatform : public NForwardingPlatform {
 public:
  static constexpr std::uint32_t kNotLocked = 158;  // ERROR_NOT_LOCKED

  explicit NWindowsLockPlatform(NPlatform& target) : NForwardingPlatform(target) {}

  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override;
  NStatus DeleteFile(std::u16string_view path) override;
  NStatus MoveFile(std::u16string_view from, std::u16string_view to) override;

 private:
  class NWindowsLockFile;

  struct NLockRange {
    const NWindowsLockFile* owner = nullptr;
    std::uint64_t begin = 0;
    std::uint64_t end = 0;  // exclusive
    NLockKind kind = NLockKind::kShared;
    bool forwarded = false;  // also held on the real file
  };

  struct NOpenHandle {
    const NWindowsLockFile* handle = nullptr;
    bool write = false;
    unsigned share = kShareAll;
  };

  struct NFileState {
    std::vector<NOpenHandle> handles;
    std::vector<NLockRange> locks;
  };

  // Whether the handles open on the file refuse another open with this
  // access and these share flags, or it refuses them. Needs m_mutex.
  bool SharingConflict(std::uint64_t fileId, bool write, unsigned share) const;
  // Whether `path` names a file that is open without kShareDelete. Needs m_mutex.
  bool OpenWithoutShareDelete(std::u16string_view path);

  std::mutex m_mutex;
  std::condition_variable m_released;  // a lock or a handle went away
  std::map<std::uint64_t, NFileState> m_files;
};
