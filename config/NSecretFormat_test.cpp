#include "config/NSecretFormat.h"

#include <gtest/gtest.h>

namespace {

class NSecretFormatTest : public testing::Test {
 protected:
  NSecretFormatTest() {
    NAes256Key bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + 1);
    EXPECT_TRUE(NSecretKey::From(bytes, &m_key));
    bytes[0] ^= 1;
    EXPECT_TRUE(NSecretKey::From(bytes, &m_otherKey));
  }

  NUnicodeString Seal(std::u16string_view plain, std::u16string_view place) {
    NUnicodeString stored;
    NReportMessageParams params;
    EXPECT_TRUE(NSealSecret(m_key, place, plain, &stored, params)) << params.GetText().ToUtf8();
    return stored;
  }

  // The code of the failure to open, or 0 with the text in *plain.
  std::uint32_t Open(const NSecretKey& key, std::u16string_view place, std::u16string_view stored,
                     NUnicodeString* plain) {
    NReportMessageParams params;
    return NOpenSecret(key, place, stored, plain, params) ? 0 : params.GetCode();
  }

  NSecretKey m_key, m_otherKey;
  const NUnicodeString m_place = NSecretPlace(u"Sessions\\Lab\\router1", u"Password V2");
};

TEST_F(NSecretFormatTest, RoundTripsAnyTextWithAFreshNonceEachTime) {
  for (std::u16string_view plain : {u"", u"hunter2", u"p\u00E4ss w\u00F6rd \U0001F511"}) {
    const NUnicodeString once = Seal(plain, m_place), twice = Seal(plain, m_place);
    EXPECT_TRUE(NIsSealedSecret(once));
    EXPECT_NE(once, twice) << "the same nonce twice";
    EXPECT_EQ(once.find(plain.empty() ? u"\x1" : plain), NUnicodeString::npos) << "the text shows in its stored form";
    NUnicodeString opened = u"stale";
    EXPECT_EQ(Open(m_key, m_place, once, &opened), 0u);
    EXPECT_EQ(opened, plain);
  }
}

TEST_F(NSecretFormatTest, AChangedCutMovedOrForeignValueDoesNotOpen) {
  const NUnicodeString stored = Seal(u"hunter2", m_place);
  NUnicodeString flipped = stored;
  flipped[40] = flipped[40] == u'0' ? u'1' : u'0';
  NUnicodeString upper = stored;
  upper[30] = upper[30] >= u'a' ? u'A' : u'B';
  const struct {
    const char* what;
    const NSecretKey* key;
    NUnicodeString place;
    NUnicodeString stored;
    std::uint32_t code;
  } cases[] = {
      {"one character changed", &m_key, m_place, flipped, kMsgSecretDamaged},
      {"the last character cut", &m_key, m_place, stored.substr(0, stored.size() - 1), kMsgSecretDamaged},
      {"one byte cut", &m_key, m_place, stored.substr(0, stored.size() - 2), kMsgSecretDamaged},
      {"only the key id left", &m_key, m_place, stored.substr(0, 3 + 16), kMsgSecretDamaged},
      {"not hex", &m_key, m_place, upper, kMsgSecretDamaged},
      {"under another name", &m_key, NSecretPlace(u"Sessions\\Lab\\router1", u"Monitor Password V2"), stored,
       kMsgSecretDamaged},
      {"in another session", &m_key, NSecretPlace(u"Sessions\\Lab\\router2", u"Password V2"), stored,
       kMsgSecretDamaged},
      {"sealed with another key", &m_otherKey, m_place, stored, kMsgSecretOtherKey},
  };
  for (const auto& c : cases) {
    NUnicodeString plain = u"untouched";
    EXPECT_EQ(Open(*c.key, c.place, c.stored, &plain), c.code) << c.what;
    EXPECT_EQ(plain, u"untouched") << c.what;
  }
  NReportMessageParams params;
  NUnicodeString plain;
  EXPECT_FALSE(NOpenSecret(m_key, m_place, flipped, &plain, params));
  EXPECT_NE(params.GetText().find(m_place), NUnicodeString::npos) << "the message names the value";
}

TEST_F(NSecretFormatTest, PlacesMatchWithoutCaseAndOlderValuesReadAsTheyStand) {
  const NUnicodeString stored = Seal(u"hunter2", m_place);
  NUnicodeString plain;
  EXPECT_EQ(Open(m_key, NSecretPlace(u"SESSIONS\\lab\\Router1", u"password v2"), stored, &plain), 0u);
  EXPECT_EQ(plain, u"hunter2");
  EXPECT_EQ(Open(m_otherKey, m_place, u"plain old text", &plain), 0u);
  EXPECT_EQ(plain, u"plain old text");
  EXPECT_FALSE(NSealedSecretKeyId(u"plain old text"));
  EXPECT_EQ(NSealedSecretKeyId(stored), m_key.id);
  EXPECT_NE(m_key.id, m_otherKey.id);
}

}  // namespace
