#include "platform/posix/NPosixFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <thread>

#include "platform/posix/NPosixErrors.h"

namespace {

// Locks are polled this often during a finite wait; a blocking wait for an
// OFD lock cannot be given a deadline.
constexpr std::chrono::milliseconds kLockPollInterval{2};

struct flock MakeLock(short type, std::uint64_t offset, std::uint64_t length) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = static_cast<off_t>(offset);
  lock.l_len = static_cast<off_t>(length);
  lock.l_pid = 0;  // must be 0 for OFD locks
  return lock;
}

int SetLock(int fd, int command, struct flock* lock) {
  int result;
  do {
    result = fcntl(fd, command, lock);
  } while (result == -1 && errno == EINTR);
  return result;
}

}  // namespace

NPosixFile::NPosixFile(int fd, std::u16string path, std::uint64_t size)
    : m_fd(fd), m_path(std::move(path)), m_knownSize(size) {}

NPosixFile::~NPosixFile() { ::close(m_fd); }

NStatus NPosixFile::Failure(const char* operation) const {
  // The descriptor is valid for as long as this object lives, so EBADF (and
  // EINVAL from ftruncate) on a change means it was opened for reading
  // only, which Windows reports as access denied.
  const bool change = std::string_view(operation) != "read" && std::string_view(operation) != "stat";
  if (change && (errno == EBADF || (errno == EINVAL && std::string_view(operation) == "truncate"))) {
    return NStatus::Error(NStatus::kAccessDenied, operation, m_path);
  }
  return NStatus::Error(NWin32ErrorFromErrno(errno), operation, m_path);
}

NStatus NPosixFile::Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) {
  // One call: a short read of a regular file is its end, as with ReadFile,
  // and asking again would only cost a call that returns nothing.
  ssize_t n;
  do {
    n = ::pread(m_fd, buffer, size, static_cast<off_t>(offset));
  } while (n < 0 && errno == EINTR);
  if (n < 0) {
    *bytesRead = 0;
    return Failure("read");
  }
  *bytesRead = static_cast<std::size_t>(n);
  return NStatus::Ok();
}

NStatus NPosixFile::Write(std::uint64_t offset, const void* data, std::size_t size) {
  m_knownSize = kUnknownSize;
  const auto* in = static_cast<const char*>(data);
  std::size_t done = 0;
  while (done < size) {
    const ssize_t n = ::pwrite(m_fd, in + done, size - done, static_cast<off_t>(offset + done));
    if (n < 0) {
      if (errno == EINTR) continue;
      return Failure("write");
    }
    done += static_cast<std::size_t>(n);
  }
  return NStatus::Ok();
}

NStatus NPosixFile::Truncate(std::uint64_t length) {
  m_knownSize = kUnknownSize;
  int result;
  do {
    result = ::ftruncate(m_fd, static_cast<off_t>(length));
  } while (result == -1 && errno == EINTR);
  return result == 0 ? NStatus::Ok() : Failure("truncate");
}

NStatus NPosixFile::Reserve(std::uint64_t length) {
  if (length == 0) return NStatus::Ok();
  int result;
  do {
    result = ::fallocate(m_fd, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(length));
  } while (result == -1 && errno == EINTR);
  // Some file systems (and network shares) cannot reserve; writing is then
  // the only test of space, as it is without a reservation.
  if (result == -1 && (errno == EOPNOTSUPP || errno == ENOSYS)) return NStatus::Ok();
  return result == 0 ? NStatus::Ok() : Failure("reserve");
}

NStatus NPosixFile::Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind,
                         std::chrono::milliseconds timeout) {
  struct flock lock = MakeLock(kind == NLockKind::kShared ? F_RDLCK : F_WRLCK, offset, length);
  if (timeout < std::chrono::milliseconds::zero()) {
    return SetLock(m_fd, F_OFD_SETLKW, &lock) == 0 ? NStatus::Ok() : Failure("lock");
  }
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    if (SetLock(m_fd, F_OFD_SETLK, &lock) == 0) return NStatus::Ok();
    if (errno != EAGAIN && errno != EACCES) return Failure("lock");
    if (std::chrono::steady_clock::now() >= deadline) {
      return NStatus::Error(NStatus::kWaitTimeout, "lock", m_path);
    }
    std::this_thread::sleep_for(kLockPollInterval);
    lock = MakeLock(kind == NLockKind::kShared ? F_RDLCK : F_WRLCK, offset, length);
  }
}

NStatus NPosixFile::Unlock(std::uint64_t offset, std::uint64_t length) {
  struct flock lock = MakeLock(F_UNLCK, offset, length);
  return SetLock(m_fd, F_OFD_SETLK, &lock) == 0 ? NStatus::Ok() : Failure("unlock");
}

NStatus NPosixFile::GetInfo(NFileInfo* info) {
  struct stat st;
  if (::fstat(m_fd, &st) != 0) return Failure("stat");
  info->size = static_cast<std::uint64_t>(st.st_size);
  info->modifiedNanoseconds = static_cast<std::int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  info->fileId = static_cast<std::uint64_t>(st.st_ino);
  return NStatus::Ok();
}

NStatus NPosixFile::SizeHint(std::uint64_t* size) {
  if (m_knownSize == kUnknownSize) return NFile::SizeHint(size);
  *size = m_knownSize;
  return NStatus::Ok();
}

NStatus NPosixFile::Sync() {
  int result;
  do {
    result = ::fdatasync(m_fd);
  } while (result == -1 && errno == EINTR);
  return result == 0 ? NStatus::Ok() : Failure("sync");
}
