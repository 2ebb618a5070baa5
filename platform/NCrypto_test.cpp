// The crypto primitives against published known answers, which both systems'
// libraries must reproduce byte for byte, and against tampering.
#include "platform/NCrypto.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes FromHex(std::string_view hex) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(std::string(hex.substr(i, 2)), nullptr, 16)));
  }
  return bytes;
}

template <typename Array>
Array ArrayFromHex(std::string_view hex) {
  const Bytes bytes = FromHex(hex);
  Array array{};
  std::copy_n(bytes.begin(), std::min(bytes.size(), array.size()), array.begin());
  return array;
}

// What a failed call must not leave behind.
const Bytes kStale = {0xDE, 0xAD, 0xBE, 0xEF};

constexpr std::string_view kZeroKey = "0000000000000000000000000000000000000000000000000000000000000000";
constexpr std::string_view kZeroNonce = "000000000000000000000000";
constexpr std::string_view kKey16 = "feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308";
constexpr std::string_view kNonce16 = "cafebabefacedbaddecaf888";
constexpr std::string_view kAssociated16 = "feedfacedeadbeeffeedfacedeadbeefabaddad2";
constexpr std::string_view kPlaintext16 =
    "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
    "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b39";
constexpr std::string_view kSealed16 =
    "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
    "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662"
    "76fc6ece0f4e1768cddf8853bb2d551b";

// McGrew and Viega's GCM test cases for AES-256, as NIST publishes them.
struct GcmCase {
  const char* name;
  std::string_view key, nonce, associated, plaintext, sealed;
};
constexpr GcmCase kGcmCases[] = {
    {"test case 13: nothing to encrypt, nothing associated", kZeroKey, kZeroNonce, "", "",
     "530f8afbc74536b9a963b4f1c4cb738b"},
    {"test case 14: one block, nothing associated", kZeroKey, kZeroNonce, "", "00000000000000000000000000000000",
     "cea7403d4d606b6e074ec5d3baf39d18d0d1c8a799996bf0265b98b5d48ab919"},
    {"test case 16: partial last block, associated data", kKey16, kNonce16, kAssociated16, kPlaintext16, kSealed16},
};

TEST(NCryptoTest, AesGcmSealsAndOpensTheKnownAnswers) {
  for (const GcmCase& c : kGcmCases) {
    const auto key = ArrayFromHex<NAes256Key>(c.key);
    const auto nonce = ArrayFromHex<NAesGcmNonce>(c.nonce);
    Bytes sealed = kStale;
    EXPECT_TRUE(NAesGcmSeal(key, nonce, FromHex(c.associated), FromHex(c.plaintext), &sealed)) << c.name;
    EXPECT_EQ(sealed, FromHex(c.sealed)) << c.name;
    Bytes opened = kStale;
    EXPECT_TRUE(NAesGcmOpen(key, nonce, FromHex(c.associated), FromHex(c.sealed), &opened)) << c.name;
    EXPECT_EQ(opened, FromHex(c.plaintext)) << c.name;
  }
}

struct OpenInputs {
  NAes256Key key = ArrayFromHex<NAes256Key>(kKey16);
  NAesGcmNonce nonce = ArrayFromHex<NAesGcmNonce>(kNonce16);
  Bytes associated = FromHex(kAssociated16);
  Bytes sealed = FromHex(kSealed16);
};

TEST(NCryptoTest, AesGcmOpenRefusesEveryChangeAndHandsOutNothing) {
  const struct {
    const char* name;
    std::function<void(OpenInputs&)> change;
  } cases[] = {
      {"a ciphertext bit flipped", [](OpenInputs& in) { in.sealed[5] ^= 0x01; }},
      {"a tag bit flipped", [](OpenInputs& in) { in.sealed.back() ^= 0x80; }},
      {"last byte cut off", [](OpenInputs& in) { in.sealed.pop_back(); }},
      {"a byte appended", [](OpenInputs& in) { in.sealed.push_back(0); }},
      {"ciphertext gone, tag kept", [](OpenInputs& in) { in.sealed.erase(in.sealed.begin(), in.sealed.end() - 16); }},
      {"shorter than a tag", [](OpenInputs& in) { in.sealed.resize(kAesGcmTagSize - 1); }},
      {"empty", [](OpenInputs& in) { in.sealed.clear(); }},
      {"wrong key", [](OpenInputs& in) { in.key[31] ^= 0x01; }},
      {"other nonce", [](OpenInputs& in) { in.nonce[0] ^= 0x01; }},
      {"different associated data", [](OpenInputs& in) { in.associated[0] ^= 0x01; }},
      {"associated data left out", [](OpenInputs& in) { in.associated.clear(); }},
  };
  Bytes opened;
  {
    const OpenInputs unchanged;
    ASSERT_TRUE(NAesGcmOpen(unchanged.key, unchanged.nonce, unchanged.associated, unchanged.sealed, &opened));
  }
  for (const auto& c : cases) {
    OpenInputs in;
    c.change(in);
    opened = kStale;
    EXPECT_FALSE(NAesGcmOpen(in.key, in.nonce, in.associated, in.sealed, &opened)) << c.name;
    EXPECT_TRUE(opened.empty()) << c.name;
  }
}

