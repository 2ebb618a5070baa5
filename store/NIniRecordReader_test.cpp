#include "store/NIniRecordReader.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace {

// The largest single allocation made while `countAllocations` is set, so that
// a test can see whether reading sized a buffer from a record's count.
std::atomic<bool> countAllocations{false};
std::atomic<std::size_t> largestAllocation{0};

void* Allocate(std::size_t size) {
  if (countAllocations.load(std::memory_order_relaxed)) {
    std::size_t seen = largestAllocation.load(std::memory_order_relaxed);
    while (size > seen && !largestAllocation.compare_exchange_weak(seen, size)) {
    }
  }
  if (void* block = std::malloc(size ? size : 1)) return block;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

using Result = NIniRecordReader::Result;

struct NReadOutcome {
  std::vector<NIniRecord> records;
  Result end = Result::kEnd;
  std::string problem;
  std::size_t problemLine = 0;
  bool endedWithoutLineEnd = false;
  std::size_t linesRead = 0;
};

// With `simpleFirst`, ReadSimple takes the plain records before each Next.
NReadOutcome ReadAll(std::string_view text, bool simpleFirst = false) {
  NIniRecordReader reader(text);
  NReadOutcome outcome;
  for (int guard = 0; guard < 1000; ++guard) {
    if (simpleFirst) {
      reader.ReadSimple([&](char kind, std::string_view name, std::uint32_t dword, std::string_view value) {
        outcome.records.push_back({.kind = kind, .name = name, .dword = dword, .text = value, .count = 0, .bytes = {}});
      });
    }
    NIniRecord record;
    outcome.end = reader.Next(&record);
    if (outcome.end != Result::kRecord) break;
    outcome.records.push_back(std::move(record));
  }
  outcome.problem = reader.Problem();
  outcome.problemLine = reader.ProblemLine();
  outcome.endedWithoutLineEnd = reader.EndedWithoutLineEnd();
  outcome.linesRead = reader.LinesRead();
  return outcome;
}

std::string Hex8(std::uint32_t value) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(value));
  return digits;
}

// Everything the reader makes of a text: each record as "K [name] [value]"
// (a DWORD in hex, bytes and strings after their count), then how it ended.
std::string Describe(const NReadOutcome& outcome) {
  std::string out;
  for (const NIniRecord& r : outcome.records) {
    std::string value(r.text);
    if (r.kind == 'D') value = Hex8(r.dword);
    if (r.kind == 'Z') value = std::to_string(r.count) + ":" + value;
    if (r.kind == 'B') {
      value = std::to_string(r.count) + ":";
      for (const char c : r.bytes) value += Hex8(static_cast<unsigned char>(c)).substr(6);
    }
    out += std::string(1, r.kind) + " [" + std::string(r.name) + "] [" + value + "]; ";
  }
  if (outcome.end == Result::kInvalid) {
    return out + "invalid at " + std::to_string(outcome.problemLine) + ": " + outcome.problem;
  }
  out += outcome.end == Result::kEnd ? "end" : "no end";
  if (outcome.endedWithoutLineEnd) out += ", unterminated";
  return outcome.problem.empty() ? out : out + "; problem: " + outcome.problem;
}

struct NReadCase {
  std::string name;
  std::string text;
  std::string expected;  // as Describe puts it
};

void ExpectReads(std::initializer_list<NReadCase> cases) {
  for (const NReadCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Describe(ReadAll(c.text)), c.expected);
  }
}

TEST(NIniRecordReaderTest, ChecksRunInOrderAndTheFirstFailingOneIsReported) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"", "empty line"},
      {"D:\"a", "shorter than 5 characters"},
      {"D:\"\xC3\xA9", "shorter than 5 characters"},  // five bytes but four characters
      {"xy", "shorter than 5 characters"},
      {"D;\"a\"=00000001", "character 1 is not ':'"},
      {"x;\"a\"=1", "character 1 is not ':'"},
      {"D:a\"=00000001", "character 2 is not '\"'"},
      {"x:a\"=1", "character 2 is not '\"'"},
      {"D:'a'=00000001", "character 2 is not '\"'"},
      {"D:\"abc=00000001", "no '=' after the name"},
      {"D:\"a\" =00000001", "no '=' after the name"},
      {"D:\"abcd\"", "no '=' after the name"},
      {"x:\"a\"b", "no '=' after the name"},
      {"x:\"a\"=1", "kind letter 'x' is not a kind"},
      {"d:\"a\"=00000001", "kind letter 'd' is not a kind"},
      {"s:\"a\"=v", "kind letter 's' is not a kind"},
      {"D:\"a\"=0000001", "a DWORD needs exactly 8 hex digits after '='"},
      {"B:\"a\"=1", "a byte count needs exactly 8 hex digits after '='"},
      {"Z:\"a\"=000000001", "a string count needs exactly 8 hex digits after '='"},
  };
  for (const auto& [line, problem] : cases) {
    const std::string text = "S:\"ok\"=1\r\n" + std::string(line) + "\r\nS:\"after\"=2\r\n";
    SCOPED_TRACE(text);
    EXPECT_EQ(Describe(ReadAll(text)), "S [ok] [1]; invalid at 2: " + std::string(problem));
  }
}

