#include <windows.h>

#include <algorithm>

#include "platform/NUnicode.h"

namespace {

const wchar_t* Wide(const char16_t* p) { return reinterpret_cast<const wchar_t*>(p); }
wchar_t* Wide(char16_t* p) { return reinterpret_cast<wchar_t*>(p); }

std::u16string ToUtf16(UINT codePage, DWORD flags, std::string_view bytes) {
  if (bytes.empty()) return {};
  std::u16string out(bytes.size(), u'\0');  // one byte never yields more than one unit
  const int n = MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), Wide(out.data()),
                                    static_cast<int>(out.size()));
  out.resize(n > 0 ? static_cast<size_t>(n) : 0);
  return out;
}

}  // namespace

std::u16string NUtf8ToUtf16(std::string_view utf8) { return ToUtf16(CP_UTF8, 0, utf8); }

std::string NUtf16ToUtf8(std::u16string_view utf16) {
  if (utf16.empty()) return {};
  std::string out(utf16.size() * 3, '\0');
  const int n = WideCharToMultiByte(CP_UTF8, 0, Wide(utf16.data()), static_cast<int>(utf16.size()), out.data(),
                                    static_cast<int>(out.size()), nullptr, nullptr);
  out.resize(n > 0 ? static_cast<size_t>(n) : 0);
  return out;
}

bool NIsValidUtf8(std::string_view bytes) {
  if (bytes.empty()) return true;
  return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                             0) > 0;
}

std::u16string NAnsiToUtf16(std::string_view bytes) { return ToUtf16(CP_ACP, MB_PRECOMPOSED, bytes); }

char16_t NFoldCase(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  wchar_t folded = 0;
  const wchar_t in = static_cast<wchar_t>(c);
  if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, &in, 1, &folded, 1, nullptr, nullptr, 0) != 1) return c;
  return static_cast<char16_t>(folded);
}

int NCompareIgnoreCase(std::u16string_view a, std::u16string_view b) {
  // Equality is the system's own ordinal ignore-case rule; the order of
  // unequal names follows the lower-case folding used on every platform, so
  // that listings sort alike everywhere.
  if (CompareStringOrdinal(Wide(a.data()), static_cast<int>(a.size()), Wide(b.data()), static_cast<int>(b.size()),
                           TRUE) == CSTR_EQUAL) {
    return 0;
  }
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const char16_t fa = NFoldCase(a[i]);
    const char16_t fb = NFoldCase(b[i]);
    if (fa != fb) return fa < fb ? -1 : 1;
  }
  if (a.size() == b.size()) return a < b ? -1 : 1;  // equal under folding, not under the system's rule
  return a.size() < b.size() ? -1 : 1;
}
