#pragma once

#include <errno.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
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
  // Bare: only what reading a locked file takes. Store calls: also the
  // calls every load of the store makes on top, for what they guard: the
  // open refuses a symbolic link anywhere on the path, a file that is not a
  // regular one is refused, and the lock is released before the close (a
  // child forked meanwhile would keep it).
  enum class Calls { kBare, kStore };

  explicit NBareReader(Calls calls = Calls::kBare) : m_calls(calls) {}

  // The file's bytes, valid until the next Read; false when it cannot be
  // opened, locked or read.
  bool Read(const std::string& path, std::string_view* bytes) {
    const bool store = m_calls == Calls::kStore;
    const int fd = store ? OpenWithoutLinks(path) : ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st;
    bool ok = !store || (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode));
    ok = ok && NBareLock(fd, F_RDLCK);
    std::size_t at = 0;
    while (ok) {
      if (m_buffer.size() < at + kBlock) m_buffer.resize(2 * (at + kBlock));
      const ssize_t got = ::read(fd, m_buffer.data() + at, kBlock);
      ok = got >= 0;
      if (!ok) break;
      at += static_cast<std::size_t>(got);
      if (static_cast<std::size_t>(got) < kBlock) break;
    }
    if (store && !NBareLock(fd, F_UNLCK)) ok = false;
    ::close(fd);  // a bare read's lock goes with the descriptor
    *bytes = std::string_view(m_buffer.data(), at);
    return ok;
  }

 private:
  static int OpenWithoutLinks(const std::string& path) {
    struct open_how how = {};
    how.flags = O_RDONLY | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS;
    const int fd = static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how));
    return fd < 0 && errno == ENOSYS ? ::open(path.c_str(), static_cast<int>(how.flags)) : fd;
  }

  static constexpr std::size_t kBlock = 4096;
  Calls m_calls;
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