TEST(NIniRecordReaderTest, DwordReadsEightUnitsAndCountsANonDigitAs255) {
  const struct {
    std::string_view value;
    bool valid;
    std::uint32_t expected;
  } cases[] = {
      {"00000000", true, 0},
      {"12345678", true, 0x12345678},
      {"ffffffff", true, 0xFFFFFFFF},
      {"FFFFFFFF", true, 0xFFFFFFFF},
      {"0000000g", true, 255},
      {"0000001G", true, 0x10F},
      {" 0000001", true, 0xF0000001},  // the first digit's 255 is shifted out of 32 bits
      {"0000000\xC3\xA9", true, 255},
      {"000000\xF0\x9F\x98\x80", true, 255 * 16 + 255},  // outside the BMP: two units, each 255
      {"0000000\xF0\x9F\x98\x80", false, 0},
      {"0000000", false, 0},
      {"000000000", false, 0},
      {"", false, 0},
      {"00000000 ", false, 0},
  };
  for (const auto& c : cases) {
    const std::string text = "D:\"v\"=" + std::string(c.value);
    SCOPED_TRACE(text);
    EXPECT_EQ(Describe(ReadAll(text)), c.valid ? "D [v] [" + Hex8(c.expected) + "]; end, unterminated"
                                               : "invalid at 1: a DWORD needs exactly 8 hex digits after '='");
  }
}

TEST(NIniRecordReaderTest, DwordDigitsAtTheEdgesOfEachRangeReadAsOneByOne) {
  // The bytes on either side of each range of hex digits, in every place.
  const std::string_view edges = "/09:@AFG`afg\x10\x19\x7F ";
  auto reference = [](std::string_view digits) {
    std::uint32_t value = 0;
    for (const char c : digits) {
      int digit = 255;
      if (c >= '0' && c <= '9') digit = c - '0';
      if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
      if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
      value = value * 16 + static_cast<std::uint32_t>(digit);
    }
    return value;
  };
  std::uint32_t state = 12345;
  for (int round = 0; round < 20000; ++round) {
    std::string digits(8, '0');
    for (char& c : digits) {
      state = state * 1103515245 + 12345;
      // Mostly plain digits, so that one odd byte among them is the usual case.
      const std::uint32_t pick = state >> 16;
      c = pick % 3 ? "0123456789abcdefABCDEF"[pick % 22] : edges[pick % edges.size()];
    }
    const NReadOutcome outcome = ReadAll("D:\"v\"=" + digits + "\r\n");
    ASSERT_EQ(outcome.records.size(), 1u) << digits;
    ASSERT_EQ(outcome.records[0].dword, reference(digits)) << digits;
  }
}

