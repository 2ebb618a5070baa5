#include "location/NMessageFormatter.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace {

struct PrintfSpec {
  bool left = false;
  bool plus = false;
  bool space = false;
  bool alternate = false;
  bool zero = false;
  bool widthFromArgument = false;
  bool precisionFromArgument = false;
  int width = 0;
  int precision = -1;  // none
  int bits = 32;       // integer size; int and long are 32 bits on Windows
  char16_t type = u's';
};

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

bool StartsWith(std::u16string_view s, size_t at, std::u16string_view prefix) {
  return s.substr(at, prefix.size()) == prefix;
}

// Reads a run of decimal digits, capping the value so that no template can
// ask for an unbounded amount of padding.
int ReadCount(std::u16string_view s, size_t* i) {
  int value = 0;
  while (*i < s.size() && IsDigit(s[*i])) {
    value = std::min(value * 10 + (s[*i] - u'0'), NMessageFormatter::kMaxWidth);
    ++*i;
  }
  return value;
}

void ReadSize(std::u16string_view s, size_t* i, PrintfSpec* spec) {
  struct Size {
    std::u16string_view text;
    int bits;
  };
  // Longest forms first, so that "hh" is not read as "h" and "I64" not as "I".
  static constexpr std::array<Size, 11> kSizes = {{{u"I64", 64},
                                                   {u"I32", 32},
                                                   {u"hh", 8},
                                                   {u"ll", 64},
                                                   {u"I", 64},
                                                   {u"h", 16},
                                                   {u"l", 32},
                                                   {u"w", 32},
                                                   {u"j", 64},
                                                   {u"z", 64},
                                                   {u"t", 64}}};
  for (const Size& size : kSizes) {
    if (StartsWith(s, *i, size.text)) {
      spec->bits = size.bits;
      *i += size.text.size();
      return;
    }
  }
  if (StartsWith(s, *i, u"L")) {
    spec->bits = 64;
    ++*i;
  }
}

// Parses the text between the exclamation marks of %k!spec!. Only the forms
// Windows supports are accepted: no floating point and no %n.
bool ParseSpec(std::u16string_view s, PrintfSpec* spec) {
  size_t i = 0;
  for (; i < s.size(); ++i) {
    const char16_t c = s[i];
    if (c == u'-') spec->left = true;
    else if (c == u'+') spec->plus = true;
    else if (c == u' ') spec->space = true;
    else if (c == u'#') spec->alternate = true;
    else if (c == u'0') spec->zero = true;
    else break;
  }
  if (i < s.size() && s[i] == u'*') {
    spec->widthFromArgument = true;
    ++i;
  } else {
    spec->width = ReadCount(s, &i);
  }
  if (i < s.size() && s[i] == u'.') {
    ++i;
    if (i < s.size() && s[i] == u'*') {
      spec->precisionFromArgument = true;
      ++i;
    } else {
      spec->precision = ReadCount(s, &i);
    }
  }
  ReadSize(s, &i, spec);
  if (i + 1 != s.size()) return false;
  spec->type = s[i];
  return std::u16string_view(u"diuoxXcCsSp").find(spec->type) != std::u16string_view::npos;
}

// A text argument given where a number is wanted: optional blanks, sign and
// 0x prefix, then digits; wraps modulo 2^64 like the integer it stands for.
std::uint64_t ParseNumber(std::u16string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == u' ' || text[i] == u'\t')) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
  unsigned base = 10;
  if (i + 1 < text.size() && text[i] == u'0' && (text[i + 1] == u'x' || text[i + 1] == u'X')) {
    base = 16;
    i += 2;
  }
  std::uint64_t value = 0;
  for (; i < text.size(); ++i) {
    const char16_t c = text[i];
    unsigned digit;
    if (IsDigit(c)) digit = c - u'0';
    else if (base == 16 && c >= u'a' && c <= u'f') digit = c - u'a' + 10;
    else if (base == 16 && c >= u'A' && c <= u'F') digit = c - u'A' + 10;
    else break;
    value = value * base + digit;
  }
  return negative ? ~value + 1 : value;
}

