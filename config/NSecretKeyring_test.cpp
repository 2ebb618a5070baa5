#include "config/NSecretKeyring.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>
#include <variant>

#include "config/NConfigTestFolder.h"
#include "platform/NPlatform.h"
#include "platform/NSystemKeyStore.h"
#include "platform/testing/NTestFolder.h"

namespace {

constexpr std::uint32_t kFastIterations = 1000;  // the tests' own; real verifiers are measured

TEST(NSecretKeyringTest, AVerifierConfirmsItsPassphraseAndGivesTheSameKeyAgain) {
  NUnicodeString verifier;
  NSecretKey made, opened;
  NReportMessageParams params;
  ASSERT_TRUE(NSecretKeyring::MakeVerifier(u"correct horse", kFastIterations, &verifier, &made, params));
  EXPECT_TRUE(NSecretKeyring::IsVerifier(verifier));
  EXPECT_TRUE(verifier.starts_with(u"P1:1000:"));
  ASSERT_TRUE(NSecretKeyring::OpenVerifier(u"correct horse", verifier, &opened, params));
  EXPECT_EQ(opened.bytes, made.bytes);

  NUnicodeString again;
  NSecretKey other;
  ASSERT_TRUE(NSecretKeyring::MakeVerifier(u"correct horse", kFastIterations, &again, &other, params));
  EXPECT_NE(again, verifier) << "the same salt twice";
  EXPECT_NE(other.id, made.id);

  NSecretKey untouched = made;
  EXPECT_FALSE(NSecretKeyring::OpenVerifier(u"Correct horse", verifier, &untouched, params));
  EXPECT_EQ(params.GetCode(), kMsgWrongPassphrase);
  EXPECT_EQ(untouched.bytes, made.bytes);
}

TEST(NSecretKeyringTest, ADamagedVerifierIsReportedNotTakenForAWrongPassphrase) {
  NUnicodeString verifier;
  NSecretKey key;
  NReportMessageParams params;
  ASSERT_TRUE(NSecretKeyring::MakeVerifier(u"pw", kFastIterations, &verifier, &key, params));
  NUnicodeString upper = verifier;
  upper.back() = u'F';
  const NUnicodeString damaged[] = {u"",
                                    u"an old plain passphrase",
                                    verifier.substr(0, verifier.size() - 1),
                                    upper,
                                    NUnicodeString(u"P1:0") + verifier.substr(verifier.find(u':', 3)),
                                    NUnicodeString(u"P1:x") + verifier.substr(verifier.find(u':', 3))};
  for (const NUnicodeString& stored : damaged) {
    EXPECT_FALSE(NSecretKeyring::IsVerifier(stored)) << stored.ToUtf8();
    NReportMessageParams failure;
    EXPECT_FALSE(NSecretKeyring::OpenVerifier(u"pw", stored, &key, failure)) << stored.ToUtf8();
    EXPECT_EQ(failure.GetCode(), kMsgBadPassphraseVerifier) << stored.ToUtf8();
  }
}

TEST(NSecretKeyringTest, TheWorkFactorNeverFallsBelowItsFloor) {
  EXPECT_GE(NSecretKeyring::MeasureIterations(0.0), NSecretKeyring::kMinimumIterations);
  EXPECT_GT(NSecretKeyring::MeasureIterations(2.0), NSecretKeyring::MeasureIterations(0.0));
}

class NSecretKeyFileTest : public NTestFolderTest {
 protected:
  std::unique_ptr<NSecretKeyring> Keyring(const std::string& folder) {
    return std::make_unique<NSecretKeyring>(Path("config/" + folder), Path("keys"), NPlatform::Default(), nullptr);
  }
};

TEST_F(NSecretKeyFileTest, EachFolderHasOneKeyMadeOnceOutsideIt) {
  NSecretKey first, second, other;
  NReportMessageParams params;
  ASSERT_TRUE(Keyring("a")->KeyFileKey(&first, params)) << params.GetText().ToUtf8();
  ASSERT_TRUE(Keyring("a")->KeyFileKey(&second, params));
  ASSERT_TRUE(Keyring("b")->KeyFileKey(&other, params));
  EXPECT_EQ(first.bytes, second.bytes);
  EXPECT_NE(first.bytes, other.bytes);
  EXPECT_TRUE(Keyring("a")->KeyFilePath().starts_with(Path("keys")));
  EXPECT_FALSE(Exists("config")) << "the keyring wrote into the configuration folder";
  EXPECT_EQ(ReadText("keys/" + NUnicodeString(Keyring("a")->KeyFilePath().substr(Path("keys/").size())).ToUtf8()).size(),
            32u);
}

TEST_F(NSecretKeyFileTest, ProcessesAskingAtOnceGetTheSameKey) {
  NSecretKey keys[4];
  std::vector<std::thread> askers;
  for (NSecretKey& key : keys) {
    askers.emplace_back([this, &key] {
      NReportMessageParams params;
      EXPECT_TRUE(Keyring("shared")->KeyFileKey(&key, params)) << params.GetText().ToUtf8();
    });
  }
  for (std::thread& asker : askers) asker.join();
  for (const NSecretKey& key : keys) EXPECT_EQ(key.bytes, keys[0].bytes);
}

TEST_F(NSecretKeyFileTest, AFileThatHoldsNoKeyIsRefusedAndKept) {
  const std::u16string path = Keyring("a")->KeyFilePath();
  const std::string name = NUnicodeString(path.substr(Path("keys/").size())).ToUtf8();
  std::filesystem::create_directories(Native("keys"));
  for (const std::string& content : {std::string("short"), std::string(33, 'k')}) {
    WriteText("keys/" + name, content);
    NSecretKey key;
    NReportMessageParams params;
    EXPECT_FALSE(Keyring("a")->KeyFileKey(&key, params)) << content.size();
    EXPECT_EQ(params.GetCode(), kMsgBadKeyFile);
    EXPECT_EQ(ReadText("keys/" + name), content) << "a bad key file was overwritten";
  }
}

// The operating system's keyring, as the tests choose it to answer.
class FakeSystemStore final : public NSystemKeyStore {
 public:
  FakeSystemStore(std::map<std::string, NAes256Key>* keys, bool answers) : m_keys(keys), m_answers(answers) {}
  const char* Name() const override { return "Fake"; }
  NSystemKeyResult Load(std::string_view id, NAes256Key* key) override {
    if (!m_answers) return NSystemKeyResult::kUnavailable;
    const auto found = m_keys->find(std::string(id));
    if (found == m_keys->end()) return NSystemKeyResult::kMissing;
    *key = found->second;
    return NSystemKeyResult::kFound;
  }
  bool Store(std::string_view id, std::string_view, const NAes256Key& key) override {
    if (m_answers) (*m_keys)[std::string(id)] = key;
    return m_answers;
  }
  bool Remove(std::string_view id) override {
    if (m_answers) m_keys->erase(std::string(id));
    return m_answers;
  }
  std::string LastError() const override { return m_answers ? "" : "no keyring"; }

