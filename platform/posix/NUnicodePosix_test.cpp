// Text as the POSIX layer reads it: ICU's simple case folding, and ANSI
// text that is UTF-8 where it is valid UTF-8 and Windows-1252 otherwise.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/NUnicode.h"

namespace {

std::string Hex(std::u16string_view s) {
  std::string out;
  char buffer[8];
  for (char16_t c : s) {
    std::snprintf(buffer, sizeof buffer, "%04X ", static_cast<unsigned>(c));
    out += buffer;
  }
  return out;
}

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
    const std::u16string decoded = NAnsiToUtf16(c.bytes);
    EXPECT_EQ(decoded, c.expected) << c.name << ": " << Hex(decoded);
  }
}

TEST(NUnicodePosixTest, SimpleCaseFoldingEquatesFinalSigmaAndTheKelvinSign) {
  const struct {
    std::u16string_view a;
    std::u16string_view b;
  } equal[] = {
      {u"\u03A3\u03C3\u03C2", u"\u03C3\u03C3\u03C3"},  // Σσς: final sigma folds to σ
      {u"\u212A", u"k"},                                // Kelvin sign
  };
  for (const auto& c : equal) {
    EXPECT_EQ(NCompareIgnoreCase(c.a, c.b), 0) << Hex(c.a) << "vs " << Hex(c.b);
    EXPECT_EQ(NCompareIgnoreCase(c.b, c.a), 0) << Hex(c.b) << "vs " << Hex(c.a);
  }
  EXPECT_EQ(NFoldCase(0x03C2), 0x03C3);
  EXPECT_EQ(NFoldCase(0x212A), u'k');
}

}  // namespace
