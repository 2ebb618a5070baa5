#include <windows.h>

#include <algorithm>

#include "platform/NUnicode.h"
#include "platform/NUtf8Lead.h"

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

// Malformed UTF-8 with one U+FFFD for each maximal ill-formed subpart, as
// the Unicode standard recommends and ICU does on POSIX, so that a damaged
// file reads the same on every system: how many replacements
// MultiByteToWideChar makes differs between Windows versions and Wine.
std::u16string DecodeMalformed(std::string_view utf8) {
  const auto* p = reinterpret_cast<const unsigned char*>(utf8.data());
  const std::size_t n = utf8.size();
  std::u16string out;
  out.reserve(n);
  std::size_t i = 0;
  while (i < n) {
    const unsigned char c = p[i];
    if (c < 0x80) {
      out.push_back(c);
      ++i;
      continue;
    }
    NUtf8Lead lead;
    if (!NUtf8LeadOf(c, &lead)) {
      out.push_back(u'\uFFFD');
      ++i;
      continue;
    }
    const std::size_t length = static_cast<std::size_t>(lead.length);
    std::size_t end = i + 1;
    if (end < n && p[end] >= lead.low && p[end] <= lead.high) {
      ++end;
      while (end < i + length && end < n && (p[end] & 0xC0) == 0x80) ++end;
    }
    if (end - i < length) {
      out.push_back(u'\uFFFD');  // the lead byte and the continuation bytes that fit it
      i = end;
      continue;
    }
    char32_t code = c & (0xFF >> (length + 1));
    for (std::size_t k = i + 1; k < end; ++k) code = (code << 6) | (p[k] & 0x3F);
    if (code > 0xFFFF) {
      code -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(code));
    }
    i = end;
  }
  return out;
}

}  // namespace

std::u16string NUtf8ToUtf16(std::string_view utf8) {
  if (utf8.empty()) return {};
  std::u16string out(utf8.size(), u'\0');
  const int n = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), static_cast<int>(utf8.size()),
                                    Wide(out.data()), static_cast<int>(out.size()));
  if (n <= 0) return DecodeMalformed(utf8);
  out.resize(static_cast<size_t>(n));
  return out;
}

std::string NUtf16ToUtf8(std::u16string_view utf16) {
  if (utf16.empty()) return {};
  std::string out(utf16.size() * 3, '\0');
  const int n = WideCharToMultiByte(CP_UTF8, 0, Wide(utf16.data()), static_cast<int>(utf16.size()), out.data(),
                                    static_cast<int>(out.size()), nullptr, nullptr);
  out.resize(n > 0 ? static_cast<size_t>(n) : 0);
  return out;
}

bool NIsValidUtf8(std::string_view bytes) {
  // The converter checks only from the first byte that is not ASCII on.
  std::size_t ascii = 0;
  while (ascii < bytes.size() && static_cast<unsigned char>(bytes[ascii]) < 0x80) ++ascii;
  bytes.remove_prefix(ascii);
  if (bytes.empty()) return true;
  return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                             0) > 0;
}

std::u16string NAnsiToUtf16(std::string_view bytes) { return ToUtf16(CP_ACP, MB_PRECOMPOSED, bytes); }

char16_t NFoldCase(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  // The lower case of the upper case: names that CompareStringOrdinal calls
  // equal have one upper case, so they fold alike and hash alike, whatever
  // the lower-case table says of them. Without LCMAP_LINGUISTIC_CASING the
  // mapping is the file system's, the one CompareStringOrdinal uses.
  const wchar_t in = static_cast<wchar_t>(c);
  wchar_t upper = in;
  if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, &in, 1, &upper, 1, nullptr, nullptr, 0) != 1) upper = in;
  wchar_t folded = upper;
  if (LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_LOWERCASE, &upper, 1, &folded, 1, nullptr, nullptr, 0) != 1) {
    return c;
  }
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
