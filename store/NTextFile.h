#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/NAscii.h"
#include "platform/NFile.h"

// The text-file reader and writer of the store, on an open NFile.
//
// Reading takes the whole file in blocks of 4096 bytes, recognises a
// byte-order mark (EF BB BF for UTF-8, then FF FE for UTF-16LE, then FE FF
// for UTF-16BE, in that order) and hands back the text as UTF-8, whatever
// the file's encoding; a file without a mark is in the ANSI code page.
// Malformed input becomes U+FFFD. Splitting into lines is NLineReader's job.
//
// Writing collects UTF-8 lines in memory, each ended by CR LF, and encodes
// them in one piece, so that a file is never touched before its whole new
// content exists. The writer's own default encoding is UTF-16LE; the store
// always sets UTF-8.
//
// Does not own the file. Not thread-safe.
class NTextFile {
 public:
  enum class Encoding { kAnsi, kUtf8, kUtf16LE, kUtf16BE };

  static constexpr std::size_t kBlockSize = 4096;
  // Key files are small; a larger file is refused rather than read whole.
  static constexpr std::uint64_t kMaxFileSize = 256ull << 20;

  explicit NTextFile(NFile& file) : m_file(&file) {}
  // A writer only, whose output the caller takes from Pending or Encoded.
  NTextFile() = default;

  // Reads the whole file from offset 0, the bytes as they are on disk.
  NStatus Read(std::string* raw);

  // The text of a file's bytes as UTF-8, without the mark. Takes the bytes,
  // so that the usual clean UTF-8 file is not copied.
  static std::string Decode(std::string raw, Encoding* encoding);
  // The same, taking the bytes from *raw only when the text is the bytes
  // themselves after the mark (*verbatim); otherwise *raw is left as it was.
  // A taken text still begins with its mark: the text is what follows the
  // first *markSize bytes (moving a whole file down three bytes costs more
  // than keeping them).
  static std::string DecodeTaking(std::string* raw, Encoding* encoding, bool* verbatim, std::size_t* markSize);

  void SetEncoding(Encoding encoding) { m_encoding = encoding; }
  Encoding GetEncoding() const { return m_encoding; }

  // Appends UTF-8 text to the pending output; WriteLine adds CR LF.
  void Write(std::string_view utf8) { m_pending.append(utf8); }
  void WriteLine(std::string_view utf8) {
    m_pending.append(utf8);
    m_pending.append("\r\n");
  }
  std::string& Pending() { return m_pending; }

  // The pending output encoded, with the encoding's byte-order mark first.
  std::string Encoded() const;

 private:
  NFile* m_file = nullptr;
  Encoding m_encoding = Encoding::kUtf16LE;
  std::string m_pending;
};

// Splits UTF-8 text into lines. A line ends at CR, at LF, or at CR LF; the
// line end is not part of the line, and the last line needs none. An empty
// line is a line, not skipped.
class NLineReader {
 public:
  explicit NLineReader(std::string_view text) : m_text(text) {}

  // The next line; false at the end of the text.
  bool Next(std::string_view* line) {
    if (m_position >= m_text.size()) return false;
    const char* begin = m_text.data() + m_position;
    const std::size_t left = m_text.size() - m_position;
    // Most lines end within 64 bytes: one test of that window, then a scan
    // of the rest only for longer lines.
    std::size_t end = 0;
    if (left >= 64) {
      end = NFindInWindow<64>(begin, false);
      if (end == 64) end += NFindLineEnd(std::string_view(begin + 64, left - 64));
    } else {
      end = NFindLineEnd(std::string_view(begin, left));
    }
    *line = std::string_view(begin, end);
    TakeLine(end);
    return true;
  }

  // The text not read yet.
  std::string_view Rest() const { return m_text.substr(m_position); }

  // Takes `lines` whole lines, `bytes` long with their line ends, read by
  // a caller that scanned them itself.
  void Advance(std::size_t bytes, std::size_t lines) {
    m_position += bytes;
    m_lineNumber += lines;
    m_unterminated = false;
  }

  // 1-based number of the line Next gave last.
  std::size_t LineNumber() const { return m_lineNumber; }
  // True when the line Next gave last ended the text without a line end.
  bool LastLineUnterminated() const { return m_unterminated; }
  // Byte offset in the text just after the last line and its line end.
  std::size_t Offset() const { return m_position; }

 private:
  // Moves past the next line, `length` long, and its line end.
  void TakeLine(std::size_t length) {
    const char* begin = m_text.data() + m_position;
    const std::size_t left = m_text.size() - m_position;
    ++m_lineNumber;
    if (length == left) {
      m_position = m_text.size();
      m_unterminated = true;
      return;
    }
    m_unterminated = false;
    std::size_t next = length + 1;
    if (begin[length] == '\r' && next < left && begin[next] == '\n') ++next;
    m_position += next;
  }

  std::string_view m_text;
  std::size_t m_position = 0;
  std::size_t m_lineNumber = 0;
  bool m_unterminated = false;
};
