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

struct NInsertion {
  std::u16string spec;  // empty: the plain %k
  NArgKind kind;
};

// Insertions whose meaning Windows defines for the argument's kind. Left
// out: specs Windows leaves undefined (floating point, %n), %k!c! of a text,
// and widths beyond what a test needs.
const std::vector<NInsertion>& Insertions() {
  static const std::vector<NInsertion> insertions = {
      {u"", NArgKind::kText},      {u"s", NArgKind::kText},     {u"ls", NArgKind::kText},
      {u"ws", NArgKind::kText},    {u"5s", NArgKind::kText},    {u"-5s", NArgKind::kText},
      {u".2s", NArgKind::kText},   {u"*s", NArgKind::kText},    {u"d", NArgKind::kNumber},
      {u"u", NArgKind::kNumber},   {u"x", NArgKind::kNumber},   {u"X", NArgKind::kNumber},
      {u"08x", NArgKind::kNumber}, {u"#x", NArgKind::kNumber},  {u"+d", NArgKind::kNumber},
      {u" d", NArgKind::kNumber},  {u"-6d|", NArgKind::kNumber}, {u"05d", NArgKind::kNumber},
      {u"o", NArgKind::kNumber},   {u"i", NArgKind::kNumber},   {u"lu", NArgKind::kNumber},
      {u"I64d", NArgKind::kNumber}, {u"I64x", NArgKind::kNumber}, {u"c", NArgKind::kNumber},
  };
  return insertions;
}

const std::u16string_view kLiterals[] = {u"abc", u" ", u"x y", u"%%", u"%n", u"%r", u"%t", u"%.", u"%!",
                                         u"!", u"100%%", u"\u00e9t\u00e9", u"(", u")", u"%b", u"%%1"};

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
    std::vector<const NInsertion*> fitting;
    for (const NInsertion& insertion : Insertions()) {
      // "*" takes the width from the argument before it, so only the last
      // argument of a text kind after a number can use it: left to the
      // plain cases.
      if (insertion.kind == c.kinds[static_cast<std::size_t>(arg)] && insertion.spec.find(u'*') == std::u16string::npos) {
        fitting.push_back(&insertion);
      }
    }
    const NInsertion& chosen = *fitting[random() % fitting.size()];
    append(u"%");
    c.pattern += static_cast<char16_t>(u'1' + arg);
    afterPlain = chosen.spec.empty();
    if (!chosen.spec.empty()) {
      std::u16string spec = chosen.spec;
      const std::size_t bar = spec.find(u'|');  // text after the insertion
      std::u16string after;
      if (bar != std::u16string::npos) {
        after = spec.substr(bar + 1);
        spec.resize(bar);
      }
      c.pattern += u'!';
      c.pattern += spec;
      c.pattern += u'!';
      c.pattern += after;
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
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY | FORMAT_MESSAGE_ALLOCATE_BUFFER,
                     c.pattern.c_str(), 0, 0, reinterpret_cast<LPWSTR>(&buffer), 0,
                     reinterpret_cast<va_list*>(args.data()));
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

std::string Printable(std::u16string_view text) {
  std::string out;
  for (const char16_t c : text) {
    if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else {
      char escaped[12];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
      out += escaped;
    }
  }
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
      ADD_FAILURE() << "template \"" << Printable(c.pattern) << "\"\n  system: \"" << Printable(expected)
                    << "\"\n  ours:   \"" << Printable(actual) << "\"";
    }
  }
  EXPECT_EQ(differences, 0) << "of " << kCases << " templates";
}

}  // namespace
