// Conversions and comparisons as every system makes them. How ANSI text is
// read and which characters simple case folding equates beyond these differ
// (ICU on POSIX, the system's tables on Windows): see posix/ and windows/.
#include "platform/NUnicode.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

// Code units spelled out, so that a failure shows what came out instead of mojibake.
std::string Show(std::u16string_view s) { return testing::PrintToString(std::u16string(s)); }

int Sign(int value) { return (value > 0) - (value < 0); }

struct DecodeCase {
  const char* name;
  std::string_view utf8;
  std::u16string_view utf16;
};

// Each malformed sequence becomes U+FFFD; the text around it survives.
constexpr DecodeCase kMalformedUtf8[] = {
    {"overlong slash", "a\xC0\xAFz", u"a\uFFFD\uFFFDz"},
    {"overlong three-byte", "a\xE0\x80\xAFz", u"a\uFFFD\uFFFD\uFFFDz"},
    {"encoded surrogate", "a\xED\xA0\x80z", u"a\uFFFD\uFFFD\uFFFDz"},
    {"truncated at the end", "ab\xE2\x82", u"ab\uFFFD"},
    {"truncated in the middle", "a\xE2\x82z", u"a\uFFFDz"},
    {"truncated four-byte", "a\xF0\x9F\x98z", u"a\uFFFDz"},
    {"beyond U+10FFFF", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
    {"lone continuation byte", "x\x80y", u"x\uFFFDy"},
    {"byte never used", "x\xFFy", u"x\uFFFDy"},
};

TEST(NUnicodeTest, Utf8AndUtf16RoundTripIncludingASurrogatePair) {
  const std::string_view utf8 = "K\xC3\xB6nig \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80!";
  const std::u16string_view utf16 = u"K\u00F6nig \u65E5\u672C \U0001F600!";
  ASSERT_EQ(utf16.substr(9, 2), (std::u16string{0xD83D, 0xDE00}));  // the literal really is a pair

  EXPECT_EQ(NUtf8ToUtf16(utf8), utf16);
  EXPECT_EQ(NUtf16ToUtf8(utf16), utf8);
  EXPECT_EQ(NUtf8ToUtf16(""), u"");
  EXPECT_EQ(NUtf16ToUtf8(u""), "");
  // An embedded NUL is a character like any other, not the end of the text.
  EXPECT_EQ(NUtf8ToUtf16(std::string_view("a\0b", 3)), std::u16string_view(u"a\0b", 3));
  EXPECT_EQ(NUtf16ToUtf8(std::u16string_view(u"a\0b", 3)), std::string_view("a\0b", 3));
}

TEST(NUnicodeTest, MalformedTextBecomesReplacementCharactersAndNothingElseIsLost) {
  for (const DecodeCase& c : kMalformedUtf8) EXPECT_EQ(NUtf8ToUtf16(c.utf8), c.utf16) << c.name;
  const struct {
    const char* name;
    std::u16string utf16;
    std::string_view utf8;
  } loneSurrogates[] = {
      {"lone high in the middle", {u'a', 0xD800, u'z'}, "a\xEF\xBF\xBDz"},
      {"lone low in the middle", {u'a', 0xDC00, u'z'}, "a\xEF\xBF\xBDz"},
      {"high at the end", {u'a', 0xD83D}, "a\xEF\xBF\xBD"},
      {"low before high", {0xDE00, 0xD83D, u'z'}, "\xEF\xBF\xBD\xEF\xBF\xBDz"},
  };
  for (const auto& c : loneSurrogates) EXPECT_EQ(NUtf16ToUtf8(c.utf16), c.utf8) << c.name;
}

TEST(NUnicodeTest, IsValidUtf8AcceptsWellFormedTextAndRejectsEveryMalformedForm) {
  const std::string_view valid[] = {
      "",
      "plain ASCII",
      "caf\xC3\xA9",
      "\xF0\x9F\x98\x80",
      "\xEF\xBF\xBF",      // U+FFFF is a noncharacter, yet well-formed
      "\xF4\x8F\xBF\xBF",  // U+10FFFF, the last code point
      std::string_view("a\0b", 3),
  };
  for (std::string_view s : valid) {
    EXPECT_TRUE(NIsValidUtf8(s)) << "\"" << s << "\"";
  }
  for (const DecodeCase& c : kMalformedUtf8) {
    EXPECT_FALSE(NIsValidUtf8(c.utf8)) << c.name;
  }
  // The fault lies far past the start, beyond any early stop of the scan.
  const std::string longPrefix = std::string(4096, 'a') + "\xC0\xAF";
  EXPECT_FALSE(NIsValidUtf8(longPrefix));
}

TEST(NUnicodeTest, CompareIgnoreCaseEquatesCaseVariantsAndOrdersByLowerCaseFoldingWithAPrefixFirst) {
  const struct {
    std::u16string_view a, b;
    int sign;
  } rows[] = {
      {u"Section", u"SECTION", 0},
      {u"\u00C9T\u00C9", u"\u00E9t\u00E9", 0},                                                // ÉTÉ / été
      {u"\u03A3\u03C3", u"\u03C3\u03A3", 0},                                                  // Σσ
      {u"\u041F\u0420\u0418\u0412\u0415\u0422", u"\u043F\u0440\u0438\u0432\u0435\u0442", 0},  // ПРИВЕТ
      {u"\u0401", u"\u0451", 0},                                                              // Ё / ё
      {u"", u"", 0},
      {u"__FolderData__", u"abc", -1},  // '_' sorts below every letter once folded to lower case
      {u"_", u"A", -1},
      {u"[", u"a", -1},
      {u"abc", u"ABCD", -1},
      {u"", u"a", -1},
      {u"ABC", u"abd", -1},
      {u"Z", u"a", 1},
      {u"\u00E9", u"F", 1},
      {u"e", u"\u00E9", -1},
      {u"\u03C3", u"\u03A4", -1},  // σ before Τ
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(Show(row.a) + " vs " + Show(row.b));
    EXPECT_EQ(Sign(NCompareIgnoreCase(row.a, row.b)), row.sign);
    EXPECT_EQ(Sign(NCompareIgnoreCase(row.b, row.a)), -row.sign);
  }
}

TEST(NUnicodeTest, FoldCaseAgreesWithCompareIgnoreCaseOverTheWholeBmp) {
  const char16_t probes[] = {u'a', u'Z', u'_', 0x00E9, 0x03C3, 0x0451, 0xFFFD};
  std::vector<std::string> faults;
  for (char32_t u = 0; u <= 0xFFFF && faults.size() < 10; ++u) {
    const char16_t c = static_cast<char16_t>(u);
    const char16_t folded = NFoldCase(c);
    if (c >= 0xD800 && c <= 0xDFFF) {
      if (folded != c) faults.push_back("surrogate changed: " + Show({&c, 1}));
      continue;
    }
    if (NFoldCase(folded) != folded) faults.push_back("folding twice differs: " + Show({&c, 1}));
    if (NCompareIgnoreCase({&c, 1}, {&folded, 1}) != 0) faults.push_back("unequal to its fold: " + Show({&c, 1}));
    for (char16_t p : probes) {
      const int expected = Sign(static_cast<int>(folded) - static_cast<int>(NFoldCase(p)));
      if (Sign(NCompareIgnoreCase({&c, 1}, {&p, 1})) != expected) {
        faults.push_back("order against " + Show({&p, 1}) + " differs: " + Show({&c, 1}));
      }
    }
  }
  EXPECT_TRUE(faults.empty()) << faults.size() << " faults, first: " << faults.front();
}

}  // namespace
