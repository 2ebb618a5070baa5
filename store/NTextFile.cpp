#include "store/NTextFile.h"

#include <algorithm>
#include <cstring>

#include "base/NAscii.h"
#include "platform/NUnicode.h"

namespace {

std::u16string Utf16FromBytes(std::string_view bytes, bool bigEndian) {
  // An odd last byte cannot form a code unit; it becomes U+FFFD.
  std::u16string units(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) {
    const auto hi = static_cast<unsigned char>(bytes[2 * i + (bigEndian ? 0 : 1)]);
    const auto lo = static_cast<unsigned char>(bytes[2 * i + (bigEndian ? 1 : 0)]);
    units[i] = static_cast<char16_t>(hi << 8 | lo);
  }
  if (bytes.size() % 2) units.push_back(u'\uFFFD');
  return units;
}

bool IsAscii(std::string_view bytes) { return NIsAscii(bytes); }

// UTF-8 text kept as it is when valid; otherwise re-encoded with U+FFFD in
// place of each malformed sequence.
std::string CleanUtf8(std::string_view bytes) {
  if (IsAscii(bytes) || NIsValidUtf8(bytes)) return std::string(bytes);
  return NUtf16ToUtf8(NUtf8ToUtf16(bytes));
}

}  // namespace

std::string NTextFile::Decode(std::string raw, Encoding* encoding) {
  bool verbatim = false;
  std::size_t markSize = 0;
  std::string text = DecodeTaking(&raw, encoding, &verbatim, &markSize);
  if (markSize) text.erase(0, markSize);
  return text;
}

std::string NTextFile::DecodeTaking(std::string* raw, Encoding* encoding, bool* verbatim, std::size_t* markSize) {
  *verbatim = false;
  *markSize = 0;
  const std::string_view bytes = *raw;
  if (bytes.starts_with("\xEF\xBB\xBF")) {
    *encoding = Encoding::kUtf8;
    const std::string_view text = bytes.substr(3);
    if (NIsValidUtf8(text)) {
      *verbatim = true;
      *markSize = 3;
      return std::move(*raw);
    }
    return CleanUtf8(text);
  }
  if (bytes.starts_with("\xFF\xFE")) {
    *encoding = Encoding::kUtf16LE;
    return NUtf16ToUtf8(Utf16FromBytes(bytes.substr(2), false));
  }
  if (bytes.starts_with("\xFE\xFF")) {
    *encoding = Encoding::kUtf16BE;
    return NUtf16ToUtf8(Utf16FromBytes(bytes.substr(2), true));
  }
  *encoding = Encoding::kAnsi;
  if (IsAscii(bytes)) {
    *verbatim = true;
    return std::move(*raw);
  }
  return NUtf16ToUtf8(NAnsiToUtf16(bytes));
}

NStatus NTextFile::Read(std::string* raw) {
  if (!m_file) return NStatus::Error(NStatus::kInvalidHandle, "read");
  std::uint64_t size = 0;
  if (NStatus status = m_file->SizeHint(&size); !status) return status;
  if (size > kMaxFileSize) return NStatus::Error(NStatus::kNotEnoughMemory, "read (file too large)");
  // Blocks of 4096 bytes into a buffer of the file's size and one spare
  // byte: the size is only a hint, as another writer may change the file,
  // and the spare byte tells a file that grew, which is then read on.
  raw->resize(static_cast<size_t>(size) + 1);
  size_t at = 0;
  for (;;) {
    if (at == raw->size()) {
      if (at >= kMaxFileSize) return NStatus::Error(NStatus::kNotEnoughMemory, "read (file too large)");
      raw->resize(at + kBlockSize);
    }
    const size_t want = std::min(kBlockSize, raw->size() - at);
    size_t got = 0;
    NStatus status = m_file->Read(at, raw->data() + at, want, &got);
    at += got;
    if (!status) {
      raw->resize(at);
      return status;
    }
    if (got < want) break;
  }
  raw->resize(at);
  return NStatus::Ok();
}

std::string NTextFile::Encoded() const {
  switch (m_encoding) {
    case Encoding::kUtf8:
      return "\xEF\xBB\xBF" + m_pending;
    case Encoding::kAnsi:
      return m_pending;  // the writer never leaves UTF-8 for an ANSI code page
    case Encoding::kUtf16LE:
    case Encoding::kUtf16BE: {
      const bool big = m_encoding == Encoding::kUtf16BE;
      const std::u16string units = NUtf8ToUtf16(m_pending);
      std::string out(big ? "\xFE\xFF" : "\xFF\xFE");
      out.reserve(2 + units.size() * 2);
      for (const char16_t unit : units) {
        const char hi = static_cast<char>(unit >> 8);
        const char lo = static_cast<char>(unit & 0xFF);
        out.push_back(big ? hi : lo);
        out.push_back(big ? lo : hi);
      }
      return out;
    }
  }
  return m_pending;
}
