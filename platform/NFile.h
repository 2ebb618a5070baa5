#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/NStatus.h"

enum class NLockKind { kShared, kExclusive };

// What a file's identity and content looked like at one moment; used to
// notice that another process changed the file.
struct NFileInfo {
  std::uint64_t size = 0;
  std::int64_t modifiedNanoseconds = 0;  // since the Unix epoch
  std::uint64_t fileId = 0;              // inode or file index
  friend bool operator==(const NFileInfo&, const NFileInfo&) = default;
};

// An open file. All I/O is positional, so one handle can serve several
// readers of its own without a shared cursor. Owned by a unique_ptr; closing
// releases any lock still held. Not thread-safe: one thread uses a handle at a
// time.
//
// Byte-range locks follow the stricter of the two systems' rules so that code
// written above this layer is correct on both: a lock belongs to this handle
// (not to the process), another handle of the same process is excluded by it,
// and a range may not be locked twice through the same handle.
class NFile {
 public:
  static constexpr std::chrono::milliseconds kWaitForever{-1};

  NFile() = default;
  NFile(const NFile&) = delete;
  NFile& operator=(const NFile&) = delete;
  virtual ~NFile() = default;

  // Reads up to `size` bytes at `offset`; *bytesRead is less than `size` only
  // at the end of the file.
  virtual NStatus Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) = 0;

  // Writes all `size` bytes at `offset`, extending the file as needed.
  virtual NStatus Write(std::uint64_t offset, const void* data, std::size_t size) = 0;

  // Sets the file's length, cutting or extending it.
  virtual NStatus Truncate(std::uint64_t length) = 0;

  // Makes sure the disk holds `length` bytes for this file without changing
  // its visible length, so that later writes up to it cannot run out of
  // space. Fails with kDiskFull when the space is not there.
  virtual NStatus Reserve(std::uint64_t length) = 0;

  // Locks [offset, offset+length). Waits up to `timeout` (kWaitForever: until
  // granted); a lock still held by another handle at the end of a finite
  // wait fails with kWaitTimeout.
  virtual NStatus Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind,
                       std::chrono::milliseconds timeout = kWaitForever) = 0;
  virtual NStatus Unlock(std::uint64_t offset, std::uint64_t length) = 0;

  virtual NStatus GetInfo(NFileInfo* info) = 0;

  // The file's size, for sizing a read buffer: where the handle already
  // knows it (from its opening, with nothing written through it since), no
  // system call. Another process may change the file at any time, so it is
  // only a hint.
  virtual NStatus SizeHint(std::uint64_t* size) {
    NFileInfo info;
    NStatus status = GetInfo(&info);
    if (status) *size = info.size;
    return status;
  }

  // Flushes the file's data to the disk.
  virtual NStatus Sync() = 0;
};
