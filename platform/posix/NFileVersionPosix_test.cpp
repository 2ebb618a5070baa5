#include <gtest/gtest.h>

#include <filesystem>

#include "platform/NFileVersion.h"
#include "platform/NPeVersionReader.h"
#include "platform/testing/NPeBuilder.h"
#include "platform/testing/NTestFolder.h"

namespace {

using NFileVersionPosix = NTestFolderTest;

// The POSIX reader reads the bytes itself, and only up to a cap.
TEST_F(NFileVersionPosix, ReadsFilesUpToTheSizeCapAndRefusesLargerOnes) {
  WriteText("Quenn.exe", NPeBuilder().FileVersion(5, 0, 0, 0).Build());
  std::filesystem::resize_file(Native("Quenn.exe"), kMaxPeFileSize);  // sparse: costs no disk
  NFileVersion version;
  EXPECT_TRUE(NReadFileVersion(Path("Quenn.exe"), &version));
  EXPECT_EQ(version.major, 5);
  std::filesystem::resize_file(Native("Quenn.exe"), kMaxPeFileSize + 1);
  version = {};
  EXPECT_FALSE(NReadFileVersion(Path("Quenn.exe"), &version));
  EXPECT_EQ(version.major, 0);
}

}  // namespace
