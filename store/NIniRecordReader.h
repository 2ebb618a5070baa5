#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/NAscii.h"
#include "store/NTextFile.h"

// One value record of a key file, as read. Views point into the text given
// to the reader.
struct NIniRecord {
  char kind = 0;                // 'D', 'S', 'B' or 'Z'
  std::string_view name;        // UTF-8; may be empty (the record is then discarded)
  std::uint32_t dword = 0;      // D
  std::string_view text;        // S: the value; Z: the string lines, each still with its leading space
  std::uint32_t count = 0;      // Z: the number of strings
  std::string bytes;            // B: the decoded bytes
};

// Reads value records from the UTF-8 text of a key file, one after another,
// with the record grammar of the store:
//   <kind>:"<name>"=<value>
// kind D: exactly 8 hex digits; S: the rest of the line as it stands; B: 8
// hex digits giving the byte count, then data lines of hex pairs; Z: 8 hex
// digits giving the string count, then one line per string, each beginning
// with a space. The first invalid record ends the reading; Problem() then
// says why, for diagnostics. A count never allocates before its data is
// there, whatever it says.
class NIniRecordReader {
 public:
  enum class Result { kRecord, kEnd, kInvalid };

  explicit NIniRecordReader(std::string_view text) : m_lines(text) {}

  Result Next(NIniRecord* record);

  // Why the record was invalid, and on which line (1-based).
  const std::string& Problem() const { return m_problem; }
  std::size_t ProblemLine() const { return m_problemLine; }
  // True when the text's last line had no line end.
  bool EndedWithoutLineEnd() const { return m_lines.LastLineUnterminated(); }
  std::size_t LinesRead() const { return m_lines.LineNumber(); }

  // The value of 8 "hex digits" as the store reads them: a character that is
  // not a hex digit deliberately counts as 255 (the value is multiplied by 16
  // and 255 added), which older writers relied on. False unless `digits`
  // holds exactly 8 characters (UTF-16 code units).
  static bool ReadHex8(std::string_view digits, std::uint32_t* value);
  // The values of eight plain hex digits, one per byte, first digit in the
  // lowest byte; false for anything else, which the general reader then
  // takes. All eight at once in one word: each byte is checked against the
  // ranges by adding to it so that its high bit tells the comparison (no
  // byte carries into the next, as all are below 0x80).
  static bool PlainHexNibbles8(const char* digits, std::uint64_t* nibbles) {
    static_assert(std::endian::native == std::endian::little, "the first character is the word's lowest byte");
    constexpr std::uint64_t kOnes = 0x0101010101010101ull;
    constexpr std::uint64_t kHighs = kOnes * 0x80;
    std::uint64_t word;
    std::memcpy(&word, digits, 8);
    if (word & kHighs) return false;
    const std::uint64_t atLeast0 = word + kOnes * (0x80 - '0');
    const std::uint64_t above9 = word + kOnes * (0x80 - '9' - 1);
    const std::uint64_t lower = word | kOnes * 0x20;  // 'A'-'F' as 'a'-'f'
    const std::uint64_t atLeastA = lower + kOnes * (0x80 - 'a');
    const std::uint64_t aboveF = lower + kOnes * (0x80 - 'f' - 1);
    const std::uint64_t isHex = ((atLeast0 & ~above9) | (atLeastA & ~aboveF)) & kHighs;
    if (isHex != kHighs) return false;
    // A digit's value is its low nibble, a letter's its low nibble plus 9
    // (letters have bit 6 set, digits not).
    *nibbles = (word & kOnes * 0x0F) + ((word >> 6) & kOnes) * 9;
    return true;
  }
  // Eight plain hex digits, the usual DWORD.
  static bool ReadPlainHex8(const char* digits, std::uint32_t* value) {
    std::uint64_t nibbles;
    if (!PlainHexNibbles8(digits, &nibbles)) return false;
    // The first character is the most significant: pairs, then quads, then all.
    const std::uint64_t pairs = ((nibbles << 4) | (nibbles >> 8)) & 0x00FF00FF00FF00FFull;
    const std::uint64_t quads = ((pairs << 8) | (pairs >> 16)) & 0x0000FFFF0000FFFFull;
    *value = static_cast<std::uint32_t>((quads << 16) | (quads >> 32));
    return true;
  }
  // Eight plain hex digits as the four bytes they spell, in order, the usual
  // data line of a binary.
  static bool ReadPlainHexBytes8(const char* digits, char* bytes) {
    std::uint64_t nibbles;
    if (!PlainHexNibbles8(digits, &nibbles)) return false;
    const std::uint64_t pairs = ((nibbles << 4) | (nibbles >> 8)) & 0x00FF00FF00FF00FFull;
    const std::uint64_t quads = (pairs | (pairs >> 8)) & 0x0000FFFF0000FFFFull;
    const auto four = static_cast<std::uint32_t>(quads | (quads >> 16));
    std::memcpy(bytes, &four, 4);
    return true;
  }

