#include "base/NUnicodeString.h"

#include "base/NAscii.h"
#include "platform/NUnicode.h"

// Most text the library handles is ASCII; widening and narrowing it needs
// no converter.
NUnicodeString NUnicodeString::FromUtf8(std::string_view utf8) {
  NUnicodeString out(utf8.size(), u'\0');
  if (NWidenAscii(utf8, out.data())) return out;
  return NUnicodeString(NUtf8ToUtf16(utf8));
}

void NUnicodeString::AssignUtf8(std::string_view utf8) {
  resize(utf8.size());
  if (!NWidenAscii(utf8, data())) *this = NUtf8ToUtf16(utf8);
}

std::string NUnicodeString::ToUtf8() const {
  char16_t any = 0;
  for (const char16_t c : *this) any |= c;
  if (any >= 0x80) return NUtf16ToUtf8(*this);
  std::string out(size(), '\0');
  for (size_t i = 0; i < size(); ++i) out[i] = static_cast<char>((*this)[i]);
  return out;
}

bool NUnicodeString::EqualsIgnoreCase(std::u16string_view other) const {
  return size() == other.size() && NCompareIgnoreCase(*this, other) == 0;
}

int NUnicodeString::CompareIgnoreCase(std::u16string_view a, std::u16string_view b) {
  return NCompareIgnoreCase(a, b);
}

std::size_t NIgnoreCaseHash::operator()(std::u16string_view s) const noexcept {
  // FNV-1a over the folded code units.
  std::size_t hash = 14695981039346656037ull;
  for (char16_t c : s) {
    hash ^= NFoldCase(c);
    hash *= 1099511628211ull;
  }
  return hash;
}
