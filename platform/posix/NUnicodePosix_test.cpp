// Text as the POSIX layer reads it: ICU's simple case folding, and ANSI
// text that is UTF-8 where it is valid UTF-8 and Windows-1252 otherwise.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/NUnicode.h"

namespace {

std::string Show(std::u16string_view s) { return testing::PrintToString(std::u16string(s)); }

TEST(NUnicodePosixTest, AnsiReadsValidUtf8AsUtf8AndAnythingElseAsWindows1252) {
  const struct {
    const char* name;
    std::string_view bytes;
    std::u16string_view expected;
  } cases[] = {
      {"ASCII", "plain", u"plain"},
      {"UTF-8", "caf\xC3\xA9 \xE2\x82\xAC", u"caf\u00E9 \u20AC"},
      {"euro sign", "\x80", u"\u20AC"},
      {"e acute", "\xE9", u"\u00E9"},
      {"cafe", "caf\xE9", u"caf\u00E9"},
      {"curly quotes", "\x93quoted\x94", u"\u201Cquoted\u201D"},
      // Bytes the code page leaves undefined pass through as C1 controls, as Windows does.
      {"undefined bytes", "\x81\x8D\x8F\x90\x9D", u"\u0081\u008D\u008F\u0090\u009D"},
      // One byte that is not UTF-8 makes the whole text Windows-1252.
      {"mixed", "\xE2\x82\xAC \x80", u"\u00E2\u201A\u00AC \u20AC"},
      {"empty", "", u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(NAnsiToUtf16(c.bytes), c.expected) << c.name;
  }
}

TEST(NUnicodePosixTest, SimpleCaseFoldingEquatesFinalSigmaAndTheKelvinSign) {
  // Σσς: final sigma folds to σ; the Kelvin sign folds to k.
  for (const auto& [a, b] :
       {std::pair<std::u16string_view, std::u16string_view>{u"\u03A3\u03C3\u03C2", u"\u03C3\u03C3\u03C3"},
        {u"\u212A", u"k"}}) {
    EXPECT_EQ(NCompareIgnoreCase(a, b), 0) << Show(a) << " vs " << Show(b);
    EXPECT_EQ(NCompareIgnoreCase(b, a), 0) << Show(b) << " vs " << Show(a);
  }
  EXPECT_EQ(NFoldCase(0x03C2), 0x03C3);
  EXPECT_EQ(NFoldCase(0x212A), u'k');
}

}  // namespace
