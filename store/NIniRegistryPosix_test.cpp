// Where the folder-backed registry lives without CFGDECK_REGISTRY_DIR: the
// XDG base folders, which only POSIX systems have.
#include "store/NIniRegistry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFiles.h"
#include "store/NRegistryAccess.h"

namespace {

namespace fs = std::filesystem;

constexpr NRegistryHive kUser = NRegistryHive::kCurrentUser;
constexpr NRegistryHive kMachine = NRegistryHive::kLocalMachine;

class NIniRegistryPosixTest : public testing::Test {
 protected:
  void SetUp() override {
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_registry_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_dir);
  }
  void TearDown() override { fs::remove_all(m_dir); }

  static std::u16string Folder(NRegistryHive hive) {
    std::u16string folder = u"<unset>";
    EXPECT_TRUE(NRegistryFolder(hive, &folder).IsOk());
    return folder;
  }

  fs::path m_dir;
  NScopedEnvironment m_noOverride{"CFGDECK_REGISTRY_DIR", std::nullopt};
};

TEST_F(NIniRegistryPosixTest, FoldersComeFromTheUsersConfigurationFolder) {
  {
    NScopedEnvironment xdg("XDG_CONFIG_HOME", u"/xdg/config");
    EXPECT_EQ(Folder(kUser), u"/xdg/config/cfgdeck/registry");
    EXPECT_EQ(Folder(kMachine), u"/etc/cfgdeck/registry");
  }
  // Unset, empty and relative values are all ignored.
  for (const std::optional<std::u16string>& xdg :
       {std::optional<std::u16string>(), std::optional<std::u16string>(u""),
        std::optional<std::u16string>(u"relative/config")}) {
    NScopedEnvironment config("XDG_CONFIG_HOME", xdg);
    NScopedEnvironment home("HOME", u"/home/k\u00f6nig");
    EXPECT_EQ(Folder(kUser), u"/home/k\u00f6nig/.config/cfgdeck/registry");
  }
}

TEST_F(NIniRegistryPosixTest, WithoutTheOverrideTheUsersKeysLiveUnderXdgConfigHome) {
  NScopedEnvironment xdg("XDG_CONFIG_HOME", (m_dir / "xdg").u16string());
  std::unique_ptr<NRegistryKey> key;
  ASSERT_TRUE(NGetRegistry().OpenKey(kUser, u"SOFTWARE\\Nerrin\\Parrow", true, &key).IsOk());
  ASSERT_TRUE(key->SetString(u"Config Path", u"/srv/cfg").IsOk());
  EXPECT_EQ(NReadFileBytes(m_dir / "xdg/cfgdeck/registry/SOFTWARE/Nerrin/Parrow.ini"),
            "\xEF\xBB\xBFS:\"Config Path\"=/srv/cfg\r\n");
}

}  // namespace
