#include "platform/windows/NWindowsFile.h"

#include <windows.h>

#include <algorithm>
#include <thread>

namespace {

constexpr std::chrono::milliseconds kLockPollInterval{2};
constexpr DWORD kMaxChunk = 1u << 30;  // ReadFile and WriteFile take 32-bit counts

OVERLAPPED At(std::uint64_t offset) {
  OVERLAPPED ov = {};
  ov.Offset = static_cast<DWORD>(offset);
  ov.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return ov;
}

}  // namespace

NWindowsFile::NWindowsFile(void* handle, std::u16string path, bool writable)
    : m_handle(handle), m_path(std::move(path)), m_writable(writable) {}

NWindowsFile::~NWindowsFile() { CloseHandle(m_handle); }

NStatus NWindowsFile::Failure(const char* operation) const {
  return NStatus::Error(GetLastError(), operation, m_path);
}

NStatus NWindowsFile::Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) {
  auto* out = static_cast<char*>(buffer);
  std::size_t done = 0;
  while (done < size) {
    OVERLAPPED ov = At(offset + done);
    DWORD n = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(size - done, kMaxChunk));
    if (!ReadFile(m_handle, out + done, chunk, &n, &ov)) {
      if (GetLastError() == ERROR_HANDLE_EOF) break;
      *bytesRead = done;
      return Failure("read");
    }
    if (n == 0) break;
    done += n;
  }
  *bytesRead = done;
  return NStatus::Ok();
}

NStatus NWindowsFile::Write(std::uint64_t offset, const void* data, std::size_t size) {
  const auto* in = static_cast<const char*>(data);
  std::size_t done = 0;
  while (done < size) {
    OVERLAPPED ov = At(offset + done);
    DWORD n = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(size - done, kMaxChunk));
    if (!WriteFile(m_handle, in + done, chunk, &n, &ov)) return Failure("write");
    done += n;
  }
  return NStatus::Ok();
}

NStatus NWindowsFile::Truncate(std::uint64_t length) {
  // Refused alike everywhere: Windows says access denied, Wine invalid
  // parameter.
  if (!m_writable) return NStatus::Error(NStatus::kAccessDenied, "truncate", m_path);
  FILE_END_OF_FILE_INFO info = {};
  info.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
  return SetFileInformationByHandle(m_handle, FileEndOfFileInfo, &info, sizeof info) ? NStatus::Ok()
                                                                                    : Failure("truncate");
}

NStatus NWindowsFile::Reserve(std::uint64_t length) {
  // A reservation is a change of the file: a handle that cannot write may
  // not make one, also where the file system could not reserve anyway.
  if (!m_writable) return NStatus::Error(NStatus::kAccessDenied, "reserve", m_path);
  // An allocation below the end of the file would cut it; reserving never
  // changes the visible length.
  FILE_STANDARD_INFO standard = {};
  if (!GetFileInformationByHandleEx(m_handle, FileStandardInfo, &standard, sizeof standard)) return Failure("reserve");
  if (static_cast<std::uint64_t>(standard.EndOfFile.QuadPart) >= length) return NStatus::Ok();
  FILE_ALLOCATION_INFO info = {};
  info.AllocationSize.QuadPart = static_cast<LONGLONG>(length);
  if (SetFileInformationByHandle(m_handle, FileAllocationInfo, &info, sizeof info)) return NStatus::Ok();
  // Some file systems and redirectors cannot reserve (nor can Wine); writing
  // is then the only test of space, as it is without a reservation.
  const DWORD error = GetLastError();
  if (error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED || error == ERROR_CALL_NOT_IMPLEMENTED) {
    return NStatus::Ok();
  }
  return NStatus::Error(error, "reserve", m_path);
}

NStatus NWindowsFile::Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind,
                           std::chrono::milliseconds timeout) {
  DWORD flags = kind == NLockKind::kExclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0;
  const bool forever = timeout < std::chrono::milliseconds::zero();
  if (!forever) flags |= LOCKFILE_FAIL_IMMEDIATELY;
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    OVERLAPPED ov = At(offset);
    if (LockFileEx(m_handle, flags, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32), &ov)) {
      return NStatus::Ok();
    }
    if (forever || GetLastError() != ERROR_LOCK_VIOLATION) return Failure("lock");
    if (std::chrono::steady_clock::now() >= deadline) return NStatus::Error(NStatus::kWaitTimeout, "lock", m_path);
    std::this_thread::sleep_for(kLockPollInterval);
  }
}

NStatus NWindowsFile::Unlock(std::uint64_t offset, std::uint64_t length) {
  OVERLAPPED ov = At(offset);
  return UnlockFileEx(m_handle, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32), &ov)
             ? NStatus::Ok()
             : Failure("unlock");
}

NStatus NWindowsFile::GetInfo(NFileInfo* info) {
  BY_HANDLE_FILE_INFORMATION data;
  if (!GetFileInformationByHandle(m_handle, &data)) return Failure("stat");
  constexpr std::int64_t kUnixEpochAsFileTime = 116444736000000000LL;
  const std::int64_t fileTime =
      (static_cast<std::int64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) | data.ftLastWriteTime.dwLowDateTime;
  info->size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  info->modifiedNanoseconds = (fileTime - kUnixEpochAsFileTime) * 100;
  info->fileId = (static_cast<std::uint64_t>(data.nFileIndexHigh) << 32) | data.nFileIndexLow;
  return NStatus::Ok();
}

NStatus NWindowsFile::Sync() { return FlushFileBuffers(m_handle) ? NStatus::Ok() : Failure("sync"); }