TEST(NCryptoTest, Pbkdf2Sha256DerivesTheKnownAnswers) {
  const struct {
    const char* name;
    std::string_view password;
    std::string_view salt;
    std::uint32_t iterations;
    std::string_view derived;
  } cases[] = {
      // RFC 7914, section 11.
      {"passwd, 1 iteration", "passwd", "salt", 1,
       "55ac046e56e3089fec1691c22544b605f94185216dde0465e68b9d57c20dacbc"
       "49ca9cccf179b645991664b39d77ef317c71b845b1e30bd509112041d3a19783"},
      {"Password, 80000 iterations", "Password", "NaCl", 80000,
       "4ddcd8f60b98be21830cee5ef22701f9641a4418d04c0414aeff08876b34ab56"
       "a1d425a1225833549adb841b51c9b3176a272bdebba1d078478f62b397f33c8d"},
      // Derived with another implementation (Python's hashlib): inputs that
      // a C string would lose.
      {"NULs inside password and salt", std::string_view("pass\0word", 9), std::string_view("sa\0lt", 5), 4096,
       "89b69d0516f829893c696226650a8687"},
      {"empty password", "", "salt", 1, "f135c27993baf98773c5cdb40a5706ce6a345cde61b000a67858650cd6a324d7"},
  };
  for (const auto& c : cases) {
    const Bytes salt(c.salt.begin(), c.salt.end());
    Bytes derived(c.derived.size() / 2, 0xAA);
    EXPECT_TRUE(NPbkdf2Sha256(c.password, salt, c.iterations, derived)) << c.name;
    EXPECT_EQ(derived, FromHex(c.derived)) << c.name;
  }
}

TEST(NCryptoTest, Pbkdf2Sha256RefusesWhatOneSystemCouldNotDeriveAndClearsTheOutput) {
  const Bytes salt = {1, 2, 3, 4};
  // None, or more than both systems take.
  for (const std::uint32_t iterations : {0u, kPbkdf2MaxIterations + 1}) {
    Bytes derived(32, 0xAA);
    EXPECT_FALSE(NPbkdf2Sha256("password", salt, iterations, derived)) << iterations << " iterations";
    EXPECT_EQ(derived, Bytes(32, 0)) << iterations << " iterations";
  }
  Bytes nothing;
  EXPECT_FALSE(NPbkdf2Sha256("password", salt, 1, nothing));
}

TEST(NCryptoTest, RandomBytesDifferBetweenCallsAndAreNotZero) {
  Bytes first(32), second(32);
  ASSERT_TRUE(NRandomBytes(first));
  ASSERT_TRUE(NRandomBytes(second));
  EXPECT_NE(first, second);
  EXPECT_NE(first, Bytes(32, 0));
  EXPECT_TRUE(NRandomBytes(std::span<std::uint8_t>()));
}

TEST(NCryptoTest, ConstantTimeEqualComparesWholeSpans) {
  const Bytes base = {1, 2, 3, 4};
  const struct {
    const char* name;
    Bytes other;
    bool equal;
  } cases[] = {
      {"same bytes", {1, 2, 3, 4}, true},         {"first byte differs", {9, 2, 3, 4}, false},
      {"last byte differs", {1, 2, 3, 9}, false}, {"a prefix", {1, 2, 3}, false},
      {"longer", {1, 2, 3, 4, 5}, false},         {"empty", {}, false},
  };
  for (const auto& c : cases) EXPECT_EQ(NConstantTimeEqual(base, c.other), c.equal) << c.name;
  EXPECT_TRUE(NConstantTimeEqual(Bytes{}, Bytes{}));
}

}  // namespace
