#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "platform/NFileVersion.h"
#include "platform/NPeVersionReader.h"
#include "platform/NUnicode.h"
#include "platform/testing/NPeBuilder.h"
#include "platform/testing/NTestFiles.h"

namespace {

namespace fs = std::filesystem;

// The POSIX reader reads the bytes itself, and only up to a cap.
TEST(NFileVersionPosix, ReadsFilesUpToTheSizeCapAndRefusesLargerOnes) {
  const fs::path folder = fs::path(testing::TempDir()) / ("cfgdeck_version_" + std::to_string(std::random_device()()));
  const fs::path program = folder / "Quenn.exe";
  NWriteFileBytes(program, NPeBuilder().FileVersion(5, 0, 0, 0).Build());
  const std::u16string path = NUtf8ToUtf16(program.string());

  fs::resize_file(program, kMaxPeFileSize);  // sparse: costs no disk
  NFileVersion version;
  EXPECT_TRUE(NReadFileVersion(path, &version));
  EXPECT_EQ(version.major, 5);

  fs::resize_file(program, kMaxPeFileSize + 1);
  version = {};
  EXPECT_FALSE(NReadFileVersion(path, &version));
  EXPECT_EQ(version.major, 0);

  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

}  // namespace
