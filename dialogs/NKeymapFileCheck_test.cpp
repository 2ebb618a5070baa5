#include "dialogs/NKeymapFileCheck.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFiles.h"

namespace {

namespace fs = std::filesystem;

class NKeymapFileCheckTest : public testing::Test {
 protected:
  void SetUp() override {
    // One folder per test and run: tests of several build trees run at once.
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_keymap_check_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
             "_" + std::to_string(std::random_device()()));
    NWriteFileBytes(m_dir / "config" / "Keymaps" / "custom.key", "VK_F1 MENU_CONNECT\n");
    fs::create_directories(m_dir / "config" / "folder.key");
    m_roots.config = (m_dir / "config").u16string();
  }
  void TearDown() override { fs::remove_all(m_dir); }

  // The message code, or 0 when accepted; the message's text in `text`.
  std::uint32_t Check(const std::u16string& name, bool custom = true, std::string* text = nullptr) {
    NReportMessageParams params;
    const bool accepted = NCheckCustomKeymapFile(custom, name, m_roots, NPlatform::Default(), params);
    EXPECT_EQ(accepted, params.GetCode() == 0) << NUnicodeString(name).ToUtf8();
    if (text) *text = params.GetText().ToUtf8();
    return params.GetCode();
  }

  fs::path m_dir;
  NPathTokenRoots m_roots;
};

TEST_F(NKeymapFileCheckTest, OnlyACustomKeymapIsCheckedAndEmptyOrMissingNamesAreRefusedWithTheirMessages) {
  EXPECT_EQ(Check(u"", false), 0u);
  EXPECT_EQ(Check(u"no such file", false), 0u);
  std::string text;
  EXPECT_EQ(Check(u"", true, &text), 0xE1380010u);
  EXPECT_EQ(text, "Custom keymap filename cannot be empty.\r\n");
  EXPECT_EQ(Check((m_dir / "config" / "Keymaps" / "gone.key").u16string(), true, &text), 0xE1380011u);
  EXPECT_EQ(text, "Keymap filename not found.\r\n");
}

TEST_F(NKeymapFileCheckTest, NamesResolveAbsoluteByTokenAndUnderTheConfigurationFolder) {
  EXPECT_EQ(Check((m_dir / "config" / "Keymaps" / "custom.key").u16string()), 0u);
  EXPECT_EQ(Check(u"${NSW_CONFIG_PATH}\\Keymaps\\custom.key"), 0u);
  EXPECT_EQ(Check((fs::path("Keymaps") / "custom.key").u16string()), 0u);
  // A folder is no keymap file.
  EXPECT_EQ(Check((m_dir / "config" / "folder.key").u16string()), kMsgKeymapFileNotFound);
  EXPECT_EQ(Check(u"folder.key"), kMsgKeymapFileNotFound);
  // Without a known configuration folder a token is not expanded.
  m_roots.config.clear();
  EXPECT_EQ(Check(u"${NSW_CONFIG_PATH}\\Keymaps\\custom.key"), kMsgKeymapFileNotFound);
}

TEST_F(NKeymapFileCheckTest, LinkToAFileIsAccepted) {
  const fs::path link = m_dir / "config" / "linked.key";
  if (!NMakeSymbolicLink(m_dir / "config" / "Keymaps" / "custom.key", link, false)) {
    GTEST_SKIP() << "this system or account cannot make symbolic links";
  }
  EXPECT_EQ(Check(link.u16string()), 0u);
  fs::remove(m_dir / "config" / "Keymaps" / "custom.key");
  EXPECT_EQ(Check(link.u16string()), kMsgKeymapFileNotFound) << "a dangling link";
}

}  // namespace
