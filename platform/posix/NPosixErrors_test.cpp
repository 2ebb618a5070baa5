#include "platform/posix/NPosixErrors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/NStatus.h"
#include "platform/posix/NSystemMessageTable.h"

namespace {

TEST(NPosixErrorsTest, MapsErrnoToWin32) {
  const struct {
    int err;
    std::uint32_t expected;
  } rows[] = {
      {0, 0}, {ENOENT, NStatus::kFileNotFound}, {ENOTDIR, NStatus::kPathNotFound}, {EMFILE, 4}, {ENFILE, 4},
      {EACCES, NStatus::kAccessDenied}, {EPERM, NStatus::kAccessDenied}, {EISDIR, NStatus::kAccessDenied},
      {EBADF, NStatus::kInvalidHandle}, {ENOMEM, NStatus::kNotEnoughMemory}, {EAGAIN, NStatus::kLockViolation},
      {EWOULDBLOCK, NStatus::kLockViolation}, {ETXTBSY, NStatus::kSharingViolation}, {EBUSY, 170},
      {EEXIST, NStatus::kFileExists}, {EINVAL, NStatus::kInvalidParameter}, {EXDEV, 17}, {ENOSPC, NStatus::kDiskFull},
      {EDQUOT, NStatus::kDiskFull}, {ENOTEMPTY, NStatus::kDirNotEmpty}, {ENAMETOOLONG, NStatus::kFilenameTooLong},
      {EROFS, 19}, {EIO, 1117}, {ELOOP, NStatus::kCantResolveFilename}, {EDEADLK, 1131}, {EINTR, 995},
      {ETIMEDOUT, 1460}, {EFBIG, 223}, {ENOSYS, 50}, {EOPNOTSUPP, 50}, {ENOTSUP, 50}, {-1, 31}, {1 << 20, 31},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(NWin32ErrorFromErrno(row.err), row.expected) << "errno " << row.err << ", " << std::strerror(row.err);
  }
}

// Only 0 may read as success, or a failure would be hidden; and a code
// without a text would surface as a bare number in every report.
TEST(NPosixErrorsTest, EveryErrnoMapsToACodeWithATextAndOnlyZeroToSuccess) {
  for (int err = 0; err <= 200; ++err) {
    const std::uint32_t code = NWin32ErrorFromErrno(err);
    std::u16string_view text;
    EXPECT_TRUE(NFindWin32Message(code, &text)) << "errno " << err << " -> " << code;
    EXPECT_EQ(code == 0, err == 0) << "errno " << err;
  }
}

}  // namespace
