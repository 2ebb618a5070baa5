// The registry base key and the policies read beside it.
#include "location/NRegistryBase.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "location/NConfigFolder.h"
#include "location/NPolicy.h"
#include "platform/testing/NScopedEnvironment.h"
#include "store/NIniRegistry.h"

namespace {

namespace fs = std::filesystem;

constexpr NRegistryHive kUser = NRegistryHive::kCurrentUser;
constexpr NRegistryHive kMachine = NRegistryHive::kLocalMachine;

// Counts the keys opened for reading, in order, to show the probe's order.
class ProbeRecorder final : public NRegistry {
 public:
  explicit ProbeRecorder(NRegistry& target) : m_target(target) {}
  NStatus OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                  std::unique_ptr<NRegistryKey>* key) override {
    opened.push_back((hive == kUser ? "HKCU\\" : "HKLM\\") + NUnicodeString(path).ToUtf8());
    return m_target.OpenKey(hive, path, create, key);
  }
  std::vector<std::string> opened;

 private:
  NRegistry& m_target;
};

class NRegistryBaseTest : public testing::Test {
 protected:
  void SetUp() override {
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_base_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_dir);
    m_registry = std::make_unique<NIniRegistry>(NUnicodeString::FromUtf8((m_dir / "HKEY_CURRENT_USER").string()),
                                                NUnicodeString::FromUtf8((m_dir / "HKEY_LOCAL_MACHINE").string()));
  }
  void TearDown() override { fs::remove_all(m_dir); }

  void Create(NRegistryHive hive, std::u16string_view path) {
    std::unique_ptr<NRegistryKey> key;
    ASSERT_TRUE(m_registry->OpenKey(hive, path, true, &key));
  }
  void SetDword(NRegistryHive hive, std::u16string_view path, std::u16string_view name, std::uint32_t value) {
    std::unique_ptr<NRegistryKey> key;
    ASSERT_TRUE(m_registry->OpenKey(hive, path, true, &key));
    ASSERT_TRUE(key->SetDword(name, value));
  }
  void Remove(NRegistryHive hive, const std::string& relative) {
    fs::remove_all(m_dir / (hive == kUser ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE") / relative);
  }

  fs::path m_dir;
  std::unique_ptr<NIniRegistry> m_registry;
};

TEST_F(NRegistryBaseTest, TheFirstOfFourProbesThatOpensIsTheBase) {
  ProbeRecorder recorder(*m_registry);
  NRegistryBase base = NFindRegistryBase(recorder);
  EXPECT_EQ(recorder.opened,
            (std::vector<std::string>{"HKCU\\SOFTWARE\\Nerrin", "HKLM\\SOFTWARE\\Nerrin",
                                      "HKCU\\SOFTWARE\\Nerrin Technologies", "HKLM\\SOFTWARE\\Nerrin Technologies"}));
  EXPECT_EQ(base.hive, kUser);
  EXPECT_EQ(base.path, u"SOFTWARE\\Nerrin");
  EXPECT_EQ(base.ProductKey(u"Skeldon"), u"SOFTWARE\\Nerrin\\Skeldon");

  // Each probe wins over those after it; removing it lets the next one win.
  Create(kMachine, u"SOFTWARE\\Nerrin Technologies\\Skeldon");
  Create(kUser, u"SOFTWARE\\Nerrin Technologies\\Skeldon");
  Create(kMachine, u"SOFTWARE\\Nerrin\\Skeldon");
  Create(kUser, u"SOFTWARE\\Nerrin\\Skeldon");
  struct Expected {
    NRegistryHive hive;
    std::u16string_view path;
    const char* removeAfter;
  };
  const Expected expected[] = {{kUser, u"SOFTWARE\\Nerrin", "SOFTWARE/Nerrin"},
                               {kMachine, u"SOFTWARE\\Nerrin", "SOFTWARE/Nerrin"},
                               {kUser, u"SOFTWARE\\Nerrin Technologies", "SOFTWARE"},
                               {kMachine, u"SOFTWARE\\Nerrin Technologies", "SOFTWARE"}};
  for (const Expected& next : expected) {
    recorder.opened.clear();
    base = NFindRegistryBase(recorder);
    EXPECT_EQ(base.hive, next.hive);
    EXPECT_EQ(base.path, next.path);
    EXPECT_EQ(recorder.opened.size(), static_cast<std::size_t>(&next - expected) + 1) << "probing stops at the base";
    Remove(next.hive, next.removeAfter);
  }
  base = NFindRegistryBase(*m_registry);
  EXPECT_EQ(base.hive, kUser);
  EXPECT_EQ(base.path, u"SOFTWARE\\Nerrin");
}

TEST_F(NRegistryBaseTest, TheRememberedFolderIsReadUnderTheChosenBase) {
  NScopedEnvironment registryDir("CFGDECK_REGISTRY_DIR", m_dir.u16string());
  NResetRegistryBase();
  {
    std::unique_ptr<NRegistryKey> key;
    ASSERT_TRUE(m_registry->OpenKey(kMachine, u"SOFTWARE\\Nerrin Technologies\\Skeldon", true, &key));
    ASSERT_TRUE(key->SetString(u"Config Path", u"/opt/shared"));
  }
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"/opt/shared");
  // Kept for the process, until forgotten.
  Create(kUser, u"SOFTWARE\\Nerrin");
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"/opt/shared");
  NResetRegistryBase();
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"");
  NResetRegistryBase();
}

TEST_F(NRegistryBaseTest, PoliciesAreReadFromTheKeyAndItsGlobalSubkey) {
  EXPECT_FALSE(NReadPolicy(*m_registry, kUser).savePasswords.has_value());
  SetDword(kMachine, u"Software\\Policies\\Nerrin", u"Save Passwords", 0);
  SetDword(kMachine, u"Software\\Policies\\Nerrin", u"Disable Passwords", 7);
  SetDword(kMachine, u"Software\\Policies\\Nerrin\\Global", u"Disable Passwords", 0);
  SetDword(kMachine, u"Software\\Policies\\Nerrin\\Global", u"Save Usernames", 1);
  SetDword(kUser, u"Software\\Policies\\Nerrin", u"Save Usernames", 0);

  const NPolicy machine = NReadPolicy(*m_registry, kMachine);
  EXPECT_EQ(machine.savePasswords, std::optional<bool>(false));
  EXPECT_EQ(machine.saveUsernames, std::optional<bool>(true));
  EXPECT_EQ(machine.disablePasswords, std::optional<bool>(false)) << "Global wins";
  const NPolicy user = NReadPolicy(*m_registry, kUser);
  EXPECT_EQ(user.saveUsernames, std::optional<bool>(false));
  EXPECT_FALSE(user.savePasswords.has_value());
  EXPECT_FALSE(user.disablePasswords.has_value());
}

TEST(NPolicyTest, PoliciesOnlyTakeChoicesAway) {
  NPolicy policy;
  policy.savePasswords = true;
  policy.saveUsernames = false;
  EXPECT_FALSE(policy.SavePasswords(false)) << "a policy of 1 forces nothing on";
  EXPECT_TRUE(policy.SavePasswords(true));
  EXPECT_FALSE(policy.SaveUsernames(true));
  policy.disablePasswords = true;
  EXPECT_FALSE(policy.SavePasswords(true));
  EXPECT_TRUE(policy.FixesSavePasswords());
}

}  // namespace
