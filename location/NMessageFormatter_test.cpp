#include "location/NMessageFormatter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string Utf8(const std::u16string& s) { return std::string(s.begin(), s.end()); }  // tests use ASCII only

std::u16string Format(std::u16string_view pattern, const std::vector<NFormatArgument>& args = {}) {
  std::u16string out;
  NMessageFormatter::Format(pattern, args, &out);
  return out;
}

struct Case {
  const char16_t* pattern;
  std::vector<NFormatArgument> args;
  const char16_t* expected;
};

void ExpectAll(const std::vector<Case>& cases) {
  for (const Case& c : cases) {
    EXPECT_EQ(Utf8(Format(c.pattern, c.args)), Utf8(c.expected)) << "pattern: " << Utf8(c.pattern);
  }
}

const auto u = NFormatArgument::Unsigned;
const auto s = NFormatArgument::Signed;

TEST(NMessageFormatterTest, EscapesInsertionsAndWhatIsKeptAsWritten) {
  std::vector<std::u16string> texts;  // the arguments refer to them
  for (char16_t c = u'a'; c <= u'l'; ++c) texts.push_back(u"<" + std::u16string(1, c) + u">");
  const std::vector<NFormatArgument> twelve(texts.begin(), texts.end());
  ExpectAll({{u"100%% sure", {}, u"100% sure"},
             {u"one%ntwo", {}, u"one\r\ntwo"},
             {u"a%rb%tc", {}, u"a\rb\tc"},
             {u"end%.", {}, u"end."},
             {u"wow%!", {}, u"wow!"},
             {u"a% b", {}, u"a b"},
             {u"%q%Z", {}, u"qZ"},
             {u"kept%0dropped", {}, u"kept"},
             {u"text\r\n%0", {}, u"text\r\n"},
             {u"trailing %", {}, u"trailing %"},
             {u"", {}, u""},
             // Plain insertions take at most two digits.
             {u"%1 and %2", twelve, u"<a> and <b>"},
             {u"%12", twelve, u"<l>"},
             {u"%100", twelve, u"<j>0"},
             {u"%1%1%2", twelve, u"<a><a><b>"},
             {u"%10!s!", twelve, u"<j>"},
             // Missing arguments and malformed specs are kept as written.
             {u"a %1 b", {}, u"a %1 b"},
             {u"%2 then %1", {NFormatArgument(u"x")}, u"%2 then x"},
             {u"%3!08x!.", {NFormatArgument(u"x")}, u"%3!08x!."},
             {u"%1!*.*s!", {u(5), u(2)}, u"%1!*.*s!"},
             {u"%1!f!", {NFormatArgument(u"1")}, u"%1!f!"},
             {u"%1!n!", {NFormatArgument(u"1")}, u"%1!n!"},
             {u"%1!08xx!", {NFormatArgument(u"1")}, u"%1!08xx!"},
             {u"%1!!", {NFormatArgument(u"1")}, u"%1!!"},
             // No closing mark: a plain insertion followed by the literal rest.
             {u"%1!08x", {NFormatArgument(u"v")}, u"v!08x"}});
}

