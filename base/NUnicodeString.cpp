#include "base/NUnicodeString.h"

#include "platform/NUnicode.h"

NUnicodeString NUnicodeString::FromUtf8(std::string_view utf8) { return NUnicodeString(NUtf8ToUtf16(utf8)); }

std::string NUnicodeString::ToUtf8() const { return NUtf16ToUtf8(*this); }

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