 private:
  std::map<std::string, NAes256Key>* m_keys;
  bool m_answers;
};

using Text = std::variant<std::u16string, std::uint32_t>;

// A configuration folder with the library's store on it, and keyrings on it
// as separate processes would have them.
class NSecretFolderTest : public testing::Test {
 protected:
  enum class System { kNone, kSilent, kAnswering };
  static constexpr std::u16string_view kName = u"Password V2";

  std::unique_ptr<NSecretKeyring> Keyring(System system = System::kNone) {
    std::unique_ptr<NSystemKeyStore> store;
    if (system != System::kNone) store = std::make_unique<FakeSystemStore>(&m_systemKeys, system == System::kAnswering);
    return std::make_unique<NSecretKeyring>(NUnicodeString::FromUtf8(m_folder.Root().string()), KeyFolder(),
                                            NPlatform::Default(), std::move(store));
  }
  NUnicodeString KeyFolder() const { return NUnicodeString::FromUtf8(m_folder.Root().string() + "-keys"); }
  ~NSecretFolderTest() override { std::filesystem::remove_all(m_folder.Root().string() + "-keys"); }

  // Seals `plain` as the password of `keyName` with the keyring's key.
  void Seal(NSecretKeyring& keyring, const std::string& keyName, const std::u16string& plain) {
    auto key = m_folder.Key(keyName);
    NSecretKey secret;
    NUnicodeString stored;
    NReportMessageParams params;
    ASSERT_TRUE(keyring.Key(nullptr, &secret, params)) << params.GetText().ToUtf8();
    ASSERT_TRUE(NSealSecret(secret, NSecretPlace(key->GetPath(), kName), plain, &stored, params));
    ASSERT_TRUE(key->SetStringValue(kName, stored) && key->Flush(params));
  }
  // The password of `keyName` as the keyring opens it; the failure's code
  // otherwise.
  Text Open(NSecretKeyring& keyring, const std::string& keyName) {
    auto key = m_folder.Key(keyName);
    NUnicodeString stored, plain;
    NSecretKey secret;
    NReportMessageParams params;
    if (!key->GetStringValue(kName, &stored)) return 0u;
    const auto id = NSealedSecretKeyId(stored);
    if (!id || !keyring.Key(&*id, &secret, params) ||
        !NOpenSecret(secret, NSecretPlace(key->GetPath(), kName), stored, &plain, params)) {
      return params.GetCode();
    }
    return std::u16string(plain);
  }
  std::optional<NSecretKeyId> IdOf(const std::string& key) { return NSealedSecretKeyId(m_folder.String(key, kName)); }
  static NUnicodeString PasswordOf(const std::string& keyName) { return u"pw of " + NUnicodeString::FromUtf8(keyName); }

