#include "config/NSecretKeyring.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/NPlatform.h"
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
  NSecretKeyring Keyring(const std::string& folder) {
    return NSecretKeyring(Path("config/" + folder), Path("keys"), NPlatform::Default());
  }
};

TEST_F(NSecretKeyFileTest, EachFolderHasOneKeyMadeOnceOutsideIt) {
  NSecretKey first, second, other;
  NReportMessageParams params;
  ASSERT_TRUE(Keyring("a").KeyFileKey(&first, params)) << params.GetText().ToUtf8();
  ASSERT_TRUE(Keyring("a").KeyFileKey(&second, params));
  ASSERT_TRUE(Keyring("b").KeyFileKey(&other, params));
  EXPECT_EQ(first.bytes, second.bytes);
  EXPECT_NE(first.bytes, other.bytes);
  EXPECT_TRUE(Keyring("a").KeyFilePath().starts_with(Path("keys")));
  EXPECT_FALSE(Exists("config")) << "the keyring wrote into the configuration folder";
  EXPECT_EQ(ReadText("keys/" + NUnicodeString(Keyring("a").KeyFilePath().substr(Path("keys/").size())).ToUtf8()).size(),
            32u);
}

TEST_F(NSecretKeyFileTest, ProcessesAskingAtOnceGetTheSameKey) {
  NSecretKey keys[4];
  std::vector<std::thread> askers;
  for (NSecretKey& key : keys) {
    askers.emplace_back([this, &key] {
      NReportMessageParams params;
      EXPECT_TRUE(Keyring("shared").KeyFileKey(&key, params)) << params.GetText().ToUtf8();
    });
  }
  for (std::thread& asker : askers) asker.join();
  for (const NSecretKey& key : keys) EXPECT_EQ(key.bytes, keys[0].bytes);
}

TEST_F(NSecretKeyFileTest, AFileThatHoldsNoKeyIsRefusedAndKept) {
  const std::u16string path = Keyring("a").KeyFilePath();
  const std::string name = NUnicodeString(path.substr(Path("keys/").size())).ToUtf8();
  std::filesystem::create_directories(Native("keys"));
  for (const std::string& content : {std::string("short"), std::string(33, 'k')}) {
    WriteText("keys/" + name, content);
    NSecretKey key;
    NReportMessageParams params;
    EXPECT_FALSE(Keyring("a").KeyFileKey(&key, params)) << content.size();
    EXPECT_EQ(params.GetCode(), kMsgBadKeyFile);
    EXPECT_EQ(ReadText("keys/" + name), content) << "a bad key file was overwritten";
  }
}

}  // namespace
