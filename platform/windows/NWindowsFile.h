#pragma once

#include <string>

#include "platform/NFile.h"

// A file on Windows, opened by NWindowsPlatform with CreateFileW. I/O is
// positional (OVERLAPPED offsets on a synchronous handle). Windows locks are
// mandatory: while this handle holds a range, no other handle may read or
// write it, which is why callers do every read and write of a locked file
// through the handle that holds the lock.
class NWindowsFile final : public NFile {
 public:
  // Takes ownership of the handle (a HANDLE), opened for writing too when
  // `writable`.
  NWindowsFile(void* handle, std::u16string path, bool writable);
  ~NWindowsFile() override;

  NStatus Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) override;
  NStatus Write(std::uint64_t offset, const void* data, std::size_t size) override;
  NStatus Truncate(std::uint64_t length) override;
  NStatus Reserve(std::uint64_t length) override;
  NStatus Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind, std::chrono::milliseconds timeout) override;
  NStatus Unlock(std::uint64_t offset, std::uint64_t length) override;
  NStatus GetInfo(NFileInfo* info) override;
  NStatus Sync() override;

 private:
  NStatus Failure(const char* operation) const;

  void* m_handle;
  std::u16string m_path;
  bool m_writable;
};
