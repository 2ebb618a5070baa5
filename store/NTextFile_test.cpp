#include "store/NTextFile.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/NPlatform.h"
#include "platform/NUnicode.h"
#include "platform/testing/NTestFolder.h"

namespace {

using Encoding = NTextFile::Encoding;

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";   // U+FFFD in UTF-8
constexpr std::string_view kGrinning = "\xF0\x9F\x98\x80";  // U+1F600

std::string Hex(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out += {kDigits[byte >> 4], kDigits[byte & 15], ' '};
  }
  return out;
}

// Raw bytes spelled as hex pairs, e.g. "FF FE 61 00".
std::string FromHex(std::string_view hex) {
  std::string out;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 3) {
    out.push_back(static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
  }
  return out;
}

std::size_t CountLines(std::string_view text) {
  NLineReader reader(text);
  std::string_view line;
  while (reader.Next(&line)) {
  }
  return reader.LineNumber();
}

// Lines of varied content, so that a lost or repeated block changes the text.
std::string Filler(std::size_t size) {
  std::string out;
  for (int i = 0; out.size() < size; ++i) out += "S:\"" + std::to_string(i) + "\"=x\r\n";
  out.resize(size);
  return out;
}

TEST(NTextFileTest, DecodeRecognisesTheMarkAndReplacesMalformedInput) {
  const std::string replacement(kReplacement);
  const std::string grinning(kGrinning);
  // Text without a mark is the system's ANSI text: which bytes mean what in
  // it is the system's to say (the platform tests pin it down).
  const std::string kAnsi = "(ANSI)";
  const struct {
    const char* name;
    std::string_view rawHex;
    std::string expected;
    Encoding encoding;
  } cases[] = {
      {"UTF-8 mark", "EF BB BF 61 62 63", "abc", Encoding::kUtf8},
      {"UTF-16LE mark", "FF FE 61 00 62 00", "ab", Encoding::kUtf16LE},
      {"UTF-16BE mark", "FE FF 00 61 00 62", "ab", Encoding::kUtf16BE},
      // The UTF-8 mark is compared first; FF FE then is malformed UTF-8.
      {"UTF-8 mark before FF FE", "EF BB BF FF FE", replacement + replacement, Encoding::kUtf8},
      {"FF FE before bytes that look UTF-8", "FF FE C3 A9", "\xEA\xA7\x83", Encoding::kUtf16LE},
      {"UTF-16LE surrogate pair", "FF FE 61 00 3D D8 00 DE", "a" + grinning, Encoding::kUtf16LE},
      {"UTF-16BE surrogate pair", "FE FF 00 61 D8 3D DE 00", "a" + grinning, Encoding::kUtf16BE},
      {"UTF-16LE odd length", "FF FE 61 00 62", "a" + replacement, Encoding::kUtf16LE},
      {"UTF-16BE odd length", "FE FF 00 61 00", "a" + replacement, Encoding::kUtf16BE},
      {"UTF-8 mark alone", "EF BB BF", "", Encoding::kUtf8},
      {"UTF-16LE mark alone", "FF FE", "", Encoding::kUtf16LE},
      {"UTF-16BE mark alone", "FE FF", "", Encoding::kUtf16BE},
      {"lone high surrogate", "FF FE 00 D8 61 00", replacement + "a", Encoding::kUtf16LE},
      {"lone low surrogate at the end", "FF FE 61 00 00 DC", "a" + replacement, Encoding::kUtf16LE},
      {"surrogates in the wrong order", "FE FF DE 00 D8 3D", replacement + replacement, Encoding::kUtf16BE},
      {"malformed UTF-8 after the mark", "EF BB BF 61 FF 62", "a" + replacement + "b", Encoding::kUtf8},
      {"no mark, ASCII", "61 3D 62 0D 0A", "a=b\r\n", Encoding::kAnsi},
      {"empty", "", "", Encoding::kAnsi},
      {"no mark, valid UTF-8", "63 61 66 C3 A9", kAnsi, Encoding::kAnsi},
      {"no mark, Windows-1252", "63 61 66 E9", kAnsi, Encoding::kAnsi},
      {"no mark, euro sign", "80", kAnsi, Encoding::kAnsi},
      {"no mark, UTF-8 and one 1252 byte", "C3 A9 E9", kAnsi, Encoding::kAnsi},
      {"half a UTF-8 mark", "EF BB", kAnsi, Encoding::kAnsi},
      {"half a UTF-16 mark", "FF", kAnsi, Encoding::kAnsi},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string raw = FromHex(c.rawHex);
    const std::string expected = c.expected == kAnsi ? NUtf16ToUtf8(NAnsiToUtf16(raw)) : c.expected;
    Encoding encoding = c.encoding == Encoding::kUtf8 ? Encoding::kAnsi : Encoding::kUtf8;
    EXPECT_EQ(Hex(NTextFile::Decode(raw, &encoding)), Hex(expected));
    EXPECT_EQ(encoding, c.encoding);
  }
}

