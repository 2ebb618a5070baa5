// Where the folder-backed registry lives without CFGDECK_REGISTRY_DIR: the
// XDG base folders, which only POSIX systems have.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniRegistry.h"
#include "store/NRegistryAccess.h"

namespace {

namespace fs = std::filesystem;

std::u16string Folder(NRegistryHive hive) {
  std::u16string folder = u"<unset>";
  EXPECT_TRUE(NRegistryFolder(hive, &folder).IsOk());
  return folder;
}

class NIniRegistryPosixTest : public testing::Test {
 protected:
  NScopedEnvironment m_noOverride{"CFGDECK_REGISTRY_DIR", std::nullopt};
};

TEST_F(NIniRegistryPosixTest, FoldersComeFromTheUsersConfigurationFolder) {
  {
    NScopedEnvironment xdg("XDG_CONFIG_HOME", u"/xdg/config");
    EXPECT_EQ(Folder(NRegistryHive::kCurrentUser), u"/xdg/config/cfgdeck/registry");
    EXPECT_EQ(Folder(NRegistryHive::kLocalMachine), u"/etc/cfgdeck/registry");
  }
  // Unset, empty and relative values are all ignored.
  for (const std::optional<std::u16string>& xdg : {std::optional<std::u16string>(), std::optional<std::u16string>(u""),
                                                   std::optional<std::u16string>(u"relative/config")}) {
    NScopedEnvironment config("XDG_CONFIG_HOME", xdg);
    NScopedEnvironment home("HOME", u"/home/k\u00f6nig");
    EXPECT_EQ(Folder(NRegistryHive::kCurrentUser), u"/home/k\u00f6nig/.config/cfgdeck/registry");
  }
}

TEST_F(NIniRegistryPosixTest, WithoutTheOverrideTheUsersKeysLiveUnderXdgConfigHome) {
  const fs::path dir = fs::path(testing::TempDir()) / "cfgdeck_registry_xdg";
  fs::remove_all(dir);
  NScopedEnvironment xdg("XDG_CONFIG_HOME", dir.u16string());
  std::unique_ptr<NRegistryKey> key;
  ASSERT_TRUE(NGetRegistry().OpenKey(NRegistryHive::kCurrentUser, u"SOFTWARE\\Nerrin\\Parrow", true, &key).IsOk());
  ASSERT_TRUE(key->SetString(u"Config Path", u"/srv/cfg").IsOk());
  EXPECT_EQ(NReadFileBytes(dir / "cfgdeck/registry/SOFTWARE/Nerrin/Parrow.ini"),
            "\xEF\xBB\xBFS:\"Config Path\"=/srv/cfg\r\n");
  fs::remove_all(dir);
}

}  // namespace