TEST(NIniRecordReaderTest, NamesAndStringValuesAreTakenAsWritten) {
  const struct {
    std::string_view line, name, value;
  } cases[] = {
      {"S:\"a=b\"=v", "a=b", "v"}, {"S:\"a:b c\"=v", "a:b c", "v"},
      {"S:\" k \"=v", " k ", "v"}, {"S:\"caf\xC3\xA9\"=\xF0\x9F\x98\x80", "caf\xC3\xA9", "\xF0\x9F\x98\x80"},
      {"S:\"k\"==x", "k", "=x"},   {"S:\"k\"=\"quoted\" \"", "k", "\"quoted\" \""},
      {"S:\"k\"=", "k", ""},       {"S:\"k\"=  a  b  ", "k", "  a  b  "},
      {"S:\"\"=v", "", "v"},  // an empty name is still a record; the key discards it later
      {"S:\"\"=", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    EXPECT_EQ(Describe(ReadAll(std::string(c.line) + "\r\n")),
              "S [" + std::string(c.name) + "] [" + std::string(c.value) + "]; end");
  }
}

TEST(NIniRecordReaderTest, BinaryDataLinesYieldExactlyTheCountedBytes) {
  const std::string more = "invalid at 2: a data line holds more bytes than the count leaves";
  const std::string none = "invalid at 2: a data line yields no byte";
  ExpectReads({
      {"two lines", "B:\"b\"=00000021\r\n000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f\r\n20\r\n",
       "B [b] [33:000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20]; end"},
      {"blanks and upper case", "B:\"b\"=00000004\r\n \t0A 0b\v\fC0\t FF \r\n", "B [b] [4:0a0bc0ff]; end"},
      {"bad digit ends the line", "B:\"b\"=00000003\r\n0102zz03\r\n03\r\n", "B [b] [3:010203]; end"},
      {"bad digit after eight good ones", "B:\"b\"=00000006\r\n0A0b0C0d0E-f\r\nF1\r\n", "B [b] [6:0a0b0c0d0ef1]; end"},
      {"count ending inside eight digits", "B:\"b\"=00000003\r\n01020304\r\n", more},
      {"bytes past a bad digit are not counted", "B:\"b\"=00000001\r\n01-0203\r\n", "B [b] [1:01]; end"},
      {"unpaired last digit", "B:\"b\"=00000002\r\n010\r\n02\r\n", "B [b] [2:0102]; end"},
      {"no count reads no line", "B:\"b\"=00000000\r\nD:\"d\"=00000001\r\n", "B [b] [0:]; D [d] [00000001]; end"},
      {"line without a byte", "B:\"b\"=00000002\r\nzz01\r\n", none},
      {"lone digit", "B:\"b\"=00000002\r\n0\r\n0102\r\n", none},
      {"blank line", "B:\"b\"=00000001\r\n \t\r\n01\r\n", none},
      {"empty line", "B:\"b\"=00000001\r\n\r\n01\r\n", none},
      {"too many on one line", "B:\"b\"=00000001\r\n0102\r\n", more},
      {"too many on the second line", "B:\"b\"=00000003\r\n0102\r\n0304\r\n",
       "invalid at 3: a data line holds more bytes than the count leaves"},
      {"running out", "B:\"b\"=00000003\r\n0102\r\n", "invalid at 2: the file ends before the 3 bytes of the value"},
  });
}

// A long line of plain digits with one bad character at each place: the
// bytes before it count, wherever it falls in a block of digits read at once.
TEST(NIniRecordReaderTest, ABadCharacterAnywhereInALongLineEndsItsDataThere) {
  const std::string digits = "0123456789abcdefABCDEF0f1e2d3c4b5a69788796a5b4c3d2e1f0";
  const char bad[] = {'g', 'G', '/', ':', '@', '`', '-', '\x80', '\xFF', 'z', '\x7F', '\0'};
  for (std::size_t at = 2; at <= digits.size(); ++at) {
    std::string line = digits;
    if (at < line.size()) line[at] = bad[at % sizeof bad];
    const std::size_t good = at / 2;
    std::string expected;
    for (std::size_t i = 0; i < 2 * good; i += 2)
      expected += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    // Room for whole blocks, whatever the bad character leaves.
    const std::string text = "B:\"b\"=" + Hex8(static_cast<std::uint32_t>(good + 16)) + "\r\n" + line + "\r\n" +
                             std::string(32, 'f') + "\r\n";
    SCOPED_TRACE(at);
    const NReadOutcome outcome = ReadAll(text);
    ASSERT_EQ(outcome.records.size(), 1u) << outcome.problem;
    EXPECT_EQ(outcome.records[0].bytes, expected + std::string(16, '\xFF'));
  }
}

// The record keeps the block of string lines as one view; each line keeps
// its leading space, which the key strips later.
TEST(NIniRecordReaderTest, StringListTakesExactlyCountLinesEachBeginningWithASpace) {
  const std::string noSpace = "invalid at 2: a string line does not begin with a space";
  ExpectReads({
      {"no strings", "Z:\"z\"=00000000\r\nS:\"s\"=1\r\n", "Z [z] [0:]; S [s] [1]; end"},
      {"one empty string", "Z:\"z\"=00000001\r\n \r\n", "Z [z] [1: ]; end"},
      {"leading spaces after the first kept", "Z:\"z\"=00000002\r\n   a\r\n b \r\nS:\"s\"=1",
       "Z [z] [2:   a\r\n b ]; S [s] [1]; end, unterminated"},
      {"mixed line ends inside", "Z:\"z\"=00000003\r\n a\n b\r c\r\n", "Z [z] [3: a\n b\r c]; end"},
      {"no leading space", "Z:\"z\"=00000002\r\n a\r\nb\r\n",
       "invalid at 3: a string line does not begin with a space"},
      {"tab is not a space", "Z:\"z\"=00000001\r\n\ta\r\n", noSpace},
      {"empty line", "Z:\"z\"=00000001\r\n\r\n a\r\n", noSpace},
      {"running out", "Z:\"z\"=00000003\r\n a\r\n b\r\n",
       "invalid at 3: the file ends before the 3 strings of the value"},
  });
}

// The problem line counts every line, data and string lines included.
TEST(NIniRecordReaderTest, AnInvalidRecordEndsReadingAndKeepsTheRecordsBefore) {
  ExpectReads({
      {"third record", "S:\"a\"=1\r\nD:\"b\"=00000002\r\nS:\"c\"\r\nS:\"d\"=4\r\n",
       "S [a] [1]; D [b] [00000002]; invalid at 3: no '=' after the name"},
      {"after multi-line values",
       "B:\"a\"=00000002\r\n01\r\n02\r\nZ:\"b\"=00000001\r\n x\r\nQ:\"c\"=1\r\nS:\"d\"=4\r\n",
       "B [a] [2:0102]; Z [b] [1: x]; invalid at 6: kind letter 'Q' is not a kind"},
      {"a string line that looks like a record", "Z:\"a\"=00000001\r\nS:\"b\"=1\r\nS:\"c\"=2\r\n",
       "invalid at 2: a string line does not begin with a space"},
  });
}

TEST(NIniRecordReaderTest, LinesEndAtCrLfOrCrLfAndTheLastNeedsNone) {
  ExpectReads({
      {"mixed", "S:\"a\"=1\rS:\"b\"=2\nS:\"c\"=3\r\nS:\"d\"=4\r\n", "S [a] [1]; S [b] [2]; S [c] [3]; S [d] [4]; end"},
      {"last line unterminated", "S:\"a\"=1\r\nS:\"b\"=2", "S [a] [1]; S [b] [2]; end, unterminated"},
      {"last line ends in CR", "S:\"a\"=1\r", "S [a] [1]; end"},
      {"unterminated string list", "Z:\"a\"=00000001\n x", "Z [a] [1: x]; end, unterminated"},
      {"unterminated data line", "B:\"a\"=00000001\r41", "B [a] [1:41]; end, unterminated"},
  });
  EXPECT_EQ(ReadAll("S:\"a\"=1\rS:\"b\"=2\nS:\"c\"=3\r\nS:\"d\"=4").linesRead, 4u);
}

// A count of 4294967295 must not size anything: reading fails when the
// lines run out, having allocated no more than the few lines hold.
TEST(NIniRecordReaderTest, HostileCountsFailWithoutAllocatingForTheCount) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"B:\"x\"=ffffffff\r\n00112233\r\n44556677\r\n8899\r\n",
       "the file ends before the 4294967295 bytes of the value"},
      {"Z:\"x\"=ffffffff\r\n a\r\n b\r\n c\r\n", "the file ends before the 4294967295 strings of the value"},
      {"B:\"x\"=gggggggg\r\n00\r\n", "the file ends before the 4294967279 bytes of the value"},
  };
  for (const auto& [text, problem] : cases) {
    SCOPED_TRACE(text);
    NIniRecordReader reader(text);
    NIniRecord record;
    largestAllocation = 0;
    countAllocations = true;
    const Result result = reader.Next(&record);
    countAllocations = false;
    EXPECT_EQ(result, Result::kInvalid);
    EXPECT_EQ(reader.Problem(), problem);
    EXPECT_LT(largestAllocation.load(), 4096u);
  }
}

