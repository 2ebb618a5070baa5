#include "store/NIniRecordReader.h"

#include <algorithm>
#include <array>

#include "base/NAscii.h"
#include <cstring>

namespace {

// The value of each byte as a hex digit, or -1.
constexpr std::array<signed char, 256> kHexValues = [] {
  std::array<signed char, 256> values{};
  for (int c = 0; c < 256; ++c) {
    values[static_cast<size_t>(c)] = -1;
    if (c >= '0' && c <= '9') values[static_cast<size_t>(c)] = static_cast<signed char>(c - '0');
    if (c >= 'a' && c <= 'f') values[static_cast<size_t>(c)] = static_cast<signed char>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') values[static_cast<size_t>(c)] = static_cast<signed char>(c - 'A' + 10);
  }
  return values;
}();

int HexDigit(unsigned char c) { return kHexValues[c]; }

// How many UTF-16 code units the UTF-8 sequence led by `c` makes: none for
// a continuation byte, two for a four-byte sequence.
int UnitsOfLeadByte(unsigned char c) {
  if (c < 0x80) return 1;
  if (c < 0xC0) return 0;
  return c >= 0xF0 ? 2 : 1;
}

std::size_t CountUnits(std::string_view text) {
  std::size_t units = 0;
  for (const char c : text) units += static_cast<std::size_t>(UnitsOfLeadByte(static_cast<unsigned char>(c)));
  return units;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }

std::string Quoted(char c) {
  if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) return "a non-letter";
  return std::string("'") + c + "'";
}

}  // namespace

bool NIniRecordReader::ReadHex8(std::string_view digits, std::uint32_t* value) {
  if (digits.size() == 8) {
    // The usual case, eight hex digits; then eight ASCII characters, where
    // one that is not a hex digit counts as 255.
    if (ReadPlainHex8(digits.data(), value)) return true;
    std::uint32_t result = 0;
    unsigned char any = 0;
    for (const char c : digits) {
      const auto byte = static_cast<unsigned char>(c);
      any |= byte;
      const int digit = HexDigit(byte);
      result = result * 16 + static_cast<std::uint32_t>(digit < 0 ? 255 : digit);
    }
    if (any < 0x80) {
      *value = result;
      return true;
    }
  }
  if (digits.size() < 8 || CountUnits(digits) != 8) return false;
  std::uint32_t result = 0;
  for (const char c : digits) {
    const auto byte = static_cast<unsigned char>(c);
    for (int unit = 0; unit < UnitsOfLeadByte(byte); ++unit) {
      const int digit = HexDigit(byte);
      result = result * 16 + static_cast<std::uint32_t>(digit < 0 ? 255 : digit);
    }
  }
  *value = result;
  return true;
}

NIniRecordReader::Result NIniRecordReader::Invalid(std::string problem) {
  m_problem = std::move(problem);
  m_problemLine = m_lines.LineNumber();
  return Result::kInvalid;
}

NIniRecordReader::Result NIniRecordReader::Next(NIniRecord* record) {
  std::string_view line;
  if (!m_lines.Next(&line)) return Result::kEnd;
  if (line.size() < 5 || (line.size() < 20 && CountUnits(line) < 5)) {
    return Invalid(line.empty() ? "empty line" : "shorter than 5 characters");
  }
  if (line[1] != ':') return Invalid("character 1 is not ':'");
  if (line[2] != '"') return Invalid("character 2 is not '\"'");
  const size_t close = line.find('"', 3);
  const size_t nameEnd = close == std::string_view::npos ? line.size() : close;
  if (close == std::string_view::npos || close + 1 >= line.size() || line[close + 1] != '=') {
    return Invalid("no '=' after the name");
  }
  record->kind = line[0];
  record->name = line.substr(3, nameEnd - 3);
  const std::string_view value = line.substr(close + 2);
  switch (record->kind) {
    case 'D':
      if (!ReadHex8(value, &record->dword)) return Invalid("a DWORD needs exactly 8 hex digits after '='");
      return Result::kRecord;
    case 'S':
      record->text = value;
      return Result::kRecord;
    case 'B':
      if (!ReadHex8(value, &record->count)) return Invalid("a byte count needs exactly 8 hex digits after '='");
      return ReadBinary(record);
    case 'Z':
      if (!ReadHex8(value, &record->count)) return Invalid("a string count needs exactly 8 hex digits after '='");
      return ReadStrings(record);
    default:
      return Invalid("kind letter " + Quoted(record->kind) + " is not a kind");
  }
}

NIniRecordReader::Result NIniRecordReader::ReadBinary(NIniRecord* record) {
  const std::uint32_t total = record->count;
  // The text left bounds what the count can really be, whatever it says.
  record->bytes.resize(std::min<std::size_t>(total, m_lines.Rest().size() / 2));
  char* out = record->bytes.data();
  std::size_t filled = 0;
  while (filled < total) {
    std::string_view line;
    if (!m_lines.Next(&line)) {
      record->bytes.resize(filled);
      return Invalid("the file ends before the " + std::to_string(total) + " bytes of the value");
    }
    // Pairs of hex digits, blanks skipped; a bad digit or an unpaired last
    // digit ends the line's data. The usual line is plain pairs, taken two
    // characters at a time until something else turns up.
    const std::size_t room = total - filled;
    std::size_t taken = 0;
    std::size_t at = 0;
    while (at + 16 <= line.size() && room - taken >= 8 && ReadPlainHexBytes16(line.data() + at, out + filled)) {
      filled += 8;
      taken += 8;
      at += 16;
    }
    while (at + 8 <= line.size() && room - taken >= 4 && ReadPlainHexBytes8(line.data() + at, out + filled)) {
      filled += 4;
      taken += 4;
      at += 8;
    }
    while (at + 1 < line.size() && taken < room) {
      const int high = HexDigit(static_cast<unsigned char>(line[at]));
      const int low = HexDigit(static_cast<unsigned char>(line[at + 1]));
      if ((high | low) < 0) break;
      out[filled++] = static_cast<char>(high << 4 | low);
      ++taken;
      at += 2;
    }
    int high = -1;
    for (const char c : line.substr(at)) {
      if (IsBlank(c)) continue;
      const int digit = HexDigit(static_cast<unsigned char>(c));
      if (digit < 0) break;
      if (high < 0) {
        high = digit;
        continue;
      }
      if (++taken > room) {
        record->bytes.resize(filled);
        return Invalid("a data line holds more bytes than the count leaves");
      }
      out[filled++] = static_cast<char>(high << 4 | digit);
      high = -1;
    }
    if (taken == 0) {
      record->bytes.resize(filled);
      return Invalid("a data line yields no byte");
    }
  }
  record->bytes.resize(filled);
  return Result::kRecord;
}

NIniRecordReader::Result NIniRecordReader::ReadStrings(NIniRecord* record) {
  // The value keeps a view of its block of lines; the strings are taken out
  // of it when they are asked for.
  const char* first = nullptr;
  const char* last = nullptr;
  for (std::uint32_t i = 0; i < record->count; ++i) {
    std::string_view line;
    if (!m_lines.Next(&line)) {
      return Invalid("the file ends before the " + std::to_string(record->count) + " strings of the value");
    }
    if (line.empty() || line[0] != ' ') return Invalid("a string line does not begin with a space");
    if (!first) first = line.data();
    last = line.data() + line.size();
  }
  record->text = first ? std::string_view(first, static_cast<std::size_t>(last - first)) : std::string_view();
  return Result::kRecord;
}
