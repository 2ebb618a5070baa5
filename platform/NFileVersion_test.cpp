#include "platform/NFileVersion.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

#include "platform/NUnicode.h"
#include "platform/testing/NPeBuilder.h"
#include "platform/testing/NTestFiles.h"

namespace {

namespace fs = std::filesystem;

constexpr NFileVersion kUntouched{0xDEADBEEF, 0xAAAA, 0xBBBB, 0xCCCC, 0xDDDD};

bool Same(const NFileVersion& a, const NFileVersion& b) {
  return a.fileType == b.fileType && a.major == b.major && a.minor == b.minor && a.build == b.build &&
         a.revision == b.revision;
}

std::u16string U16(const fs::path& path) { return NUtf8ToUtf16(path.string()); }

class NFileVersionTest : public testing::Test {
 protected:
  void SetUp() override {
    m_folder = fs::path(testing::TempDir()) / ("cfgdeck_version_" + std::to_string(std::random_device()()));
    fs::create_directories(m_folder);
  }
  void TearDown() override {
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
  }

  // False, with the version untouched, or the version read.
  static bool Read(const fs::path& path, NFileVersion* version) {
    *version = kUntouched;
    const bool found = NReadFileVersion(U16(path), version);
    if (!found) {
      EXPECT_TRUE(Same(*version, kUntouched));
    }
    return found;
  }

  fs::path m_folder;
};

TEST_F(NFileVersionTest, ReadsTheVersionOfAProgramOnDisk) {
  const fs::path program = m_folder / "Quenn.exe";
  NWriteFileBytes(program, NPeBuilder().FileVersion(5, 4, 3, 2).Build());
  NFileVersion version;
  ASSERT_TRUE(Read(program, &version));
  EXPECT_TRUE(Same(version, {NFileVersion::kFileTypeApplication, 5, 4, 3, 2}));
}

TEST_F(NFileVersionTest, FailsForWhatIsNoProgramWithAVersion) {
  NWriteFileBytes(m_folder / "Skeldon.exe", "not a program");
  NWriteFileBytes(m_folder / "Parrow.exe", NPeBuilder().WithVersion(false).Build());
  NWriteFileBytes(m_folder / "empty.exe", "");
  NFileVersion version;
  EXPECT_FALSE(Read(m_folder / "missing.exe", &version));
  EXPECT_FALSE(Read(m_folder / "no such folder" / "Quenn.exe", &version));
  EXPECT_FALSE(Read(m_folder / "Skeldon.exe", &version));
  EXPECT_FALSE(Read(m_folder / "Parrow.exe", &version));
  EXPECT_FALSE(Read(m_folder / "empty.exe", &version));
  EXPECT_FALSE(Read(m_folder, &version));
  EXPECT_FALSE(NReadFileVersion(u"", &version));
}

}  // namespace
