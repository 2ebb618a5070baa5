#include "platform/posix/NPosixErrors.h"

#include <cerrno>

namespace {

constexpr std::uint32_t kSuccess = 0;
constexpr std::uint32_t kInvalidFunction = 1;           // ERROR_INVALID_FUNCTION
constexpr std::uint32_t kFileNotFound = 2;              // ERROR_FILE_NOT_FOUND
constexpr std::uint32_t kPathNotFound = 3;              // ERROR_PATH_NOT_FOUND
constexpr std::uint32_t kTooManyOpenFiles = 4;          // ERROR_TOO_MANY_OPEN_FILES
constexpr std::uint32_t kAccessDenied = 5;              // ERROR_ACCESS_DENIED
constexpr std::uint32_t kInvalidHandle = 6;             // ERROR_INVALID_HANDLE
constexpr std::uint32_t kNotEnoughMemory = 8;           // ERROR_NOT_ENOUGH_MEMORY
constexpr std::uint32_t kNotSameDevice = 17;            // ERROR_NOT_SAME_DEVICE
constexpr std::uint32_t kWriteProtect = 19;             // ERROR_WRITE_PROTECT
constexpr std::uint32_t kBadUnit = 20;                  // ERROR_BAD_UNIT
constexpr std::uint32_t kGenFailure = 31;               // ERROR_GEN_FAILURE
constexpr std::uint32_t kSharingViolation = 32;         // ERROR_SHARING_VIOLATION
constexpr std::uint32_t kLockViolation = 33;            // ERROR_LOCK_VIOLATION
constexpr std::uint32_t kNotSupported = 50;             // ERROR_NOT_SUPPORTED
constexpr std::uint32_t kFileExists = 80;               // ERROR_FILE_EXISTS
constexpr std::uint32_t kInvalidParameter = 87;         // ERROR_INVALID_PARAMETER
constexpr std::uint32_t kDiskFull = 112;                // ERROR_DISK_FULL
constexpr std::uint32_t kInsufficientBuffer = 122;      // ERROR_INSUFFICIENT_BUFFER
constexpr std::uint32_t kSeekOnDevice = 132;            // ERROR_SEEK_ON_DEVICE
constexpr std::uint32_t kDirNotEmpty = 145;             // ERROR_DIR_NOT_EMPTY
constexpr std::uint32_t kBusy = 170;                    // ERROR_BUSY
constexpr std::uint32_t kFilenameTooLong = 206;         // ERROR_FILENAME_EXCED_RANGE
constexpr std::uint32_t kFileTooLarge = 223;            // ERROR_FILE_TOO_LARGE
constexpr std::uint32_t kNoData = 232;                  // ERROR_NO_DATA
constexpr std::uint32_t kArithmeticOverflow = 534;      // ERROR_ARITHMETIC_OVERFLOW
constexpr std::uint32_t kOperationAborted = 995;        // ERROR_OPERATION_ABORTED
constexpr std::uint32_t kNoAccess = 998;                // ERROR_NOACCESS
constexpr std::uint32_t kFileInvalid = 1006;            // ERROR_FILE_INVALID
constexpr std::uint32_t kNoUnicodeTranslation = 1113;   // ERROR_NO_UNICODE_TRANSLATION
constexpr std::uint32_t kIoDevice = 1117;               // ERROR_IO_DEVICE
constexpr std::uint32_t kPossibleDeadlock = 1131;       // ERROR_POSSIBLE_DEADLOCK
constexpr std::uint32_t kTooManyLinks = 1142;           // ERROR_TOO_MANY_LINKS
constexpr std::uint32_t kCancelled = 1223;              // ERROR_CANCELLED
constexpr std::uint32_t kTimeout = 1460;                // ERROR_TIMEOUT
constexpr std::uint32_t kCantResolveFilename = 1921;    // ERROR_CANT_RESOLVE_FILENAME

}  // namespace

std::uint32_t NWin32ErrorFromErrno(int err) {
  // Some systems give these aliases their own values; elsewhere they would
  // be duplicate case labels.
#if defined(EWOULDBLOCK) && EWOULDBLOCK != EAGAIN
  if (err == EWOULDBLOCK) return kLockViolation;
#endif
#if defined(EOPNOTSUPP) && defined(ENOTSUP) && EOPNOTSUPP != ENOTSUP
  if (err == EOPNOTSUPP) return kNotSupported;
#endif

  switch (err) {
    case 0:
      return kSuccess;
    case ENOENT:
      return kFileNotFound;
    case ENOTDIR:
      // A file where a folder was expected: Windows reports the path missing.
      return kPathNotFound;
    case EMFILE:
    case ENFILE:
      return kTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EISDIR:  // opening a folder as a file is refused, not reported as a folder
      return kAccessDenied;
    case EBADF:
      return kInvalidHandle;
    case ENOMEM:
      return kNotEnoughMemory;
    case EXDEV:
      return kNotSameDevice;
    case EROFS:
      return kWriteProtect;
    case ENODEV:
    case ENXIO:
      return kBadUnit;
    case ETXTBSY:
      return kSharingViolation;
    case EAGAIN:
      // Only a non-blocking lock attempt meets EAGAIN here: the range is
      // held by someone else.
      return kLockViolation;
    case ENOSYS:
#if defined(ENOTSUP)
    case ENOTSUP:
#else
    case EOPNOTSUPP:
#endif
      return kNotSupported;
    case EEXIST:
      return kFileExists;
    case EINVAL:
      return kInvalidParameter;
    case ENOSPC:
#if defined(EDQUOT)
    case EDQUOT:
#endif
      return kDiskFull;
    case ERANGE:
      // getcwd and friends: the caller's buffer is too small.
      return kInsufficientBuffer;
    case ESPIPE:
      return kSeekOnDevice;
    case ENOTEMPTY:
      return kDirNotEmpty;
    case EBUSY:
      return kBusy;
    case ENAMETOOLONG:
      return kFilenameTooLong;
    case EFBIG:
      return kFileTooLarge;
    case EPIPE:
      // Writing to a pipe whose reader has gone fails with ERROR_NO_DATA on Windows.
      return kNoData;
    case EOVERFLOW:
      return kArithmeticOverflow;
    case EINTR:
      // Callers retry EINTR themselves; one that escapes means the operation
      // was given up on a signal, which Windows reports as an aborted I/O.
      return kOperationAborted;
    case EFAULT:
      return kNoAccess;
#if defined(ESTALE)
    case ESTALE:
      // The file went away under an NFS handle; Windows says the open file is no longer valid.
      return kFileInvalid;
#endif
    case EILSEQ:
      return kNoUnicodeTranslation;
    case EIO:
      return kIoDevice;
    case EDEADLK:
      return kPossibleDeadlock;
    case EMLINK:
      return kTooManyLinks;
    case ENOTTY:
      return kInvalidFunction;
#if defined(ECANCELED)
    case ECANCELED:
      return kCancelled;
#endif
#if defined(ETIMEDOUT)
    case ETIMEDOUT:
      return kTimeout;
#endif
#if defined(ELOOP)
    case ELOOP:
      // Too many symbolic links: the name never resolves to a file.
      return kCantResolveFilename;
#endif
    default:
      // A generic device failure: still an error with a message, never a
      // success or a misleading "not found".
      return kGenFailure;
  }
}
