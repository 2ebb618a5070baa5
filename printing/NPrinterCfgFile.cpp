#include "printing/NPrinterCfgFile.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <charconv>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "location/NStatusReport.h"
#include "printing/NFormatInches.h"
#include "store/NFindIgnoringCase.h"
#include "store/NIniRecordReader.h"
#include "store/NTextFile.h"

namespace {

// An integer in the text's whole span, within [low, high].
bool ReadInteger(std::string_view text, std::int64_t low, std::int64_t high, std::int64_t* value) {
  std::int64_t read = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
  if (error != std::errc() || end != text.data() + text.size() || read < low || read > high) return false;
  *value = read;
  return true;
}

// A D value, or an S value holding a decimal number.
bool ReadNumber(const NIniRecord& record, std::uint32_t* value) {
  if (record.kind == 'D') {
    *value = record.dword;
    return true;
  }
  std::int64_t read;
  if (record.kind != 'S' || !ReadInteger(record.text, 0, std::numeric_limits<std::uint32_t>::max(), &read)) {
    return false;
  }
  *value = static_cast<std::uint32_t>(read);
  return true;
}

// Inches as an S value; older Windows programs wrote the decimal separator
// of the user's locale, so a comma is read as a point.
bool ReadInches(const NIniRecord& record, double* value) {
  if (record.kind != 'S') return false;
  std::string text(record.text);
  for (char& c : text) {
    if (c == ',') c = '.';
  }
  double read = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(read)) return false;
  *value = read;
  return true;
}

}  // namespace

bool NPrinterCfgFile::Read(NPlatform& platform, std::u16string_view folder, NPrinterSettings* settings,
                           NReportMessageParams& params) {
  NUnicodeString path(folder);
  path += platform.PathSeparator();
  path += kFileName;
  std::unique_ptr<NFile> file;
  NStatus status = platform.OpenFile(path, {}, &file);
  if (status.IsNotFound()) {
    // Only a missing file pays for the search by case.
    const std::u16string_view names[] = {kFileName};
    std::vector<NFolderEntry> matches;
    if (!NListIgnoringCase(platform, folder, names, &matches) || matches.empty() ||
        matches.front().kind != NPathKind::kFile) {
      return true;
    }
    path = NUnicodeString(folder);
    path += platform.PathSeparator();
    path += matches.front().name;
    status = platform.OpenFile(path, {}, &file);
    if (status.IsNotFound()) return true;
  }
  std::string raw;
  if (status) status = NTextFile(*file).Read(&raw);
  if (!status) {
    NReportStatus(status, params);
    return false;
  }
  NTextFile::Encoding encoding;
  Parse(NTextFile::Decode(std::move(raw), &encoding), settings);
  return true;
}

void NPrinterCfgFile::Parse(std::string_view text, NPrinterSettings* settings) {
  NIniRecordReader reader(text);
  NIniRecord record;
  while (reader.Next(&record) == NIniRecordReader::Result::kRecord) {
    const std::string_view name = record.name;
    if (name == "Printer Name") {
      if (record.kind == 'S') settings->printerName = NUnicodeString::FromUtf8(record.text);
    } else if (name == "Orientation") {
      ReadNumber(record, &settings->orientation);
    } else if (name == "Paper Size") {
      ReadNumber(record, &settings->paperSize);
    } else if (name == "Paper Source") {
      ReadNumber(record, &settings->paperSource);
    } else if (name == "Left Margin") {
      ReadInches(record, &settings->margins.left);
    } else if (name == "Right Margin") {
      ReadInches(record, &settings->margins.right);
    } else if (name == "Top Margin") {
      ReadInches(record, &settings->margins.top);
    } else if (name == "Bottom Margin") {
      ReadInches(record, &settings->margins.bottom);
    } else if (name == "Printer Font" && record.kind == 'S') {
      ParseFont(record.text, &settings->fontPointSize, &settings->font);
    }
  }
}