TEST(NTextFileTest, LineReaderSplitsAtCrLfOrCrLf) {
  const struct {
    std::string_view text;
    std::vector<std::string_view> lines;
    bool lastUnterminated;
  } cases[] = {
      {"a\rb", {"a", "b"}, true},
      {"a\nb\n", {"a", "b"}, false},
      {"a\r\nb\r\n", {"a", "b"}, false},
      {"a\n\rb", {"a", "", "b"}, true},
      {"a\r\r\nb", {"a", "", "b"}, true},
      {"\n\n", {"", ""}, false},
      {"a\n\nb\r\r", {"a", "", "b", ""}, false},
      {" x \r", {" x "}, false},
      {"", {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(c.text));
    NLineReader reader(c.text);
    std::string_view line;
    for (std::size_t i = 0; i < c.lines.size(); ++i) {
      ASSERT_TRUE(reader.Next(&line));
      EXPECT_EQ(line, c.lines[i]);
      EXPECT_EQ(reader.LineNumber(), i + 1);
    }
    EXPECT_EQ(reader.LastLineUnterminated(), c.lastUnterminated);
    EXPECT_EQ(reader.Offset(), c.text.size());
    EXPECT_FALSE(reader.Next(&line));
    EXPECT_EQ(reader.LineNumber(), c.lines.size());
  }
  // Line ends at every position around the 64 bytes tested at once, and
  // past them, against a plain split.
  for (std::size_t length = 0; length < 150; ++length) {
    for (const std::string_view end : {"\r", "\n", "\r\n"}) {
      const std::string text = std::string(length, 'x') + std::string(end) + std::string(length / 2, 'y') + "\n";
      NLineReader reader(text);
      std::string_view line;
      for (std::size_t at = 0; at < text.size();) {
        const std::size_t stop = text.find_first_of("\r\n", at);
        ASSERT_TRUE(reader.Next(&line)) << length;
        ASSERT_EQ(line, std::string_view(text).substr(at, stop - at)) << length;
        at = stop + (text.compare(stop, 2, "\r\n") == 0 ? 2 : 1);
      }
      EXPECT_FALSE(reader.Next(&line)) << length;
    }
  }
}

TEST(NTextFileTest, EncodedPutsTheMarkFirstAndEndsLinesWithCrLf) {
  const struct {
    const char* name;
    bool setEncoding;
    Encoding encoding;
    std::string_view expectedHex;
  } cases[] = {
      {"UTF-8", true, Encoding::kUtf8, "EF BB BF 61 3D C3 A9 0D 0A 62 F0 9F 98 80 0D 0A 0D 0A"},
      {"default UTF-16LE", false, Encoding::kUtf16LE,
       "FF FE 61 00 3D 00 E9 00 0D 00 0A 00 62 00 3D D8 00 DE 0D 00 0A 00 0D 00 0A 00"},
      {"UTF-16BE", true, Encoding::kUtf16BE,
       "FE FF 00 61 00 3D 00 E9 00 0D 00 0A 00 62 D8 3D DE 00 00 0D 00 0A 00 0D 00 0A"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    NTextFile writer;
    if (c.setEncoding) writer.SetEncoding(c.encoding);
    EXPECT_EQ(writer.GetEncoding(), c.encoding);
    writer.WriteLine("a=\xC3\xA9");
    writer.Write("b");
    writer.WriteLine(kGrinning);
    writer.WriteLine("");
    const std::string encoded = writer.Encoded();
    EXPECT_EQ(Hex(encoded), Hex(FromHex(c.expectedHex)));
    // What the writer produces, the reader takes back unchanged.
    Encoding decodedAs = Encoding::kAnsi;
    EXPECT_EQ(NTextFile::Decode(encoded, &decodedAs), writer.Pending());
    EXPECT_EQ(decodedAs, c.encoding);
  }
}

class NTextFileReadTest : public NTestFolderTest {
 protected:
  std::unique_ptr<NFile> OpenFile() { return Open("key.txt", NOpenMode::kExistingOnly, NFileAccess::kRead); }
};

TEST_F(NTextFileReadTest, ReadTakesTheWholeFileAcrossBlocks) {
  constexpr std::size_t kBlock = NTextFile::kBlockSize;
  const std::string firstLine = "S:\"a\"=" + std::string(kBlock - 7, 'x');
  // The high surrogate ends the first block and the low one begins the second.
  std::string utf16 = "\xFF\xFE";
  for (std::size_t i = 0; i < kBlock / 2 - 2; ++i) utf16 += FromHex("61 00");
  utf16 += FromHex("3D D8 00 DE");
  const struct {
    const char* name;
    std::string bytes;
    std::string text;  // empty: the bytes as they are
    Encoding encoding;
    std::size_t lines;
  } cases[] = {
      {"CR ends one block, LF begins the next", firstLine + "\r\nS:\"b\"=2", "", Encoding::kAnsi, 2},
      {"exactly one block", Filler(kBlock), "", Encoding::kAnsi, CountLines(Filler(kBlock))},
      {"exactly two blocks", Filler(2 * kBlock), "", Encoding::kAnsi, CountLines(Filler(2 * kBlock))},
      {"one byte past a block", Filler(kBlock + 1), "", Encoding::kAnsi, CountLines(Filler(kBlock + 1))},
      {"UTF-16 pair across blocks", utf16, std::string(kBlock / 2 - 2, 'a') + std::string(kGrinning),
       Encoding::kUtf16LE, 1},
      {"UTF-8 character across blocks", "\xEF\xBB\xBF" + std::string(kBlock - 4, 'a') + "\xE2\x82\xAC",
       std::string(kBlock - 4, 'a') + "\xE2\x82\xAC", Encoding::kUtf8, 1},
      {"empty file", "", "", Encoding::kAnsi, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    WriteText("key.txt", c.bytes);
    auto file = OpenFile();
    ASSERT_TRUE(file);
    std::string raw = "stale";
    const NStatus status = NTextFile(*file).Read(&raw);
    ASSERT_TRUE(status.IsOk()) << status.Code();
    EXPECT_EQ(raw.size(), c.bytes.size());
    EXPECT_TRUE(raw == c.bytes);
    Encoding encoding = Encoding::kUtf16BE;
    const std::string text = NTextFile::Decode(raw, &encoding);
    EXPECT_TRUE(text == (c.text.empty() ? c.bytes : c.text));
    EXPECT_EQ(encoding, c.encoding);
    EXPECT_EQ(CountLines(text), c.lines);
  }
}

TEST_F(NTextFileReadTest, AFileChangedAfterItsOpeningIsReadAsItIsNow) {
  for (const std::size_t after :
       {std::size_t{0}, std::size_t{10}, NTextFile::kBlockSize + 1, 3 * NTextFile::kBlockSize}) {
    SCOPED_TRACE(after);
    WriteText("key.txt", Filler(NTextFile::kBlockSize));
    auto file = OpenFile();
    ASSERT_TRUE(file);
    WriteText("key.txt", Filler(after));
    std::string raw;
    ASSERT_TRUE(NTextFile(*file).Read(&raw).IsOk());
    EXPECT_TRUE(raw == Filler(after)) << raw.size();
  }
}

}  // namespace
