// Text as the Windows layer reads it: names compare by the system's ordinal
// rule (CompareStringOrdinal, its file systems' own), and ANSI text is in the
// system's code page.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/NUnicode.h"

namespace {

std::string Show(std::u16string_view s) { return testing::PrintToString(std::u16string(s)); }

bool SystemEqual(std::u16string_view a, std::u16string_view b) {
  return CompareStringOrdinal(reinterpret_cast<const wchar_t*>(a.data()), static_cast<int>(a.size()),
                              reinterpret_cast<const wchar_t*>(b.data()), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}

// The upper case by the file system's rules, the default without
// LCMAP_LINGUISTIC_CASING.
char16_t Upper(char16_t c) {
  const wchar_t in = static_cast<wchar_t>(c);
  wchar_t out = in;
  if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, &in, 1, &out, 1, nullptr, nullptr, 0) != 1) return c;
  return static_cast<char16_t>(out);
}

TEST(NUnicodeWindowsTest, NamesAreEqualExactlyWhenTheSystemsOrdinalRuleSaysSo) {
  const struct {
    std::u16string_view a;
    std::u16string_view b;
  } pairs[] = {
      {u"Section", u"SECTION"},
      {u"\u00C9T\u00C9", u"\u00E9t\u00E9"},
      {u"\u039F\u0394\u039F\u03A3", u"\u03BF\u03B4\u03BF\u03C2"},  // ΟΔΟΣ / οδος
      {u"\u212A", u"k"},                                           // Kelvin sign
      {u"\u0130", u"i"},                                           // İ
      {u"\u0131", u"I"},                                           // ı
      {u"\u01C5", u"\u01C6"},                                      // ǅ / ǆ
      {u"abc", u"abcd"},
  };
  for (const auto& c : pairs)
    EXPECT_EQ(NCompareIgnoreCase(c.a, c.b) == 0, SystemEqual(c.a, c.b)) << Show(c.a) << " vs " << Show(c.b);
  // The system's upper-case table has no upper case for final sigma and
  // leaves the Kelvin sign alone, where simple case folding equates both.
  EXPECT_NE(NCompareIgnoreCase(u"\u03C2", u"\u03C3"), 0);
  EXPECT_NE(NCompareIgnoreCase(u"\u212A", u"k"), 0);
}

TEST(NUnicodeWindowsTest, NamesTheSystemCallsEqualFoldAlikeOverTheWholeBmp) {
  // Names are equal under the rule when their upper cases are: checking
  // each unit against its own upper case covers every equal pair, and an
  // equal pair that folded apart would hash apart.
  std::vector<std::string> faults;
  for (char32_t u = 1; u <= 0xFFFF; ++u) {
    if (u >= 0xD800 && u <= 0xDFFF) continue;
    const char16_t c = static_cast<char16_t>(u);
    const char16_t upper = Upper(c);
    const bool equal = SystemEqual({&c, 1}, {&upper, 1});
    if ((NCompareIgnoreCase({&c, 1}, {&upper, 1}) == 0) != equal) {
      faults.push_back("compares otherwise than the system: " + Show({&c, 1}));
    }
    if (equal && NFoldCase(c) != NFoldCase(upper))
      faults.push_back("folds apart from its upper case: " + Show({&c, 1}));
  }
  EXPECT_TRUE(faults.empty()) << faults.size() << " faults, first: " << faults.front();
}

TEST(NUnicodeWindowsTest, AnsiTextIsReadInTheSystemsCodePage) {
  if (GetACP() != 1252) GTEST_SKIP() << "the cases are Windows-1252 text; this system's code page is " << GetACP();
  const struct {
    const char* name;
    std::string_view bytes;
    std::u16string_view expected;
  } cases[] = {
      {"e acute", "caf\xE9", u"caf\u00E9"},
      {"euro sign", "\x80", u"\u20AC"},
      {"curly quotes", "\x93quoted\x94", u"\u201Cquoted\u201D"},
      {"undefined bytes", "\x81\x8D\x8F\x90\x9D", u"\u0081\u008D\u008F\u0090\u009D"},
      // Valid UTF-8 is ANSI text too here, unlike on POSIX.
      {"UTF-8", "caf\xC3\xA9", u"caf\u00C3\u00A9"},
      {"empty", "", u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(NAnsiToUtf16(c.bytes), c.expected) << c.name;
  }
}

}  // namespace
