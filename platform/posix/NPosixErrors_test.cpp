#include "platform/posix/NPosixErrors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string_view>

#include "platform/NStatus.h"
#include "platform/posix/NSystemMessageTable.h"

namespace {

struct ErrnoCase {
  int err;
  std::uint32_t expected;
  const char* name;
};

constexpr ErrnoCase kCases[] = {
    {0, 0, "0"},
    {ENOENT, NStatus::kFileNotFound, "ENOENT"},
    {ENOTDIR, NStatus::kPathNotFound, "ENOTDIR"},
    {EMFILE, 4, "EMFILE"},
    {ENFILE, 4, "ENFILE"},
    {EACCES, NStatus::kAccessDenied, "EACCES"},
    {EPERM, NStatus::kAccessDenied, "EPERM"},
    {EISDIR, NStatus::kAccessDenied, "EISDIR"},
    {EBADF, NStatus::kInvalidHandle, "EBADF"},
    {ENOMEM, NStatus::kNotEnoughMemory, "ENOMEM"},
    {EAGAIN, NStatus::kLockViolation, "EAGAIN"},
    {EWOULDBLOCK, NStatus::kLockViolation, "EWOULDBLOCK"},
    {ETXTBSY, NStatus::kSharingViolation, "ETXTBSY"},
    {EBUSY, 170, "EBUSY"},
    {EEXIST, NStatus::kFileExists, "EEXIST"},
    {EINVAL, NStatus::kInvalidParameter, "EINVAL"},
    {EXDEV, 17, "EXDEV"},
    {ENOSPC, NStatus::kDiskFull, "ENOSPC"},
    {EDQUOT, NStatus::kDiskFull, "EDQUOT"},
    {ENOTEMPTY, NStatus::kDirNotEmpty, "ENOTEMPTY"},
    {ENAMETOOLONG, NStatus::kFilenameTooLong, "ENAMETOOLONG"},
    {EROFS, 19, "EROFS"},
    {EIO, 1117, "EIO"},
    {ELOOP, NStatus::kCantResolveFilename, "ELOOP"},
    {EDEADLK, 1131, "EDEADLK"},
    {EINTR, 995, "EINTR"},
    {ETIMEDOUT, 1460, "ETIMEDOUT"},
    {EFBIG, 223, "EFBIG"},
    {ENOSYS, 50, "ENOSYS"},
    {EOPNOTSUPP, 50, "EOPNOTSUPP"},
    {ENOTSUP, 50, "ENOTSUP"},
    {-1, 31, "negative"},
    {1 << 20, 31, "far out of range"},
};

TEST(NPosixErrorsTest, MapsErrnoToWin32) {
  for (const ErrnoCase& c : kCases) {
    EXPECT_EQ(NWin32ErrorFromErrno(c.err), c.expected) << c.name;
  }
}

// A code without a text would surface as a bare number in every report.
TEST(NPosixErrorsTest, EveryResultHasMessage) {
  for (int err = 0; err <= 200; ++err) {
    const std::uint32_t code = NWin32ErrorFromErrno(err);
    std::u16string_view text;
    EXPECT_TRUE(NFindWin32Message(code, &text)) << "errno " << err << " -> " << code;
  }
}

// Only 0 may read as success; anything else mapping to 0 would hide a failure.
TEST(NPosixErrorsTest, OnlyZeroMapsToSuccess) {
  EXPECT_EQ(NWin32ErrorFromErrno(0), 0u);
  for (int err = 1; err <= 200; ++err) {
    EXPECT_NE(NWin32ErrorFromErrno(err), 0u) << "errno " << err;
  }
}

}  // namespace
