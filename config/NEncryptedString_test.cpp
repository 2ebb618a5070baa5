#include "config/NEncryptedString.h"

#include <gtest/gtest.h>

#include <variant>

#include "config/NConfigTestFolder.h"
#include "config/NProfile.h"
#include "config/NSecretKeyring.h"
#include "location/NRegistryBase.h"
#include "platform/NPlatform.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniRegistry.h"

namespace {

using Text = std::variant<std::u16string, std::uint32_t>;

struct SecretRecord final : NProfileRecord {
  NProfileEncrypted password{this, u"Password V2"};
  NProfileString host{this, u"Hostname"};
};

class NEncryptedStringTest : public testing::Test {
 protected:
  ~NEncryptedStringTest() override { NSetSecretKeySource({}); }

  // Keys from a key file of the test's own.
  void UseKeyFile() {
    auto keyring = std::make_shared<NSecretKeyring>(NUnicodeString::FromUtf8(m_folder.Root().string()),
                                                    NUnicodeString::FromUtf8((m_folder.Root() / "keys").string()),
                                                    NPlatform::Default(), nullptr);
    NSetSecretKeySource([keyring](const NSecretKeyId* wanted, NSecretKey* key, NReportMessageParams& params) {
      return keyring->Key(wanted, key, params);
    });
  }

  bool Save(SecretRecord& record) {
    auto key = m_folder.Key("Sessions");
    NReportMessageParams params;
    return record.WriteFields(*key, false) && key->Flush(params);
  }
  void Load(SecretRecord& record) { record.ReadFields(*m_folder.Key("Sessions")); }
  std::string File() { return NReadFileBytes(m_folder.Root() / "Sessions.ini"); }
  // The password `record` holds, in clear; the failure's code otherwise,
  // with the text left as it was.
  Text Plain(const SecretRecord& record) {
    NUnicodeString plain = u"untouched";
    NReportMessageParams params;
    const NUnicodeString place = NSecretPlace(m_folder.Key("Sessions")->GetPath(), u"Password V2");
    if (record.password.Get().Plain(place, &plain, params)) return std::u16string(plain);
    EXPECT_EQ(plain, u"untouched") << "a failure changed the text";
    return params.GetCode();
  }

  NConfigTestFolder m_folder;
};

TEST_F(NEncryptedStringTest, ATypedPasswordIsSavedSealedAndNeverInClear) {
  UseKeyFile();
  SecretRecord record;
  record.password = NEncryptedString::FromPlain(u"hunter2\u00E9");
  ASSERT_TRUE(Save(record));
  const std::string file = File();
  EXPECT_NE(file.find("S:\"Password V2\"=E1:"), std::string::npos) << file;
  const std::u16string wide = u"hunter2\u00E9";
  EXPECT_EQ(file.find("hunter2"), std::string::npos) << "the password in UTF-8";
  EXPECT_EQ(file.find(std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * 2)), std::string::npos)
      << "the password in UTF-16";

  SecretRecord loaded;
  Load(loaded);
  EXPECT_FALSE(loaded.IsModified());
  EXPECT_EQ(Plain(loaded), Text(wide));
}

TEST_F(NEncryptedStringTest, WithoutAKeyATypedPasswordIsNotSavedAndASealedOneNotRead) {
  UseKeyFile();
  SecretRecord sealed;
  sealed.password = NEncryptedString::FromPlain(u"hunter2");
  ASSERT_TRUE(Save(sealed));
  NSetSecretKeySource({});

  SecretRecord loaded;
  Load(loaded);
  EXPECT_EQ(Plain(loaded), Text(kMsgNoSecretKey));

  const std::string before = File();
  loaded.password = NEncryptedString::FromPlain(u"new one");
  EXPECT_FALSE(Save(loaded)) << "a password was saved without a key";
  EXPECT_EQ(File(), before) << "a refused save changed the file";
}

TEST_F(NEncryptedStringTest, AnOldClearValueIsReadAsItStandsAndSealedAtTheNextSaveOnlyWithAKey) {
  m_folder.Write("Sessions", {{u"Password V2", u"old clear text"}});
  SecretRecord withoutKey;
  Load(withoutKey);
  EXPECT_FALSE(withoutKey.IsModified()) << "without a key there is nothing to seal it with";
  EXPECT_EQ(Plain(withoutKey), Text(u"old clear text"));

  UseKeyFile();
  SecretRecord record;
  Load(record);
  EXPECT_TRUE(record.password.IsModified());
  ASSERT_TRUE(Save(record));
  EXPECT_EQ(File().find("old clear text"), std::string::npos);
  SecretRecord reloaded;
  Load(reloaded);
  EXPECT_EQ(Plain(reloaded), Text(u"old clear text"));

  // An emptied password stays empty, sealed or not.
  reloaded.password = NEncryptedString::FromPlain(u"");
  ASSERT_TRUE(Save(reloaded));
  EXPECT_NE(File().find("S:\"Password V2\"=\r\n"), std::string::npos) << File();
}

#ifndef _WIN32
// Windows reads policies from its real registry, which a test must not set.
TEST_F(NEncryptedStringTest, WherePolicyForbidsSavingPasswordsNoneIsStoredAndTheSaveSaysWhy) {
  UseKeyFile();
  const std::filesystem::path registry = m_folder.Root().string() + "-registry";
  NScopedEnvironment registryDir("CFGDECK_REGISTRY_DIR", registry.u16string());
  NIniRegistry policies(NUnicodeString((registry / "HKEY_CURRENT_USER").u16string()),
                        NUnicodeString((registry / "HKEY_LOCAL_MACHINE").u16string()));
  for (NRegistryHive hive : {NRegistryHive::kCurrentUser, NRegistryHive::kLocalMachine}) {
    std::unique_ptr<NRegistryKey> key;
    ASSERT_TRUE(policies.OpenKey(hive, u"Software\\Policies\\Nerrin", true, &key).IsOk());
    ASSERT_TRUE(key->SetDword(u"Save Passwords", 0));
  }
  NResetRegistryBase();

  SecretRecord record;
  record.password = NEncryptedString::FromPlain(u"hunter2");
  record.host = u"router1";
  auto key = m_folder.Key("Sessions");
  NReportMessageParams params;
  EXPECT_FALSE(record.WriteFields(*key, false, params));
  EXPECT_EQ(params.GetCode(), kMsgPasswordsNotSaved);
  ASSERT_TRUE(key->Flush(params));
  EXPECT_EQ(File().find("Password"), std::string::npos) << File();
  EXPECT_NE(File().find("router1"), std::string::npos) << "the other values were not saved";
  std::filesystem::remove_all(registry);
  NResetRegistryBase();
}
#endif

}  // namespace