std::string NPrinterCfgFile::Format(const NPrinterSettings& settings) {
  // Appended piece by piece: "literal" + temporary trips GCC 12's -Wrestrict
  // at -O3.
  std::string text;
  const auto line = [&text](std::string_view kind, std::string_view name, std::string_view value) {
    text.append(kind).append(":\"").append(name).append("\"=").append(value).append("\r\n");
  };
  const auto dword = [](std::uint32_t value) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(value));
    return std::string(digits);
  };
  line("S", "Printer Name", settings.printerName.ToUtf8());
  line("D", "Orientation", dword(settings.orientation));
  line("D", "Paper Size", dword(settings.paperSize));
  line("D", "Paper Source", dword(settings.paperSource));
  const NMarginData& margins = settings.margins;
  line("S", "Left Margin", NFormatInches(margins.left).ToUtf8());
  line("S", "Right Margin", NFormatInches(margins.right).ToUtf8());
  line("S", "Top Margin", NFormatInches(margins.top).ToUtf8());
  line("S", "Bottom Margin", NFormatInches(margins.bottom).ToUtf8());
  const NLogFont& font = settings.font;
  std::string value = std::to_string(settings.fontPointSize);
  for (const std::int64_t n : {std::int64_t{font.height}, std::int64_t{font.width}, std::int64_t{font.escapement},
                               std::int64_t{font.orientation}, std::int64_t{font.weight}, std::int64_t{font.italic},
                               std::int64_t{font.underline}, std::int64_t{font.strikeOut}, std::int64_t{font.charSet},
                               std::int64_t{font.outPrecision}, std::int64_t{font.clipPrecision},
                               std::int64_t{font.quality}, std::int64_t{font.pitchAndFamily}}) {
    value.append(",").append(std::to_string(n));
  }
  const std::u16string_view face(font.faceName.data(),
                                 std::find(font.faceName.begin(), font.faceName.end(), u'\0') - font.faceName.begin());
  value.append(",").append(NUnicodeString(face).ToUtf8());
  line("S", "Printer Font", value);
  return text;
}

bool NPrinterCfgFile::Write(NPlatform& platform, std::u16string_view folder, const NPrinterSettings& settings,
                            NReportMessageParams& params) {
  NUnicodeString path(folder);
  path += platform.PathSeparator();
  path += kFileName;
  NTextFile text;
  text.SetEncoding(NTextFile::Encoding::kUtf8);
  text.Write(Format(settings));
  const std::string bytes = text.Encoded();
  std::unique_ptr<NFile> file;
  NOpenOptions options;
  options.mode = NOpenMode::kCreateIfMissing;
  options.access = NFileAccess::kReadWrite;
  NStatus status = platform.OpenFile(path, options, &file);
  // Written first and cut after, so that a failure midway leaves the old
  // settings' length of bytes rather than an empty file.
  if (status) status = file->Write(0, bytes.data(), bytes.size());
  if (status) status = file->Truncate(bytes.size());
  if (status) status = file->Sync();
  if (!status) {
    NReportStatus(status, params);
    return false;
  }
  return true;
}

bool NPrinterCfgFile::ParseFont(std::string_view text, std::int32_t* pointSize, NLogFont* font) {
  // Fourteen numbers, then the face name, which may itself hold commas.
  constexpr std::size_t kNumbers = 14;
  std::array<std::int64_t, kNumbers> numbers{};
  constexpr std::int64_t kInt32Min = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kInt32Max = std::numeric_limits<std::int32_t>::max();
  for (std::size_t i = 0; i < kNumbers; ++i) {
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos) return false;
    // The size and the first five log-font fields are 32-bit; the rest bytes.
    const bool wide = i < 6;
    if (!ReadInteger(text.substr(0, comma), wide ? kInt32Min : 0, wide ? kInt32Max : 255, &numbers[i])) return false;
    text.remove_prefix(comma + 1);
  }
  const std::u16string face = NUnicodeString::FromUtf8(text);
  NLogFont read;
  if (face.empty() || face.size() >= read.faceName.size()) return false;
  read.height = static_cast<std::int32_t>(numbers[1]);
  read.width = static_cast<std::int32_t>(numbers[2]);
  read.escapement = static_cast<std::int32_t>(numbers[3]);
  read.orientation = static_cast<std::int32_t>(numbers[4]);
  read.weight = static_cast<std::int32_t>(numbers[5]);
  read.italic = static_cast<std::uint8_t>(numbers[6]);
  read.underline = static_cast<std::uint8_t>(numbers[7]);
  read.strikeOut = static_cast<std::uint8_t>(numbers[8]);
  read.charSet = static_cast<std::uint8_t>(numbers[9]);
  read.outPrecision = static_cast<std::uint8_t>(numbers[10]);
  read.clipPrecision = static_cast<std::uint8_t>(numbers[11]);
  read.quality = static_cast<std::uint8_t>(numbers[12]);
  read.pitchAndFamily = static_cast<std::uint8_t>(numbers[13]);
  std::copy(face.begin(), face.end(), read.faceName.begin());
  *pointSize = static_cast<std::int32_t>(numbers[0]);
  *font = read;
  return true;
}
