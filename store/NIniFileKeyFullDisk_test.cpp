#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKeyFixture.h"

namespace {

// A real file system that runs out of space: a 64 KiB tmpfs, which needs root.
class NIniFileKeyFullDiskTest : public NIniFileKeyFaultsTest {
 protected:
  void SetUp() override {
    NIniFileKeyFaultsTest::SetUp();
    if (HasFatalFailure()) return;
    if (::geteuid() != 0) GTEST_SKIP() << "mounting a small tmpfs needs root";
    m_mount = m_folder / "tmpfs";
    fs::create_directory(m_mount);
    if (::mount("tmpfs", m_mount.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=64k") != 0) {
      GTEST_SKIP() << "cannot mount a tmpfs here: " << std::strerror(errno);
    }
    m_mounted = true;
  }
  void TearDown() override {
    // Detached even if a file is still open, so that the folder can go.
    if (m_mounted) {
      EXPECT_EQ(::umount2(m_mount.c_str(), MNT_DETACH), 0) << std::strerror(errno);
    }
    NIniFileKeyFaultsTest::TearDown();
  }

  static std::uint64_t FreeBytes(const fs::path& path) {
    struct statvfs info;
    if (::statvfs(path.c_str(), &info) != 0) return 0;
    return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
  }

  fs::path m_mount;
  bool m_mounted = false;
};

TEST_F(NIniFileKeyFullDiskTest, SaveThatDoesNotFitFailsAndLeavesTheOldFileWhole) {
  NFaultPlatform counter(NPlatform::Default());
  NIniFileStore store(UnicodePath(m_mount / "store"), NUnicodeString(), counter);
  auto key = OpenKey(store);
  ASSERT_TRUE(key);
  SetOldValues(*key);
  NReportMessageParams params;
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  const fs::path file = m_mount / "store" / "Sessions" / "lab.ini";
  const std::string old = NReadFileBytes(file);
  ASSERT_FALSE(old.empty());

  // Less room than the new content needs beyond the old file's page.
  constexpr std::uint64_t kLeft = 4096;
  const std::uint64_t free = FreeBytes(m_mount);
  ASSERT_GT(free, kLeft);
  NWriteFileBytes(m_mount / "filler", std::string(static_cast<std::size_t>(free - kLeft), 'x'));
  ASSERT_EQ(fs::file_size(m_mount / "filler"), free - kLeft) << "the filler must fit";
  ASSERT_LE(FreeBytes(m_mount), kLeft);

  ChangeValues(*key);
  ASSERT_GT(Dump(*key).size(), 2 * kLeft);
  counter.Reset();
  EXPECT_FALSE(key->Flush(params));
  const std::string text = params.GetText().ToUtf8();
  EXPECT_NE(text.find(file.string()), std::string::npos) << text;
  EXPECT_EQ(NReadFileBytes(file), old) << Difference(NReadFileBytes(file), old);
  EXPECT_EQ(counter.CallCount(NFaultKind::kTruncate), 0) << "the file was cut: " << text;

  // Once there is room again, the same key saves.
  fs::remove(m_mount / "filler");
  EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  EXPECT_NE(NReadFileBytes(file).find("Added 199"), std::string::npos);
}

// The new content fits in the file's own space, but the journal's copy of
// the old content does not: the save fails before the cut.
TEST_F(NIniFileKeyFullDiskTest, SaveWhoseJournalDoesNotFitFailsBeforeTheCut) {
  NFaultPlatform counter(NPlatform::Default());
  NIniFileStore store(UnicodePath(m_mount / "store"), NUnicodeString(), counter);
  auto key = OpenKey(store);
  ASSERT_TRUE(key);
  ASSERT_TRUE(key->SetStringValue(u"Big", NUnicodeString::FromUtf8(std::string(20'000, 'b'))));
  NReportMessageParams params;
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  const fs::path file = m_mount / "store" / "Sessions" / "lab.ini";
  const std::string old = NReadFileBytes(file);
  NWriteFileBytes(m_mount / "filler", std::string(static_cast<std::size_t>(FreeBytes(m_mount) - 4096), 'x'));
  ASSERT_LT(FreeBytes(m_mount), old.size());

  ASSERT_TRUE(key->DeleteValue(u"Big"));
  counter.Reset();
  EXPECT_FALSE(key->Flush(params));
  const std::string text = params.GetText().ToUtf8();
  EXPECT_NE(text.find(file.string() + "-journal"), std::string::npos) << text;
  EXPECT_NE(text.find("not enough space"), std::string::npos) << text;
  EXPECT_EQ(counter.CallCount(NFaultKind::kTruncate), 0) << "the file was cut: " << text;
  EXPECT_EQ(NReadFileBytes(file), old);
  EXPECT_FALSE(fs::exists(file.string() + "-journal"));
}

}  // namespace