  // Sixteen plain hex digits as the eight bytes they spell, in order: the
  // bulk of a binary's data lines, sixteen lanes at a time.
  static bool ReadPlainHexBytes16(const char* digits, char* bytes) {
#if defined(__SSE2__)
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(digits));
    // Signed compares: a byte of 0x80 and above is below '0' and fails both.
    const __m128i lower = _mm_or_si128(text, _mm_set1_epi8(0x20));  // 'A'-'F' as 'a'-'f'
    const __m128i digit = _mm_and_si128(_mm_cmpgt_epi8(text, _mm_set1_epi8('0' - 1)),
                                        _mm_cmplt_epi8(text, _mm_set1_epi8('9' + 1)));
    const __m128i letter = _mm_and_si128(_mm_cmpgt_epi8(lower, _mm_set1_epi8('a' - 1)),
                                         _mm_cmplt_epi8(lower, _mm_set1_epi8('f' + 1)));
    if (_mm_movemask_epi8(_mm_or_si128(digit, letter)) != 0xFFFF) return false;
    const __m128i nibbles =
        _mm_add_epi8(_mm_and_si128(text, _mm_set1_epi8(0x0F)), _mm_and_si128(letter, _mm_set1_epi8(9)));
    // Each pair of lanes, first digit low: its byte is the first nibble
    // shifted up, with the second.
    const __m128i pairs = _mm_or_si128(_mm_and_si128(_mm_slli_epi16(nibbles, 4), _mm_set1_epi16(0x00F0)),
                                       _mm_srli_epi16(nibbles, 8));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes), _mm_packus_epi16(pairs, pairs));
    return true;
#else
    char eight[8];
    if (!ReadPlainHexBytes8(digits, eight) || !ReadPlainHexBytes8(digits + 8, eight + 4)) return false;
    std::memcpy(bytes, eight, 8);
    return true;
#endif
  }

  // Reads the plain D and S records from where the reader is, calling
  // on(kind, name, dword, text) for each (text for S, dword for D), and
  // stops before the first record that is anything else, for Next to read.
  // This is the loop every load spends its time in: one record is one pass
  // with no state kept but the position, and windows of 32 and 64 bytes find
  // the name's end and the line's end without a loop. It stops short of the
  // text's last 65 bytes, which the windows would read past.
  template <typename OnRecord>
  void ReadSimple(OnRecord&& on);

 private:
  Result Invalid(std::string problem);
  Result ReadBinary(NIniRecord* record);
  Result ReadStrings(NIniRecord* record);

  NLineReader m_lines;
  std::string m_problem;
  std::size_t m_problemLine = 0;
};

template <typename OnRecord>
void NIniRecordReader::ReadSimple(OnRecord&& on) {
  // The next record's start depends only on where this line ends, which is
  // found from the line's start: the search for the name's end and the
  // checks of the record do not hold the next record up.
  constexpr std::size_t kReach = 64 + 1;
  const std::string_view rest = m_lines.Rest();
  const char* const begin = rest.data();
  const char* const end = begin + rest.size();
  const char* p = begin;
  std::size_t lines = 0;
  while (static_cast<std::size_t>(end - p) >= kReach) {
    std::size_t lineLength = NFindInWindow<64>(p, false);
    if (lineLength == 64) lineLength = 64 + NFindLineEnd(std::string_view(p + 64, static_cast<std::size_t>(end - p - 64)));
    const char* lineEnd = p + lineLength;
    if (lineEnd == end) break;  // the last line, without a line end
    const char kind = p[0];
    if ((kind != 'D' && kind != 'S') || p[1] != ':' || p[2] != '"') break;
    const std::size_t nameLength = NFindInWindow<32>(p + 3, true);
    const char* q = p + 3 + nameLength;
    if (nameLength == 32 || q[0] != '"' || q[1] != '=') break;
    const char* value = q + 2;
    std::uint32_t dword = 0;
    if (kind == 'D' && (lineEnd != value + 8 || !ReadPlainHex8(value, &dword))) break;
    on(kind, std::string_view(p + 3, nameLength), dword,
       std::string_view(value, static_cast<std::size_t>(lineEnd - value)));
    p = lineEnd + 1;
    if (*lineEnd == '\r' && p < end && *p == '\n') ++p;
    ++lines;
  }
  if (lines) m_lines.Advance(static_cast<std::size_t>(p - begin), lines);
}
