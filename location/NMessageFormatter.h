#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// One insertion argument: text, or a number kept as a number so that typed
// insertions (%1!08x!) format it exactly. A text argument given to a numeric
// insertion is read as a decimal number (0 when it holds none); a number
// given to a text insertion is written in decimal. Holds a view: the text
// must outlive the formatting call.
class NFormatArgument {
 public:
  enum class Kind { kText, kSigned, kUnsigned };

  NFormatArgument(std::u16string_view text) : m_kind(Kind::kText), m_text(text) {}
  static NFormatArgument Signed(std::int64_t value) { return NFormatArgument(Kind::kSigned, static_cast<std::uint64_t>(value)); }
  static NFormatArgument Unsigned(std::uint64_t value) { return NFormatArgument(Kind::kUnsigned, value); }

  Kind GetKind() const { return m_kind; }
  std::u16string_view Text() const { return m_text; }
  std::uint64_t Bits() const { return m_bits; }

 private:
  NFormatArgument(Kind kind, std::uint64_t bits) : m_kind(kind), m_bits(bits) {}

  Kind m_kind;
  std::u16string_view m_text;
  std::uint64_t m_bits = 0;
};

// Expands message templates in the insertion syntax of the Windows message
// functions, so that one template reads the same on every platform:
//   %1 .. %99            argument k as text
//   %k!spec!             argument k through a printf-style spec: flags
//                        (- + space # 0), width and precision (digits or *,
//                        which takes the next argument), size (h hh l ll I I32
//                        I64 j z t w L) and type (d i u o x X c C s S p)
//   %0                   ends the output here (no further text, no line end)
//   %n                   CR LF;  %r  CR;  %t  tab
//   %x for any other x   x itself: %% gives %, %. gives ., %! gives !
// The rules for what Windows leaves undefined: an insertion whose argument
// is missing, whose spec is not closed by "!", or whose spec is not a printf
// form Windows supports (floating point, %n) is copied as it stands; a "%"
// at the very end is kept. Width and precision are capped at 65535, as
// Windows caps a message at 64K characters.
//
// Stateless and thread-safe; it never fails and never reads outside its
// inputs, whatever the template.
class NMessageFormatter {
 public:
  static constexpr int kMaxWidth = 65535;

  // Appends the expansion of `pattern` to *out.
  static void Format(std::u16string_view pattern, std::span<const NFormatArgument> args, std::u16string* out);

  // Formats one argument through a printf-style spec such as u"08x" or
  // u"ls", as the insertion %1!spec! would.
  static std::u16string FormatOne(std::u16string_view spec, const NFormatArgument& arg);
};
