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

class NIniRegistryTest : public testing::Test {
 protected:
  void SetUp() override {
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_registry_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_dir);
    m_override.emplace("CFGDECK_REGISTRY_DIR", m_dir.u16string());
  }
  void TearDown() override {
    m_override.reset();
    fs::remove_all(m_dir);
  }

  static std::unique_ptr<NRegistryKey> Open(NRegistryHive hive, std::u16string_view path, bool create) {
    std::unique_ptr<NRegistryKey> key;
    NStatus status = NGetRegistry().OpenKey(hive, path, create, &key);
    EXPECT_TRUE(status.IsOk()) << status.Operation() << " " << status.Code();
    return key;
  }

  static std::uint32_t OpenCode(NRegistryHive hive, std::u16string_view path, bool create = false) {
    std::unique_ptr<NRegistryKey> key;
    return NGetRegistry().OpenKey(hive, path, create, &key).Code();
  }

  fs::path m_dir;
  std::optional<NScopedEnvironment> m_override;
};

// Each hive lives in a folder of its own under the override.
TEST_F(NIniRegistryTest, ValuesAreWrittenAtOnceAndReadBackAndHivesAreSeparate) {
  {
    auto key = Open(kUser, u"SOFTWARE\\Nerrin\\Skeldon", true);
    ASSERT_TRUE(key);
    EXPECT_TRUE(key->SetString(u"Config Path", u"C:\\Users\\K\u00f6nig\\Config").IsOk());
    EXPECT_TRUE(key->SetDword(u"Store Personal Data Separately", 0x80000001).IsOk());
  }
  EXPECT_TRUE(fs::is_regular_file(m_dir / "HKEY_CURRENT_USER/SOFTWARE/Nerrin/Skeldon.ini"));
  auto key = Open(kUser, u"software\\nerrin\\SKELDON", false);
  ASSERT_TRUE(key);
  NUnicodeString text;
  std::uint32_t number = 0;
  ASSERT_TRUE(key->QueryString(u"Config Path", &text).IsOk());
  EXPECT_EQ(text, u"C:\\Users\\K\u00f6nig\\Config");
  ASSERT_TRUE(key->QueryDword(u"Store Personal Data Separately", &number).IsOk());
  EXPECT_EQ(number, 0x80000001u);

  ASSERT_TRUE(Open(kMachine, u"SOFTWARE\\Policies\\Nerrin", true)->SetDword(u"Save Passwords", 0).IsOk());
  EXPECT_TRUE(fs::is_regular_file(m_dir / "HKEY_LOCAL_MACHINE/SOFTWARE/Policies/Nerrin.ini"));
  EXPECT_EQ(OpenCode(kUser, u"SOFTWARE\\Policies\\Nerrin"), NStatus::kFileNotFound);
  ASSERT_TRUE(Open(kUser, u"SOFTWARE\\Policies\\Nerrin", true)->SetDword(u"Save Passwords", 1).IsOk());
  std::uint32_t user = 0, machine = 1;
  ASSERT_TRUE(Open(kUser, u"SOFTWARE\\Policies\\Nerrin", false)->QueryDword(u"Save Passwords", &user).IsOk());
  ASSERT_TRUE(Open(kMachine, u"SOFTWARE\\Policies\\Nerrin", false)->QueryDword(u"Save Passwords", &machine).IsOk());
  EXPECT_EQ(user, 1u);
  EXPECT_EQ(machine, 0u);
}

TEST_F(NIniRegistryTest, MissingKeysAndValuesAreNotFoundAndTypesAreKept) {
  EXPECT_EQ(OpenCode(kUser, u"SOFTWARE\\Nerrin"), NStatus::kFileNotFound);
  auto created = Open(kUser, u"SOFTWARE\\Nerrin\\Skeldon", true);
  ASSERT_TRUE(created->SetDword(u"Number", 7).IsOk());
  // A key that holds only sub-keys exists; one created without values too.
  EXPECT_EQ(OpenCode(kUser, u"SOFTWARE\\Nerrin"), 0u);
  ASSERT_TRUE(Open(kUser, u"SOFTWARE\\Empty", true));
  EXPECT_EQ(OpenCode(kUser, u"SOFTWARE\\Empty"), 0u);
  EXPECT_EQ(OpenCode(kUser, u"SOFTWARE\\Nerrin\\Skeldon\\Deeper"), NStatus::kFileNotFound);

  auto key = Open(kUser, u"SOFTWARE\\Nerrin\\Skeldon", false);
  NUnicodeString text = u"untouched";
  std::uint32_t number = 99;
  EXPECT_EQ(key->QueryString(u"Absent", &text).Code(), NStatus::kFileNotFound);
  EXPECT_EQ(key->QueryString(u"Number", &text).Code(), NRegistryKey::kWrongType);
  EXPECT_EQ(key->QueryDword(u"number", &number).Code(), NStatus::kFileNotFound);
  EXPECT_EQ(text, u"untouched");
  EXPECT_EQ(number, 99u);
}

TEST_F(NIniRegistryTest, KeysOpenedForReadingRefuseWritesAndBadPathsAreRefused) {
  ASSERT_TRUE(Open(kUser, u"SOFTWARE\\Nerrin", true)->SetString(u"a", u"1").IsOk());
  auto key = Open(kUser, u"SOFTWARE\\Nerrin", false);
  EXPECT_EQ(key->SetString(u"a", u"2").Code(), NStatus::kAccessDenied);
  NUnicodeString text;
  ASSERT_TRUE(Open(kUser, u"SOFTWARE\\Nerrin", false)->QueryString(u"a", &text).IsOk());
  EXPECT_EQ(text, u"1");
  auto writable = Open(kUser, u"SOFTWARE\\Nerrin", true);
  EXPECT_EQ(writable->SetString(u"a", u"two\r\nlines").Code(), NStatus::kInvalidParameter);
  for (std::u16string_view path : {u"", u"\\SOFTWARE", u"SOFTWARE\\", u"SOFTWARE\\\\Nerrin", u"..\\outside"}) {
    EXPECT_EQ(OpenCode(kUser, path, true), NStatus::kInvalidParameter) << NUnicodeString(path).ToUtf8();
  }
  EXPECT_FALSE(fs::exists(m_dir / "outside.ini"));
}

}  // namespace
