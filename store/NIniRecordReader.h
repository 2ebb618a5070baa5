#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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

 private:
  Result Invalid(std::string problem);
  bool NextSimple(NIniRecord* record);
  Result ReadBinary(NIniRecord* record);
  Result ReadStrings(NIniRecord* record);

  NLineReader m_lines;
  std::string m_problem;
  std::size_t m_problemLine = 0;
};
