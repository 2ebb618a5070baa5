// Feeds arbitrary file bytes to the key-file reading path: decoding to UTF-8,
// then reading records until the end or the first invalid one. Traps when a
// record breaks what the grammar guarantees, or when the decoded text does
// not survive the writer and decoder unchanged.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/NUnicode.h"
#include "store/NIniRecordReader.h"
#include "store/NTextFile.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

bool Within(std::string_view part, std::string_view whole) {
  return part.data() >= whole.data() && part.data() + part.size() <= whole.data() + whole.size();
}

std::size_t CountLines(std::string_view text) {
  NLineReader lines(text);
  std::string_view line;
  while (lines.Next(&line)) {
  }
  return lines.LineNumber();
}

// The rest of the record's first line after `<kind>:"<name>"=`.
std::string_view ValueAfterName(const NIniRecord& record, std::string_view text) {
  const std::size_t begin = static_cast<std::size_t>(record.name.data() - text.data()) + record.name.size() + 2;
  Check(begin <= text.size() && text[begin - 2] == '"' && text[begin - 1] == '=');
  const std::size_t end = text.find_first_of("\r\n", begin);
  return text.substr(begin, end == std::string_view::npos ? std::string_view::npos : end - begin);
}

void CheckRecord(const NIniRecord& record, std::string_view text) {
  Check(Within(record.name, text));
  Check(record.name.find('"') == std::string_view::npos);
  switch (record.kind) {
    case 'D':
      Check(NUtf8ToUtf16(ValueAfterName(record, text)).size() == 8);
      break;
    case 'S':
      Check(record.text == ValueAfterName(record, text));
      break;
    case 'B':
      Check(record.bytes.size() == record.count);
      break;
    case 'Z': {
      Check(CountLines(record.text) == record.count);
      if (record.count == 0) break;
      Check(Within(record.text, text));
      NLineReader lines(record.text);
      std::string_view line;
      while (lines.Next(&line)) Check(!line.empty() && line[0] == ' ');
      break;
    }
    default:
      __builtin_trap();
  }
}

void CheckRoundTrip(const std::string& text, NTextFile::Encoding encoding) {
  NTextFile writer;
  writer.SetEncoding(encoding);
  writer.Write(text);
  NTextFile::Encoding decodedAs = NTextFile::Encoding::kAnsi;
  Check(NTextFile::Decode(writer.Encoded(), &decodedAs) == text);
  Check(decodedAs == encoding);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NTextFile::Encoding encoding = NTextFile::Encoding::kAnsi;
  const std::string text = NTextFile::Decode(std::string(reinterpret_cast<const char*>(data), size), &encoding);
  Check(NIsValidUtf8(text));
  const std::size_t lineCount = CountLines(text);

  NIniRecordReader reader(text);
  std::size_t records = 0;
  std::vector<NIniRecord> read;
  NIniRecordReader::Result last;
  for (;;) {
    NIniRecord record;
    const NIniRecordReader::Result result = reader.Next(&record);
    last = result;
    if (result == NIniRecordReader::Result::kEnd) {
      Check(reader.LinesRead() == lineCount);
      break;
    }
    if (result == NIniRecordReader::Result::kInvalid) {
      Check(!reader.Problem().empty());
      Check(reader.ProblemLine() >= 1 && reader.ProblemLine() <= reader.LinesRead());
      break;
    }
    // Every record takes at least one line, so reading always ends.
    Check(++records <= lineCount);
    CheckRecord(record, text);
    read.push_back(std::move(record));
  }

  // The one-pass reading of plain records, then Next for the others, gives
  // the same records, lines and problem.
  NIniRecordReader fast(text);
  std::size_t at = 0;
  auto same = [&](char kind, std::string_view name) -> const NIniRecord& {
    Check(at < read.size() && read[at].kind == kind && read[at].name == name);
    return read[at++];
  };
  for (;;) {
    fast.ReadSimple([&](char kind, std::string_view name, std::uint32_t dword, std::string_view value) {
      const NIniRecord& expected = same(kind, name);
      Check(kind == 'D' ? expected.dword == dword : expected.text == value);
    });
    NIniRecord record;
    const NIniRecordReader::Result result = fast.Next(&record);
    if (result != NIniRecordReader::Result::kRecord) {
      Check(result == last && at == read.size());
      break;
    }
    const NIniRecord& expected = same(record.kind, record.name);
    Check(expected.dword == record.dword && expected.text == record.text && expected.bytes == record.bytes &&
          expected.count == record.count);
  }
  Check(fast.LinesRead() == reader.LinesRead() && fast.ProblemLine() == reader.ProblemLine() &&
        fast.Problem() == reader.Problem() && fast.EndedWithoutLineEnd() == reader.EndedWithoutLineEnd());

  CheckRoundTrip(text, NTextFile::Encoding::kUtf8);
  CheckRoundTrip(text, NTextFile::Encoding::kUtf16LE);
  CheckRoundTrip(text, NTextFile::Encoding::kUtf16BE);
  return 0;
}
