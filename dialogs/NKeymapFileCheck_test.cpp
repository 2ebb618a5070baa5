#include "dialogs/NKeymapFileCheck.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFolder.h"

namespace {

namespace fs = std::filesystem;

class NKeymapFileCheckTest : public NTestFolderTest {
 protected:
  void SetUp() override {
    NTestFolderTest::SetUp();
    WriteText("config/Keymaps/custom.key", "VK_F1 MENU_CONNECT\n");
    fs::create_directories(Native("config/folder.key"));
    m_roots.config = Path("config");
  }

  // The message code, or 0 when accepted; the message's text in `text`.
  std::uint32_t Check(const std::u16string& name, bool custom = true, std::string* text = nullptr) {
    NReportMessageParams params;
    const bool accepted = NCheckCustomKeymapFile(custom, name, m_roots, NPlatform::Default(), params);
    EXPECT_EQ(accepted, params.GetCode() == 0) << NUnicodeString(name).ToUtf8();
    if (text) *text = params.GetText().ToUtf8();
    return params.GetCode();
  }

  NPathTokenRoots m_roots;
};

TEST_F(NKeymapFileCheckTest, OnlyACustomKeymapIsCheckedAndEmptyOrMissingNamesAreRefusedWithTheirMessages) {
  EXPECT_EQ(Check(u"", false), 0u);
  EXPECT_EQ(Check(u"no such file", false), 0u);
  std::string text;
  EXPECT_EQ(Check(u"", true, &text), 0xE1380010u);
  EXPECT_EQ(text, "Custom keymap filename cannot be empty.\r\n");
  EXPECT_EQ(Check(Path("config/Keymaps/gone.key"), true, &text), 0xE1380011u);
  EXPECT_EQ(text, "Keymap filename not found.\r\n");
}

TEST_F(NKeymapFileCheckTest, NamesResolveAbsoluteByTokenAndUnderTheConfigurationFolder) {
  EXPECT_EQ(Check(Path("config/Keymaps/custom.key")), 0u);
  EXPECT_EQ(Check(u"${NSW_CONFIG_PATH}\\Keymaps\\custom.key"), 0u);
  EXPECT_EQ(Check((fs::path("Keymaps") / "custom.key").u16string()), 0u);
  // A folder is no keymap file.
  EXPECT_EQ(Check(Path("config/folder.key")), kMsgKeymapFileNotFound);
  EXPECT_EQ(Check(u"folder.key"), kMsgKeymapFileNotFound);
  // Without a known configuration folder a token is not expanded.
  m_roots.config.clear();
  EXPECT_EQ(Check(u"${NSW_CONFIG_PATH}\\Keymaps\\custom.key"), kMsgKeymapFileNotFound);
}

TEST_F(NKeymapFileCheckTest, LinkToAFileIsAccepted) {
  const fs::path link = Native("config/linked.key");
  if (!NMakeSymbolicLink(Native("config/Keymaps/custom.key"), link, false)) {
    GTEST_SKIP() << "this system or account cannot make symbolic links";
  }
  EXPECT_EQ(Check(link.u16string()), 0u);
  fs::remove(Native("config/Keymaps/custom.key"));
  EXPECT_EQ(Check(link.u16string()), kMsgKeymapFileNotFound) << "a dangling link";
}

}  // namespace
