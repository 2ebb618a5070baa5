#include "config/NEncryptedString.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "config/NConfigTestFolder.h"
#include "config/NProfile.h"
#include "config/NSecretKeyring.h"
#include "location/NRegistryBase.h"
#include "platform/NPlatform.h"
#include "platform/testing/NScopedEnvironment.h"
#include "store/NIniRegistry.h"

namespace {

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
  std::string File() {
    std::ifstream in(m_folder.Root() / "Sessions.ini", std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }
  NUnicodeString Place() { return NSecretPlace(m_folder.Key("Sessions")->GetPath(), u"Password V2"); }

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
  NUnicodeString plain;
  NReportMessageParams params;
  ASSERT_TRUE(loaded.password.Get().Plain(Place(), &plain, params)) << params.GetText().ToUtf8();
  EXPECT_EQ(plain, wide);
}

TEST_F(NEncryptedStringTest, WithoutAKeyATypedPasswordIsNotSavedAndASealedOneNotRead) {
  UseKeyFile();
  SecretRecord sealed;
  sealed.password = NEncryptedString::FromPlain(u"hunter2");
  ASSERT_TRUE(Save(sealed));
  NSetSecretKeySource({});

  SecretRecord loaded;
  Load(loaded);
  NUnicodeString plain = u"untouched";
  NReportMessageParams params;
  EXPECT_FALSE(loaded.password.Get().Plain(Place(), &plain, params));
  EXPECT_EQ(params.GetCode(), kMsgNoSecretKey);
  EXPECT_EQ(plain, u"untouched");

  const std::string before = File();
  loaded.password = NEncryptedString::FromPlain(u"new one");
  EXPECT_FALSE(Save(loaded)) << "a password was saved without a key";
  EXPECT_EQ(File().find("new one"), std::string::npos);
  EXPECT_EQ(File(), before) << "a refused save changed the file";
}

TEST_F(NEncryptedStringTest, AnOldClearValueIsReadAsItStandsAndSealedAtTheNextSaveOnlyWithAKey) {
  {
    auto key = m_folder.Key("Sessions");
    NReportMessageParams params;
    ASSERT_TRUE(key->SetStringValue(u"Password V2", u"old clear text") && key->Flush(params));
  }
  SecretRecord withoutKey;
  Load(withoutKey);
  EXPECT_FALSE(withoutKey.IsModified()) << "without a key there is nothing to seal it with";
  NUnicodeString plain;
  NReportMessageParams params;
  ASSERT_TRUE(withoutKey.password.Get().Plain(Place(), &plain, params));
  EXPECT_EQ(plain, u"old clear text");

  UseKeyFile();
  SecretRecord record;
  Load(record);
  EXPECT_TRUE(record.password.IsModified());
  ASSERT_TRUE(Save(record));
  EXPECT_EQ(File().find("old clear text"), std::string::npos);
  SecretRecord reloaded;
  Load(reloaded);
  ASSERT_TRUE(reloaded.password.Get().Plain(Place(), &plain, params)) << params.GetText().ToUtf8();
  EXPECT_EQ(plain, u"old clear text");

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