// The plain records read in one pass by ReadSimple, then Next for the rest,
// must give what Next alone gives: records, lines and the problem found.
TEST(NIniRecordReaderTest, ReadSimpleGivesWhatNextGivesWhereverNamesValuesAndTheTextEnd) {
  std::uint64_t state = 12345;
  auto below = [&state](std::uint64_t n) {
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return (state >> 33) % n;
  };
  const std::string_view ends[] = {"\r\n", "\n", "\r"};
  const char* digits[] = {"0000abcd", "0000ABCZ", "0000abc", "0000abcde", "ffffffff"};
  for (int round = 0; round < 400; ++round) {
    std::string text;
    const std::uint64_t records = 1 + below(12);
    for (std::uint64_t r = 0; r < records; ++r) {
      // Names and values around the lengths where the windows end.
      const std::size_t nameLength = below(4) == 0 ? below(3) : 28 + below(8);
      std::string name(nameLength, 'n');
      if (below(8) == 0 && nameLength) name[below(nameLength)] = '"';
      const std::string end(ends[below(3)]);
      const std::uint64_t kind = below(6);
      if (kind < 2) {
        text += "D:\"" + name + "\"=" + digits[below(5)];
      } else if (kind < 4) {
        std::string value(60 + below(8), 'v');
        if (below(4) == 0) value[below(value.size())] = '"';
        text += "S:\"" + name + "\"=" + value;
      } else if (kind == 4) {
        text += "B:\"" + name + "\"=00000002" + end + "abcd";
      } else {
        text += below(3) == 0 ? "x:\"" + name + "\"=1" : "Z:\"" + name + "\"=00000001" + end + " s";
      }
      if (r + 1 < records || below(2) == 0) text += end;
    }
    SCOPED_TRACE(text);
    const NReadOutcome expected = ReadAll(text), got = ReadAll(text, true);
    EXPECT_EQ(Describe(got), Describe(expected));
    EXPECT_EQ(got.linesRead, expected.linesRead);
  }
}

}  // namespace