TEST(NMessageFormatterTest, IntegerSpecs) {
  ExpectAll({{u"%1!d!", {s(-42)}, u"-42"},
             {u"%1!u!", {u(4294967295u)}, u"4294967295"},
             {u"%1!u!", {s(-1)}, u"4294967295"},      // 32 bits without a size
             {u"%1!d!", {u(0x1FFFFFFFFull)}, u"-1"},  // truncated to int
             {u"%1!I64u!", {u(18446744073709551615ull)}, u"18446744073709551615"},
             {u"%1!I64d!", {s(-9223372036854775807LL - 1)}, u"-9223372036854775808"},
             {u"%1!lld!", {s(-5)}, u"-5"},
             {u"%1!hu!", {u(70000)}, u"4464"},
             {u"%1!hd!", {u(0xFFFF)}, u"-1"},
             {u"%1!hhu!", {u(257)}, u"1"},
             {u"%1!08x!", {u(0xE1380009u)}, u"e1380009"},
             {u"%1!08x!", {u(0x2A)}, u"0000002a"},
             {u"%1!02X!", {u(0x0A)}, u"0A"},
             {u"%1!X!", {u(0xABCDEF)}, u"ABCDEF"},
             {u"%1!#x!", {u(255)}, u"0xff"},
             {u"%1!#X!", {u(255)}, u"0XFF"},
             {u"%1!#x!", {u(0)}, u"0"},
             {u"%1!o!", {u(8)}, u"10"},
             {u"%1!#o!", {u(8)}, u"010"},
             {u"%1!+d!", {s(7)}, u"+7"},
             {u"% d|%1! d!", {s(7)}, u" d| 7"},
             {u"%1!5d!|", {s(-3)}, u"   -3|"},
             {u"%1!-5d!|", {s(-3)}, u"-3   |"},
             {u"%1!05d!", {s(-3)}, u"-0003"},
             {u"%1!#06x!", {u(255)}, u"0x00ff"},
             {u"%1!.3d!", {s(5)}, u"005"},
             {u"%1!08.3d!", {s(5)}, u"     005"},  // a precision turns the 0 flag off
             {u"%1!.0d!", {s(0)}, u""},
             {u"%1!i!", {s(12)}, u"12"},
             {u"%1!p!", {u(0x1234)}, u"0000000000001234"},
             // Text given to a numeric spec is parsed.
             {u"%1!08x!", {NFormatArgument(u"3778543625")}, u"e1380009"},
             {u"%1!d!", {NFormatArgument(u" -12abc")}, u"-12"},
             {u"%1!x!", {NFormatArgument(u"0x1F")}, u"1f"},
             {u"%1!u!", {NFormatArgument(u"not a number")}, u"0"},
             {u"%1!u!", {NFormatArgument(u"")}, u"0"}});
}

TEST(NMessageFormatterTest, TextCharacterAndStarSpecs) {
  ExpectAll({{u"%1!s!", {NFormatArgument(u"abc")}, u"abc"},
             {u"%1!ls!|%1!S!|%1!ws!", {NFormatArgument(u"x")}, u"x|x|x"},
             {u"[%1!5s!]", {NFormatArgument(u"ab")}, u"[   ab]"},
             {u"[%1!-5s!]", {NFormatArgument(u"ab")}, u"[ab   ]"},
             {u"[%1!.2s!]", {NFormatArgument(u"abcdef")}, u"[ab]"},
             {u"[%1!5.1s!]", {NFormatArgument(u"abc")}, u"[    a]"},
             {u"%1!s!", {u(42)}, u"42"},
             {u"%1!s!", {s(-42)}, u"-42"},
             {u"' %1!c! '", {u(u'\\')}, u"' \\ '"},
             {u"%1!c!", {NFormatArgument(u"*wild")}, u"*"},
             {u"[%1!c!]", {NFormatArgument(u"")}, u"[]"},
             {u"[%1!3c!]", {u(u'x')}, u"[  x]"},
             // A star takes the width or the precision from the next argument.
             {u"[%1!*s!]", {u(4), NFormatArgument(u"ab")}, u"[  ab]"},
             {u"[%1!*.*s!]", {u(5), u(2), NFormatArgument(u"abcdef")}, u"[   ab]"},
             {u"[%1!*d!]", {s(-4), s(7)}, u"[7   ]"}});
}

TEST(NMessageFormatterTest, HugeWidthsAreCapped) {
  EXPECT_EQ(Format(u"%1!999999999s!", {NFormatArgument(u"x")}).size(), std::size_t{NMessageFormatter::kMaxWidth});
  EXPECT_EQ(Format(u"%1!.999999999d!", {u(1)}).size(), std::size_t{NMessageFormatter::kMaxWidth});
}

TEST(NMessageFormatterTest, FormatAppendsAndFormatOneMatchesTheInsertion) {
  std::u16string out = u"prefix:";
  const std::vector<NFormatArgument> args = {NFormatArgument(u"v")};
  NMessageFormatter::Format(u"%1", args, &out);
  EXPECT_EQ(Utf8(out), "prefix:v");
  EXPECT_EQ(Utf8(NMessageFormatter::FormatOne(u"08x", u(0xBEEF))), "0000beef");
  EXPECT_EQ(Utf8(NMessageFormatter::FormatOne(u"I64u", u(1ull << 40))), "1099511627776");
}

}  // namespace
