#pragma once

#include <string>

#include "platform/NFile.h"

// A file on a POSIX system, opened by NPosixPlatform.
//
// Locks are open-file-description locks (F_OFD_SETLK), not classic POSIX
// record locks. Classic locks belong to the process: two handles of one
// process never exclude each other, and closing any descriptor of the file
// silently drops every lock the process holds on it, which would let a
// reader in one thread see a writer's half-written file. An OFD lock belongs
// to this handle alone and lives until it is unlocked or the handle closes,
// which matches how Windows locks behave.
class NPosixFile final : public NFile {
 public:
  // Takes ownership of `fd`. `path` is kept for error reports; `size` is
  // the size just seen by the opener, or kUnknownSize.
  static constexpr std::uint64_t kUnknownSize = ~std::uint64_t{0};
  NPosixFile(int fd, std::u16string path, std::uint64_t size = kUnknownSize);
  ~NPosixFile() override;

  NStatus Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) override;
  NStatus Write(std::uint64_t offset, const void* data, std::size_t size) override;
  NStatus Truncate(std::uint64_t length) override;
  NStatus Reserve(std::uint64_t length) override;
  NStatus Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind, std::chrono::milliseconds timeout) override;
  NStatus Unlock(std::uint64_t offset, std::uint64_t length) override;
  NStatus GetInfo(NFileInfo* info) override;
  NStatus SizeHint(std::uint64_t* size) override;
  NStatus Sync() override;

 private:
  NStatus Failure(const char* operation) const;

  int m_fd;
  std::u16string m_path;
  std::uint64_t m_knownSize;  // forgotten at the first change made through the handle
};
