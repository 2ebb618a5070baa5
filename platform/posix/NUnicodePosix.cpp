#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "platform/NUnicode.h"
#include "platform/NUtf8Lead.h"

namespace {

constexpr UChar32 kReplacement = 0xFFFD;

const UChar* AsUChar(const char16_t* p) { return reinterpret_cast<const UChar*>(p); }
UChar* AsUChar(char16_t* p) { return reinterpret_cast<UChar*>(p); }

// ICU signals a short buffer with the needed length; strings here are small,
// so one preflight-free attempt with a worst-case buffer is cheapest.
std::u16string Utf8ToUtf16(std::string_view utf8, UErrorCode* status, UChar32 sub) {
  std::u16string out(utf8.size(), u'\0');  // a UTF-8 byte never yields more than one unit
  int32_t length = 0;
  u_strFromUTF8WithSub(AsUChar(out.data()), static_cast<int32_t>(out.size()), &length, utf8.data(),
                       static_cast<int32_t>(utf8.size()), sub, nullptr, status);
  out.resize(U_SUCCESS(*status) ? static_cast<size_t>(length) : 0);
  return out;
}

std::u16string FromWindows1252(std::string_view bytes) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<UConverter, void (*)(UConverter*)> conv(ucnv_open("windows-1252", &status), ucnv_close);
  if (U_FAILURE(status)) return std::u16string(bytes.begin(), bytes.end());
  std::u16string out(bytes.size(), u'\0');  // single-byte code page: one unit per byte
  int32_t length = ucnv_toUChars(conv.get(), AsUChar(out.data()), static_cast<int32_t>(out.size()), bytes.data(),
                                 static_cast<int32_t>(bytes.size()), &status);
  out.resize(U_SUCCESS(status) ? static_cast<size_t>(length) : 0);
  return out;
}

}  // namespace

std::u16string NUtf8ToUtf16(std::string_view utf8) {
  if (utf8.empty()) return {};
  unsigned char any = 0;
  for (const char c : utf8) any |= static_cast<unsigned char>(c);
  if (any < 0x80) return std::u16string(utf8.begin(), utf8.end());  // paths are mostly ASCII
  UErrorCode status = U_ZERO_ERROR;
  return Utf8ToUtf16(utf8, &status, kReplacement);
}

std::string NUtf16ToUtf8(std::u16string_view utf16) {
  if (utf16.empty()) return {};
  char16_t any = 0;
  for (const char16_t c : utf16) any |= c;
  if (any < 0x80) {
    std::string out(utf16.size(), '\0');
    for (size_t i = 0; i < utf16.size(); ++i) out[i] = static_cast<char>(utf16[i]);
    return out;
  }
  std::string out(utf16.size() * 3, '\0');  // a unit never yields more than 3 bytes
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(out.data(), static_cast<int32_t>(out.size()), &length, AsUChar(utf16.data()),
                     static_cast<int32_t>(utf16.size()), kReplacement, nullptr, &status);
  out.resize(U_SUCCESS(status) ? static_cast<size_t>(length) : 0);
  return out;
}

bool NIsValidUtf8(std::string_view bytes) {
  // ICU has no validator of its own, and converting to find out costs ten
  // times as much: this is the standard check (no overlong forms, no
  // surrogates, nothing above U+10FFFF), with ASCII taken 64 or 16 bytes at a time.
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* end = p + bytes.size();
  auto asciiBlock = [](const unsigned char* at, std::size_t size) {
    std::uint64_t any = 0;
    for (std::size_t i = 0; i < size; i += 8) {
      std::uint64_t word;
      std::memcpy(&word, at + i, 8);
      any |= word;
    }
    return (any & 0x8080808080808080ull) == 0;
  };
  while (p < end) {
    while (end - p >= 64 && asciiBlock(p, 64)) p += 64;
    while (end - p >= 16 && asciiBlock(p, 16)) p += 16;
    if (p == end) break;
    const unsigned char c = *p;
    if (c < 0x80) {
      ++p;
      continue;
    }
    NUtf8Lead lead;
    if (!NUtf8LeadOf(c, &lead)) return false;
    const int length = lead.length;
    if (end - p < length || p[1] < lead.low || p[1] > lead.high) return false;
    for (int i = 2; i < length; ++i) {
      if ((p[i] & 0xC0) != 0x80) return false;
    }
    p += length;
  }
  return true;
}

std::u16string NAnsiToUtf16(std::string_view bytes) {
  if (bytes.empty()) return {};
  if (NIsValidUtf8(bytes)) return NUtf8ToUtf16(bytes);
  return FromWindows1252(bytes);
}

int NCompareIgnoreCase(std::u16string_view a, std::u16string_view b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    if (a[i] == b[i]) continue;
    const char16_t fa = NFoldCase(a[i]);
    const char16_t fb = NFoldCase(b[i]);
    if (fa != fb) return fa < fb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

char16_t NFoldCase(char16_t c) {
  if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
  if (c >= 0xD800 && c <= 0xDFFF) return c;
  const UChar32 folded = u_foldCase(c, U_FOLD_CASE_DEFAULT);
  // Simple folding of a BMP character stays in the BMP.
  return folded <= 0xFFFF ? static_cast<char16_t>(folded) : c;
}
