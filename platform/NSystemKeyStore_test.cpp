// The system's key store as every system has it, against the real one: on
// Linux a keyring of the test's own on a private bus, which CTest sets up
// with platform/testing/run-with-keyring.sh; on Windows DPAPI.
#include "platform/NSystemKeyStore.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFolder.h"

#ifdef _WIN32
#include <windows.h>
#include <wincrypt.h>
#else
#include <libsecret/secret.h>
#endif

namespace {

using enum NSystemKeyResult;

NAes256Key KeyOf(std::uint8_t seed) {
  NAes256Key key;
  for (std::size_t i = 0; i < key.size(); ++i) key[i] = static_cast<std::uint8_t>(seed * 31 + i * 7);
  return key;
}

std::string Hex(std::string_view bytes) {
  std::string hex;
  for (const char c : bytes) hex += {"0123456789abcdef"[(c >> 4) & 0xF], "0123456789abcdef"[c & 0xF]};
  return hex;
}

std::string_view Bytes(const NAes256Key& key) { return {reinterpret_cast<const char*>(key.data()), key.size()}; }

#ifdef _WIN32
constexpr std::string_view kEntropy = "cfgdeck folder key";

DATA_BLOB Blob(std::string_view bytes) {
  return {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

// What DPAPI makes of `bytes` and back; empty when it refuses.
std::string Dpapi(bool protect, std::string_view bytes, std::string_view entropy) {
  DATA_BLOB in = Blob(bytes), mixed = Blob(entropy), out = {};
  const BOOL done = protect ? CryptProtectData(&in, L"", &mixed, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out)
                            : CryptUnprotectData(&in, nullptr, &mixed, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &out);
  if (!done) return {};
  std::string result(reinterpret_cast<const char*>(out.pbData), out.cbData);
  LocalFree(out.pbData);
  return result;
}
#else
// Filled in field by field: its reserved fields have no initializers.
const SecretSchema kSchema = [] {
  SecretSchema schema{};
  schema.name = "org.cfgdeck.FolderKey";
  schema.flags = SECRET_SCHEMA_NONE;
  schema.attributes[0] = {"id", SECRET_SCHEMA_ATTRIBUTE_STRING};
  return schema;
}();
#endif

class NSystemKeyStoreTest : public NTestFolderTest {
 protected:
  void SetUp() override {
#ifndef _WIN32
    if (std::getenv("CFGDECK_TEST_KEYRING") == nullptr) {
      GTEST_SKIP() << "needs the keyring of platform/testing/run-with-keyring.sh, which the CTest test "
                      "system_key_store_keyring sets up; never the user's own";
    }
#endif
    ASSERT_NO_FATAL_FAILURE(NTestFolderTest::SetUp());
    m_store = NSystemKeyStore::Create(Path("keys"), NPlatform::Default());
    // The keyring outlives a test: ids of this test's own.
    m_prefix = Hex(std::to_string(std::random_device()()));
    // A store set up to answer that does not is a failure, not a skip.
    NAes256Key ignored;
    ASSERT_EQ(m_store->Load(Id("0"), &ignored), kMissing) << m_store->Name() << ": " << m_store->LastError();
  }
  void TearDown() override {
    for (const std::string& id : m_ids) EXPECT_TRUE(m_store->Remove(id)) << m_store->LastError();
    NTestFolderTest::TearDown();
  }

  std::string Id(std::string_view suffix) {
    m_ids.push_back(m_prefix + std::string(suffix));
    return m_ids.back();
  }

  // Puts `stored` where the store keeps the key of `id`, past the store.
  void Plant(const std::string& id, const std::string& stored) {
#ifdef _WIN32
    WriteText("keys/" + id + ".dpapi", stored);
#else
    GError* error = nullptr;
    secret_password_store_sync(&kSchema, SECRET_COLLECTION_DEFAULT, "planted", stored.c_str(), nullptr, &error, "id",
                               id.c_str(), nullptr);
    ASSERT_EQ(error, nullptr) << error->message;
#endif
  }

  // What the system gives back for `id`, as the hex of its bytes.
  std::string Kept(const std::string& id) {
#ifdef _WIN32
    return Hex(Dpapi(false, ReadText("keys/" + id + ".dpapi"), kEntropy));
#else
    gchar* stored = secret_password_lookup_sync(&kSchema, nullptr, nullptr, "id", id.c_str(), nullptr);
    const std::string kept = stored != nullptr ? stored : "";
    secret_password_free(stored);
    return kept;
#endif
  }

  std::unique_ptr<NSystemKeyStore> m_store;
  std::string m_prefix;
  std::vector<std::string> m_ids;
};

// Also what it is kept as: other versions, and other tools, find keys by it.
TEST_F(NSystemKeyStoreTest, StoresReplacesAndRemovesAKeyAndOnlyThat) {
  // One id begins the other: no prefix match may join them.
  const std::string id = Id("a"), other = Id("ab");
  ASSERT_TRUE(m_store->Store(other, "other", KeyOf(3))) << m_store->LastError();
  NAes256Key loaded = KeyOf(9);
  for (const std::uint8_t seed : {1, 2}) {
    ASSERT_TRUE(m_store->Store(id, "cfgdeck test key", KeyOf(seed))) << m_store->LastError();
    ASSERT_EQ(m_store->Load(id, &loaded), kFound) << m_store->LastError();
    EXPECT_EQ(loaded, KeyOf(seed));
    EXPECT_EQ(Kept(id), Hex(Bytes(KeyOf(seed))));
  }
  ASSERT_TRUE(m_store->Remove(id)) << m_store->LastError();
  EXPECT_EQ(m_store->Load(id, &loaded), kMissing) << m_store->LastError();
  EXPECT_EQ(loaded, KeyOf(2)) << "untouched when missing";
  EXPECT_TRUE(m_store->Remove(id)) << "nothing kept is what Remove is for: " << m_store->LastError();
  ASSERT_EQ(m_store->Load(other, &loaded), kFound) << m_store->LastError();
  EXPECT_EQ(loaded, KeyOf(3));
}

// Kept under the id but no key of ours: never kMissing, which would have the
// caller store a new key over it.
TEST_F(NSystemKeyStoreTest, WhatIsNoKeyIsUnavailable) {
  struct Case {
    const char* what;
    std::string stored;
  };
#ifdef _WIN32
  const std::string key = std::string(Bytes(KeyOf(4)));
  const Case cases[] = {
      {"no blob", "not a blob"},
      {"an empty file", ""},
      {"a blob of another program's", Dpapi(true, key, "another program")},
      {"a blob one byte short", Dpapi(true, key.substr(1), kEntropy)},
  };
#else
  const Case cases[] = {
      {"nothing", ""},
      {"no hex", std::string(64, 'z')},
      {"upper-case hex", std::string(64, 'A')},
      {"one digit short", std::string(63, '0')},
      {"one digit more", std::string(65, '0')},
  };
#endif
  const std::string id = Id("d");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_NO_FATAL_FAILURE(Plant(id, c.stored));
    NAes256Key loaded = KeyOf(9);
    EXPECT_EQ(m_store->Load(id, &loaded), kUnavailable);
    EXPECT_EQ(loaded, KeyOf(9));
    EXPECT_NE(m_store->LastError(), "");
  }
}

#ifdef _WIN32
// Cut off at any call of the platform's, a Store leaves the old key whole.
TEST_F(NSystemKeyStoreTest, FailedStoreKeepsTheOldKey) {
  const std::string id = Id("e");
  ASSERT_TRUE(m_store->Store(id, "old", KeyOf(1))) << m_store->LastError();
  NFaultPlatform faults(NPlatform::Default());
  const auto failing = NSystemKeyStore::Create(Path("keys"), faults);
  for (int n = 1;; ++n) {
    faults.Reset();
    faults.FailNthOfAny(n, {.shortWrite = true});
    const bool stored = failing->Store(id, "new", KeyOf(2));
    if (!faults.Fired()) break;
    SCOPED_TRACE(n);
    EXPECT_FALSE(stored);
    EXPECT_NE(failing->LastError(), "");
    NAes256Key loaded;
    ASSERT_EQ(m_store->Load(id, &loaded), kFound) << m_store->LastError();
    EXPECT_EQ(loaded, KeyOf(1));
    EXPECT_FALSE(Exists("keys/" + id + ".dpapi.new"));
  }
}
#endif

TEST_F(NSystemKeyStoreTest, RefusesIdsThatAreNotLowerCaseHex) {
  NAes256Key loaded = KeyOf(9);
  for (const char* id : {"", "AB", "../ab", "a b"}) {
    SCOPED_TRACE(id);
    EXPECT_FALSE(m_store->Store(id, "bad", KeyOf(5)));
    EXPECT_EQ(m_store->Load(id, &loaded), kUnavailable);
    EXPECT_FALSE(m_store->Remove(id));
    EXPECT_NE(m_store->LastError(), "");
  }
  EXPECT_EQ(loaded, KeyOf(9));
}

}  // namespace