std::uint64_t NumberOf(const NFormatArgument& arg) {
  return arg.GetKind() == NFormatArgument::Kind::kText ? ParseNumber(arg.Text()) : arg.Bits();
}

int CountOf(const NFormatArgument& arg) {
  const auto value = static_cast<std::int64_t>(NumberOf(arg));
  return static_cast<int>(std::clamp<std::int64_t>(value, -NMessageFormatter::kMaxWidth, NMessageFormatter::kMaxWidth));
}

void Pad(std::u16string* out, int count, char16_t fill) {
  if (count > 0) out->append(static_cast<size_t>(count), fill);
}

// Writes `body` (already holding any sign or prefix at its front, `prefix`
// units long) padded to the requested width.
void Justify(const PrintfSpec& spec, std::u16string_view body, size_t prefix, bool zeroAllowed, std::u16string* out) {
  const int padding = spec.width - static_cast<int>(body.size());
  if (spec.left) {
    out->append(body);
    Pad(out, padding, u' ');
  } else if (spec.zero && zeroAllowed) {
    out->append(body.substr(0, prefix));
    Pad(out, padding, u'0');
    out->append(body.substr(prefix));
  } else {
    Pad(out, padding, u' ');
    out->append(body);
  }
}

void FormatInteger(const PrintfSpec& spec, std::uint64_t raw, std::u16string* out) {
  const bool isSigned = spec.type == u'd' || spec.type == u'i';
  const std::uint64_t mask = spec.bits == 64 ? ~0ull : (1ull << spec.bits) - 1;
  std::uint64_t magnitude = raw & mask;
  bool negative = false;
  if (isSigned && spec.bits < 64 && (magnitude >> (spec.bits - 1))) magnitude |= ~mask;  // sign-extend
  if (isSigned && static_cast<std::int64_t>(magnitude) < 0) {
    negative = true;
    magnitude = ~magnitude + 1;
  }
  int base = 10;
  if (spec.type == u'o') base = 8;
  if (spec.type == u'x' || spec.type == u'X' || spec.type == u'p') base = 16;

  std::array<char, 24> digits;
  size_t digitCount = 0;
  if (!(magnitude == 0 && spec.precision == 0)) {
    digitCount = static_cast<size_t>(std::to_chars(digits.data(), digits.data() + digits.size(), magnitude, base).ptr -
                                     digits.data());
  }
  const bool upper = spec.type == u'X' || spec.type == u'p';

  // Body: sign or prefix, zeros up to the precision, digits. The precision
  // is capped, so the body stays small.
  std::array<char16_t, 2 + NMessageFormatter::kMaxWidth + 24> body;
  size_t n = 0;
  if (negative) body[n++] = u'-';
  else if (isSigned && spec.plus) body[n++] = u'+';
  else if (isSigned && spec.space) body[n++] = u' ';
  else if (spec.alternate && magnitude != 0 && base == 16 && spec.type != u'p') {
    body[n++] = u'0';
    body[n++] = upper ? u'X' : u'x';
  }
  const size_t prefix = n;
  int zeros = std::max(spec.precision, 0) - static_cast<int>(digitCount);
  if (spec.alternate && base == 8 && zeros <= 0 && (digitCount == 0 || digits[0] != '0')) zeros = 1;
  for (int z = 0; z < zeros; ++z) body[n++] = u'0';
  for (size_t d = 0; d < digitCount; ++d) {
    const char c = digits[d];
    body[n++] = static_cast<char16_t>(upper && c >= 'a' ? c - 'a' + 'A' : c);
  }
  Justify(spec, std::u16string_view(body.data(), n), prefix, spec.precision < 0, out);
}

void FormatText(const PrintfSpec& spec, std::u16string_view text, std::u16string* out) {
  if (spec.precision >= 0 && text.size() > static_cast<size_t>(spec.precision)) {
    text = text.substr(0, static_cast<size_t>(spec.precision));
  }
  Justify(spec, text, 0, true, out);
}

