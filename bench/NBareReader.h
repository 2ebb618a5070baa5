#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The floor the store is measured against: opening a file, locking it
// shared (the bytes a key's lock covers), reading it and closing it with the
// system calls alone, in the store's 4096-byte blocks until a short read.
// Nothing of the library runs, so the floor carries none of its checks.
// POSIX only, as the benchmarks are.
class NBareReader {
 public:
  // The file's bytes, valid until the next Read; false when it cannot be
  // opened, locked or read.
  bool Read(const std::string& path, std::string_view* bytes) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return false;
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 4;
    bool ok = ::fcntl(fd, F_OFD_SETLK, &lock) == 0;
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
