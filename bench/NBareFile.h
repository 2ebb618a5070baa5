#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The floors the store is measured against: a file opened, locked (the
// bytes a key's lock covers), read or rewritten, and closed, with the system
// calls alone. Nothing of the library runs, so the floors carry none of its
// checks. POSIX only, as the benchmarks are.

// Locks the bytes a key's lock covers, without waiting.
inline bool NBareLock(int fd, short type) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0;
  lock.l_len = 4;
  return ::fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

// Reads in the store's 4096-byte blocks until a short read, under a shared lock.
class NBareReader {
 public:
  // The file's bytes, valid until the next Read; false when it cannot be
  // opened, locked or read.
  bool Read(const std::string& path, std::string_view* bytes) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return false;
    bool ok = NBareLock(fd, F_RDLCK);
    std::size_t at = 0;
    while (ok) {
      if (m_buffer.size() < at + kBlock) m_buffer.resize(2 * (at + kBlock));
      const ssize_t got = ::read(fd, m_buffer.data() + at, kBlock);
      ok = got >= 0;
      if (!ok) break;
      at += static_cast<std::size_t>(got);
      if (static_cast<std::size_t>(got) < kBlock) break;
    }
    ::close(fd);  // the lock goes with the descriptor
    *bytes = std::string_view(m_buffer.data(), at);
    return ok;
  }

 private:
  static constexpr std::size_t kBlock = 4096;
  std::vector<char> m_buffer = std::vector<char>(1 << 16);
};

// Cuts the file to length 0 and writes `bytes` (and flushes them to the disk
// when `sync` is set) under an exclusive lock, as a save does.
inline bool NBareRewrite(const std::string& path, std::string_view bytes, bool sync) {
  const int fd = ::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return false;
  bool ok = NBareLock(fd, F_WRLCK) && ::ftruncate(fd, 0) == 0;
  for (std::size_t done = 0; ok && done < bytes.size();) {
    const ssize_t wrote = ::pwrite(fd, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    ok = wrote > 0;
    if (ok) done += static_cast<std::size_t>(wrote);
  }
  if (ok && sync) ok = ::fdatasync(fd) == 0;
  ::close(fd);
  return ok;
}