void FormatValue(const PrintfSpec& spec, const NFormatArgument& arg, std::u16string* out) {
  switch (spec.type) {
    case u's':
    case u'S':
      if (arg.GetKind() == NFormatArgument::Kind::kText) {
        FormatText(spec, arg.Text(), out);
      } else {
        PrintfSpec decimal;
        decimal.type = arg.GetKind() == NFormatArgument::Kind::kSigned ? u'd' : u'u';
        decimal.bits = 64;
        std::u16string number;
        FormatInteger(decimal, arg.Bits(), &number);
        FormatText(spec, number, out);
      }
      return;
    case u'c':
    case u'C': {
      // A character: the number's low 16 bits, or the first unit of a text.
      char16_t c;
      if (arg.GetKind() == NFormatArgument::Kind::kText) {
        if (arg.Text().empty()) return FormatText(spec, {}, out);
        c = arg.Text().front();
      } else {
        c = static_cast<char16_t>(arg.Bits());
      }
      PrintfSpec whole = spec;
      whole.precision = -1;
      return FormatText(whole, std::u16string_view(&c, 1), out);
    }
    case u'p': {
      PrintfSpec pointer = spec;
      pointer.bits = 64;
      pointer.precision = 16;
      return FormatInteger(pointer, NumberOf(arg), out);
    }
    default:
      return FormatInteger(spec, NumberOf(arg), out);
  }
}

// Expands one typed insertion whose first argument is args[index]. Returns
// false when the arguments it needs are missing.
bool FormatTyped(PrintfSpec spec, std::span<const NFormatArgument> args, size_t index, std::u16string* out) {
  if (spec.widthFromArgument) {
    if (index >= args.size()) return false;
    spec.width = CountOf(args[index++]);
    if (spec.width < 0) {  // a negative width means left-justified, as in printf
      spec.left = true;
      spec.width = -spec.width;
    }
  }
  if (spec.precisionFromArgument) {
    if (index >= args.size()) return false;
    spec.precision = CountOf(args[index++]);
    if (spec.precision < 0) spec.precision = -1;
  }
  if (index >= args.size()) return false;
  FormatValue(spec, args[index], out);
  return true;
}

}  // namespace

void NMessageFormatter::Format(std::u16string_view pattern, std::span<const NFormatArgument> args,
                               std::u16string* out) {
  size_t i = 0;
  while (i < pattern.size()) {
    const size_t percent = pattern.find(u'%', i);
    if (percent == std::u16string_view::npos) {
      out->append(pattern.substr(i));
      return;
    }
    out->append(pattern.substr(i, percent - i));
    if (percent + 1 == pattern.size()) {
      out->push_back(u'%');
      return;
    }
    const char16_t c = pattern[percent + 1];
    i = percent + 2;
    if (c == u'0') return;
    if (!IsDigit(c)) {
      switch (c) {
        case u'n': out->append(u"\r\n"); break;
        case u'r': out->push_back(u'\r'); break;
        case u't': out->push_back(u'\t'); break;
        default: out->push_back(c); break;
      }
      continue;
    }
    // %1 to %99: at most two digits, so %100 is %10 followed by 0.
    size_t number = static_cast<size_t>(c - u'0');
    if (i < pattern.size() && IsDigit(pattern[i])) number = number * 10 + static_cast<size_t>(pattern[i++] - u'0');
    PrintfSpec spec;
    if (i < pattern.size() && pattern[i] == u'!') {
      const size_t close = pattern.find(u'!', i + 1);
      if (close != std::u16string_view::npos && ParseSpec(pattern.substr(i + 1, close - i - 1), &spec)) {
        if (!FormatTyped(spec, args, number - 1, out)) out->append(pattern.substr(percent, close + 1 - percent));
        i = close + 1;
        continue;
      }
      if (close != std::u16string_view::npos) {  // not a spec Windows supports: keep it as written
        out->append(pattern.substr(percent, close + 1 - percent));
        i = close + 1;
        continue;
      }
    }
    if (number - 1 < args.size()) {
      FormatValue(spec, args[number - 1], out);
    } else {
      out->append(pattern.substr(percent, i - percent));
    }
  }
}

std::u16string NMessageFormatter::FormatOne(std::u16string_view spec, const NFormatArgument& arg) {
  std::u16string pattern = u"%1!";
  pattern.append(spec);
  pattern.push_back(u'!');
  std::u16string out;
  Format(pattern, std::span<const NFormatArgument>(&arg, 1), &out);
  return out;
}