  NConfigTestFolder m_folder;
  std::map<std::string, NAes256Key> m_systemKeys;
  const std::vector<std::string> m_keys = {"Global", "Sessions\\a", "Sessions\\Lab\\b", "Sessions\\Lab\\c"};
};

TEST_F(NSecretFolderTest, TheKeyIsTheSystemKeyringsWhenOneAnswersElseAnOwnerOnlyFilesOutsideTheFolder) {
  struct Case {
    const char* name;
    System system;
    NSecretProtection expected;
  } cases[] = {{"no system keyring", System::kNone, NSecretProtection::kKeyFile},
               {"a keyring that does not answer", System::kSilent, NSecretProtection::kKeyFile},
               {"a keyring that answers", System::kAnswering, NSecretProtection::kSystemKeyring}};
  for (const Case& c : cases) {
    std::filesystem::remove_all(KeyFolder().ToUtf8());
    m_systemKeys.clear();
    auto keyring = Keyring(c.system);
    NSecretKey key;
    NReportMessageParams params;
    ASSERT_TRUE(keyring->Key(nullptr, &key, params)) << c.name << ": " << params.GetText().ToUtf8();
    EXPECT_EQ(keyring->Protection(), c.expected) << c.name;
    const bool inFile = std::filesystem::exists(keyring->KeyFilePath().ToUtf8());
    EXPECT_EQ(inFile, c.expected == NSecretProtection::kKeyFile) << c.name;
    EXPECT_EQ(m_systemKeys.size(), c.expected == NSecretProtection::kSystemKeyring ? 1u : 0u) << c.name;
    NSecretKey again;
    ASSERT_TRUE(Keyring(c.system)->Key(nullptr, &again, params)) << c.name;
    EXPECT_EQ(again.bytes, key.bytes) << c.name << ": the next process got another key";
  }
  EXPECT_EQ(std::filesystem::directory_iterator(m_folder.Root()), std::filesystem::directory_iterator())
      << "a key was written into the configuration folder";
}

TEST_F(NSecretFolderTest, AKeyringThatAnswersLaterTakesOverTheKeyFilesKey) {
  Seal(*Keyring(System::kSilent), "Sessions\\a", u"pw");
  auto keyring = Keyring(System::kAnswering);
  EXPECT_EQ(Open(*keyring, "Sessions\\a"), Text(u"pw"));
  EXPECT_EQ(keyring->Protection(), NSecretProtection::kSystemKeyring);
  EXPECT_FALSE(std::filesystem::exists(keyring->KeyFilePath().ToUtf8())) << "the key stayed in its file as well";
}

TEST_F(NSecretFolderTest, APassphraseProtectsEveryValueAndIsNeededToReadThem) {
  {
    auto keyring = Keyring();
    for (const std::string& key : m_keys) Seal(*keyring, key, PasswordOf(key));
    NReportMessageParams params;
    ASSERT_TRUE(keyring->ChangePassphrase(u"s3cret", kFastIterations, {}, params)) << params.GetText().ToUtf8();
    EXPECT_EQ(keyring->Protection(), NSecretProtection::kPassphrase);
  }
  EXPECT_TRUE(NSecretKeyring::IsVerifier(m_folder.String("Global", u"Config Passphrase")));

  // A process that was not given the passphrase, then one given the wrong one.
  auto locked = Keyring();
  EXPECT_EQ(Open(*locked, "Sessions\\a"), Text(kMsgPassphraseNeeded));
  NReportMessageParams params;
  EXPECT_FALSE(locked->Unlock(u"S3cret", params));
  EXPECT_EQ(params.GetCode(), kMsgWrongPassphrase);
  EXPECT_EQ(Open(*locked, "Sessions\\a"), Text(kMsgPassphraseNeeded));

  auto unlocked = Keyring();
  ASSERT_TRUE(unlocked->Unlock(u"s3cret", params));
  NSecretKey passphraseKey;
  ASSERT_TRUE(unlocked->Key(nullptr, &passphraseKey, params));
  for (const std::string& key : m_keys) {
    EXPECT_EQ(Open(*unlocked, key), Text(PasswordOf(key))) << key;
    EXPECT_EQ(IdOf(key), passphraseKey.id) << key << " still opens with the old key";
  }

  // Removed: the values go back to a key of the user's, no passphrase asked.
  ASSERT_TRUE(unlocked->ChangePassphrase(u"", kFastIterations, {}, params)) << params.GetText().ToUtf8();
  auto plain = Keyring();
  for (const std::string& key : m_keys) EXPECT_EQ(Open(*plain, key), Text(PasswordOf(key))) << key;
  EXPECT_FALSE(plain->HasPassphrase(params));
}

TEST_F(NSecretFolderTest, AnInterruptedChangeLeavesEveryValueReadableAndTheNextRunFinishesIt) {
  NSecretKey oldKey;
  {
    auto keyring = Keyring();
    for (const std::string& key : m_keys) Seal(*keyring, key, u"pw");
    NReportMessageParams params;
    ASSERT_TRUE(keyring->Key(nullptr, &oldKey, params));
    // The process dies after the second key.
    struct Killed {};
    EXPECT_THROW(keyring->ChangePassphrase(
                     u"new", kFastIterations,
                     [](std::size_t done) {
                       if (done == 2) throw Killed();
                     },
                     params),
                 Killed);
    // Before the next run, this process still reads every value.
    for (const std::string& key : m_keys) EXPECT_EQ(Open(*keyring, key), Text(u"pw")) << key;
  }
  NReportMessageParams params;
  NSecretKey newKey;
  ASSERT_TRUE(NSecretKeyring::OpenVerifier(u"new", m_folder.String("Global", u"Config Passphrase"), &newKey, params));
  std::size_t sealedWithOld = 0;
  for (const std::string& key : m_keys) {
    const auto id = IdOf(key);
    ASSERT_TRUE(id == oldKey.id || id == newKey.id) << key << " is sealed with neither key";
    sealedWithOld += id == oldKey.id;
  }
  EXPECT_GT(sealedWithOld, 0u) << "the interruption came too late to test anything";

  auto next = Keyring();
  EXPECT_TRUE(next->IsChangePending(params));
  ASSERT_TRUE(next->Unlock(u"new", params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(next->IsChangePending(params));
  EXPECT_FALSE(Keyring()->IsChangePending(params)) << "the folder still says a change is under way";
  for (const std::string& key : m_keys) {
    EXPECT_EQ(IdOf(key), newKey.id) << key;
    EXPECT_EQ(Open(*next, key), Text(u"pw")) << key;
  }
  EXPECT_EQ(m_folder.String("Global", u"Config Passphrase Previous Key"), u"(absent)");
}

}  // namespace
