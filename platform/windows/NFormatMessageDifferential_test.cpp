// The portable message formatter against the system's own: FormatMessageW
// with FORMAT_MESSAGE_FROM_STRING on a large generated set of templates and
// arguments. Windows only; every difference is a bug in ours unless a case
// below says why it is left out.

#include <windows.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "location/NMessageFormatter.h"

namespace {

enum class NArgKind { kText, kNumber };

// Specs whose meaning Windows defines for the argument's kind ("": the plain
// %k; "|" ends the format, and text follows). Left out: specs Windows leaves
// undefined (floating point, %n), %k!c! of a text, widths beyond what a test
// needs, and "*" widths, which take the width from the argument before.
const std::u16string_view kTextSpecs[] = {u"", u"s", u"ls", u"ws", u"5s", u"-5s", u".2s"};
const std::u16string_view kNumberSpecs[] = {u"d",    u"u",   u"x", u"X", u"08x", u"#x",   u"+d",   u" d",
                                            u"-6d|", u"05d", u"o", u"i", u"lu",  u"I64d", u"I64x", u"c"};

const std::u16string_view kLiterals[] = {u"abc", u" ",     u"x y",           u"%%", u"%n", u"%r", u"%t", u"%.", u"%!",
                                         u"!",   u"100%%", u"\u00e9t\u00e9", u"(",  u")",  u"%b", u"%%1"};

const std::u16string_view kTexts[] = {u"", u"a", u"hello", u"C:\\path\\file.ini", u"w\u00f6rld", u"%1", u"!x!"};
const std::int64_t kNumbers[] = {0, 1, -1, 42, 255, 65535, 2147483647, -2147483647 - 1, 4294967295LL, 0x123456789LL};

struct NCase {
  std::u16string pattern;
  std::vector<NArgKind> kinds;
  std::vector<std::u16string> texts;
  std::vector<std::int64_t> numbers;
};

NCase Generate(std::mt19937& random) {
  NCase c;
  const int argCount = 1 + static_cast<int>(random() % 3);
  for (int i = 0; i < argCount; ++i) {
    c.kinds.push_back(random() % 2 ? NArgKind::kText : NArgKind::kNumber);
    c.texts.emplace_back(kTexts[random() % std::size(kTexts)]);
    c.numbers.push_back(kNumbers[random() % std::size(kNumbers)]);
  }
  // A plain %k followed by a digit or "!" would be another insertion
  // (%k0.., or %k!spec!); a blank keeps the two apart.
  bool afterPlain = false;
  auto append = [&](std::u16string_view piece) {
    if (afterPlain && !piece.empty() && (piece[0] == u'!' || (piece[0] >= u'0' && piece[0] <= u'9'))) {
      c.pattern += u' ';
    }
    c.pattern += piece;
  };
  const int pieces = 1 + static_cast<int>(random() % 6);
  for (int p = 0; p < pieces; ++p) {
    if (random() % 2) {
      append(kLiterals[random() % std::size(kLiterals)]);
      afterPlain = false;
      continue;
    }
    const int arg = static_cast<int>(random() % static_cast<unsigned>(argCount));
    const std::u16string_view chosen = c.kinds[static_cast<std::size_t>(arg)] == NArgKind::kText
                                           ? kTextSpecs[random() % std::size(kTextSpecs)]
                                           : kNumberSpecs[random() % std::size(kNumberSpecs)];
    append(u"%");
    c.pattern += static_cast<char16_t>(u'1' + arg);
    afterPlain = chosen.empty();
    if (!chosen.empty()) {
      const std::size_t bar = chosen.find(u'|');
      c.pattern += u'!';
      c.pattern += chosen.substr(0, bar);
      c.pattern += u'!';
      if (bar != std::u16string_view::npos) c.pattern += chosen.substr(bar + 1);
    }
  }
  if (random() % 8 == 0) c.pattern += u"%0";
  return c;
}

std::u16string System(const NCase& c) {
  std::vector<DWORD_PTR> args;
  for (std::size_t i = 0; i < c.kinds.size(); ++i) {
    args.push_back(c.kinds[i] == NArgKind::kText ? reinterpret_cast<DWORD_PTR>(c.texts[i].c_str())
                                                 : static_cast<DWORD_PTR>(c.numbers[i]));
  }
  wchar_t* buffer = nullptr;
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY | FORMAT_MESSAGE_ALLOCATE_BUFFER, c.pattern.c_str(), 0,
      0, reinterpret_cast<LPWSTR>(&buffer), 0, reinterpret_cast<va_list*>(args.data()));
  std::u16string out = length ? std::u16string(reinterpret_cast<const char16_t*>(buffer), length) : std::u16string();
  LocalFree(buffer);
  return out;
}

std::u16string Ours(const NCase& c) {
  std::vector<NFormatArgument> args;
  for (std::size_t i = 0; i < c.kinds.size(); ++i) {
    // A DWORD_PTR argument: what a numeric spec reads is its bits.
    args.push_back(c.kinds[i] == NArgKind::kText ? NFormatArgument(c.texts[i])
                                                 : NFormatArgument::Unsigned(static_cast<std::uint64_t>(c.numbers[i])));
  }
  std::u16string out;
  NMessageFormatter::Format(c.pattern, args, &out);
  return out;
}

TEST(NFormatMessageDifferential, GeneratedTemplatesFormatAsTheSystemDoes) {
  std::mt19937 random(20261121);
  constexpr int kCases = 20000;
  int differences = 0;
  for (int i = 0; i < kCases; ++i) {
    const NCase c = Generate(random);
    const std::u16string expected = System(c);
    const std::u16string actual = Ours(c);
    if (expected == actual) continue;
    if (++differences <= 20) {
      ADD_FAILURE() << "template " << testing::PrintToString(c.pattern)
                    << "\n  system: " << testing::PrintToString(expected)
                    << "\n  ours:   " << testing::PrintToString(actual);
    }
  }
  EXPECT_EQ(differences, 0) << "of " << kCases << " templates";
}

}  // namespace
