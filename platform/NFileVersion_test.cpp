// The fixed version of an executable: the PE parser every system has, and
// NReadFileVersion on files on disk.
#include "platform/NFileVersion.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "platform/NPeVersionReader.h"
#include "platform/testing/NPeBuilder.h"
#include "platform/testing/NTestFolder.h"

namespace {

// What a failed read must leave alone.
constexpr NFileVersion kUntouched{0xDEADBEEF, 0xAAAA, 0xBBBB, 0xCCCC, 0xDDDD};
constexpr std::uint32_t kApplication = NFileVersion::kFileTypeApplication;

bool Same(const NFileVersion& a, const NFileVersion& b) {
  return a.fileType == b.fileType && a.major == b.major && a.minor == b.minor && a.build == b.build &&
         a.revision == b.revision;
}

std::string Describe(const NFileVersion& v) {
  return "type " + std::to_string(v.fileType) + ", " + std::to_string(v.major) + "." + std::to_string(v.minor) + "." +
         std::to_string(v.build) + "." + std::to_string(v.revision);
}

void Put16(std::string* bytes, std::size_t offset, std::uint32_t value) {
  ASSERT_LE(offset + 2, bytes->size());
  (*bytes)[offset] = static_cast<char>(value & 0xFF);
  (*bytes)[offset + 1] = static_cast<char>(value >> 8 & 0xFF);
}

void Put32(std::string* bytes, std::size_t offset, std::uint32_t value) {
  Put16(bytes, offset, value & 0xFFFF);
  Put16(bytes, offset + 2, value >> 16);
}

std::uint32_t Get32(const std::string& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(bytes.at(offset + i));
  return value;
}

TEST(NPeVersionReader, ReadsTheFixedVersionOfEveryKindOfImage) {
  const struct {
    const char* name;
    std::string image;
    NFileVersion expected;
  } rows[] = {
      {"application", NPeBuilder().FileVersion(5, 2, 3, 4).Build(), {kApplication, 5, 2, 3, 4}},
      // Extreme words catch swapped halves and sign extension.
      {"extreme words", NPeBuilder().FileVersion(4, 0xFFFF, 0x0102, 0x8000).Build(), {1, 4, 0xFFFF, 0x0102, 0x8000}},
      {"PE32", NPeBuilder().Pe32Plus(false).FileVersion(7, 1, 0, 9).Build(), {1, 7, 1, 0, 9}},
      {"PE32+", NPeBuilder().Pe32Plus(true).FileVersion(7, 1, 0, 9).Build(), {1, 7, 1, 0, 9}},
      {"DLL",
       NPeBuilder().FileType(NFileVersion::kFileTypeDll).FileVersion(6, 0, 0, 0).Build(),
       {NFileVersion::kFileTypeDll, 6, 0, 0, 0}},
      {"bytes after the image",
       NPeBuilder().FileVersion(5, 0, 0, 1).Build() + std::string(4096, '\xFF'),
       {1, 5, 0, 0, 1}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    NFileVersion version = kUntouched;
    ASSERT_TRUE(NParsePeFileVersion(row.image, &version));
    EXPECT_TRUE(Same(version, row.expected)) << Describe(version);
  }
}

TEST(NPeVersionReader, TruncatedFilesFailOrReadCorrectly) {
  for (const bool plus : {false, true}) {
    SCOPED_TRACE(plus ? "PE32+" : "PE32");
    NPeLayout layout;
    const std::string image = NPeBuilder().Pe32Plus(plus).FileVersion(5, 1, 2, 3).Build(&layout);
    std::size_t successes = 0;
    for (std::size_t cut = 0; cut <= image.size(); ++cut) {
      NFileVersion version = kUntouched;
      const bool found = NParsePeFileVersion(std::string_view(image).substr(0, cut), &version);
      successes += found;
      EXPECT_TRUE(Same(version, found ? NFileVersion{1, 5, 1, 2, 3} : kUntouched))
          << "cut at " << cut << ": " << Describe(version);
      // Without all of the fixed part there is nothing to read.
      if (cut < layout.fixedFileInfo + 52) {
        EXPECT_FALSE(found) << "cut at " << cut;
      }
    }
    EXPECT_GE(successes, 1u);
  }
}

// Each leaves an image that is no PE file, holds no version, or is otherwise
// valid but one that a careless reader would read past its end, loop on, or
// misread.
TEST(NPeVersionReader, DamagedImagesGiveNoVersion) {
  using Damage = std::function<void(std::string*, const NPeLayout&)>;
  const struct {
    const char* what;
    Damage apply;
  } damages[] = {
      {"empty", [](std::string* b, const NPeLayout&) { b->clear(); }},
      {"only MZ", [](std::string* b, const NPeLayout&) { *b = "MZ"; }},
      {"zeros", [](std::string* b, const NPeLayout&) { *b = std::string(4096, '\0'); }},
      {"a script", [](std::string* b, const NPeLayout&) { *b = "#!/bin/sh\necho hello\n"; }},
      {"no resource section", [](std::string* b, const NPeLayout&) { *b = NPeBuilder().WithResources(false).Build(); }},
      {"resources without a version",
       [](std::string* b, const NPeLayout&) {
         NPeLayout layout;
         *b = NPeBuilder().WithVersion(false).Build(&layout);
         EXPECT_NE(layout.resourceSection, 0u);
       }},
      {"no MZ", [](std::string* b, const NPeLayout&) { (*b)[1] = 'X'; }},
      {"no PE signature", [](std::string* b, const NPeLayout& l) { (*b)[l.peHeader + 1] = 'X'; }},
      {"e_lfanew far beyond the end", [](std::string* b, const NPeLayout&) { Put32(b, 0x3C, 0xFFFFFFF0); }},
      {"e_lfanew two bytes before the end",
       [](std::string* b, const NPeLayout&) { Put32(b, 0x3C, static_cast<std::uint32_t>(b->size() - 2)); }},
      {"unknown optional header magic", [](std::string* b, const NPeLayout& l) { Put16(b, l.optionalHeader, 0x10C); }},
      {"optional header larger than the file",
       [](std::string* b, const NPeLayout& l) { Put16(b, l.peHeader + 4 + 16, 0xFFFF); }},
      {"optional header too short for the resource directory",
       [](std::string* b, const NPeLayout& l) { Put16(b, l.peHeader + 4 + 16, 112 + 16); }},
      {"only two data directories", [](std::string* b, const NPeLayout& l) { Put32(b, l.optionalHeader + 108, 2); }},
      {"no sections", [](std::string* b, const NPeLayout& l) { Put16(b, l.peHeader + 4 + 2, 0); }},
      {"section table beyond the end",
       [](std::string* b, const NPeLayout& l) { Put16(b, l.peHeader + 4 + 2, 0xFFFF); }},
      {"resource RVA in no section",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.resourceDirectory, 0x90000); }},
      {"resource size wrapping around",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.resourceDirectory + 4, 0xFFFFFFFF); }},
      {"resource raw data beyond the end",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.sectionTable + 40 + 20, 0xFFFFFE00); }},
      {"resource raw size zero", [](std::string* b, const NPeLayout& l) { Put32(b, l.sectionTable + 40 + 16, 0); }},
      {"resource virtual size shorter than the tree",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.sectionTable + 40 + 8, 0x20); }},
      {"root claims 65535 ids", [](std::string* b, const NPeLayout& l) { Put16(b, l.resourceSection + 14, 0xFFFF); }},
      {"version type points at data, not a directory",
       [](std::string* b, const NPeLayout& l) {
         Put32(b, l.versionTypeEntry + 4, Get32(*b, l.versionTypeEntry + 4) & 0x7FFFFFFF);
       }},
      {"version type points outside the tree",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.versionTypeEntry + 4, 0xFFFFFFF0); }},
      {"version type points back at the root",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.versionTypeEntry + 4, 0x80000000); }},
      {"version data RVA beyond the image",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.versionDataEntry, 0xFFFFFFF0); }},
      {"version data size wrapping around",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.versionDataEntry + 4, 0xFFFFFFFF); }},
      {"version data too short for the fixed part",
       [](std::string* b, const NPeLayout& l) { Put32(b, l.versionDataEntry + 4, 60); }},
      {"wLength beyond the data", [](std::string* b, const NPeLayout& l) { Put16(b, l.versionInfo, 0xFFFF); }},
      {"wLength cutting the fixed part", [](std::string* b, const NPeLayout& l) { Put16(b, l.versionInfo, 80); }},
      {"no fixed part (wValueLength 0)", [](std::string* b, const NPeLayout& l) { Put16(b, l.versionInfo + 2, 0); }},
      {"wrong key", [](std::string* b, const NPeLayout& l) { Put16(b, l.versionInfo + 6 + 2 * 14, u'X'); }},
      {"key without its NUL", [](std::string* b, const NPeLayout& l) { Put16(b, l.versionInfo + 6 + 2 * 15, u'X'); }},
      {"bad fixed-part signature", [](std::string* b, const NPeLayout& l) { Put32(b, l.fixedFileInfo, 0xFEEF04BC); }},
  };
  NPeLayout layout;
  const std::string image = NPeBuilder().FileVersion(5, 0, 0, 0).Build(&layout);
  NFileVersion version;
  ASSERT_TRUE(NParsePeFileVersion(image, &version));
  for (const auto& damage : damages) {
    SCOPED_TRACE(damage.what);
    std::string damaged = image;
    damage.apply(&damaged, layout);
    ASSERT_NE(damaged, image);
    version = kUntouched;
    EXPECT_FALSE(NParsePeFileVersion(damaged, &version));
    EXPECT_TRUE(Same(version, kUntouched)) << Describe(version);
  }
}

TEST(NPeVersionReader, RandomlyDamagedImagesNeverChangeTheResultOnFailure) {
  NPeLayout layout;
  const std::string image = NPeBuilder().FileVersion(5, 3, 0, 0).Build(&layout);
  std::uint64_t state = 0x9E3779B97F4A7C15;
  const auto next = [&state] {
    state = state * 6364136223846793005 + 1442695040888963407;
    return static_cast<std::uint32_t>(state >> 33);
  };
  int failures = 0;
  for (int round = 0; round < 5000; ++round) {
    std::string damaged = image;
    for (std::uint32_t n = next() % 4 + 1; n > 0; --n) {
      // Only the headers and the resource tree matter; the code is padding.
      std::size_t at = next() % (layout.resourceSection + 0x200);
      if (at >= 0x200 && at < layout.resourceSection) at -= 0x200;
      damaged[at] = static_cast<char>(next());
    }
    NFileVersion version = kUntouched;
    if (!NParsePeFileVersion(damaged, &version)) {
      ++failures;
      ASSERT_TRUE(Same(version, kUntouched)) << "round " << round << ": " << Describe(version);
    }
  }
  // Most changes land in fields the reader checks.
  EXPECT_GT(failures, 100);
}

using NFileVersionTest = NTestFolderTest;

TEST_F(NFileVersionTest, ReadsTheVersionOfAProgramOnDiskAndOfNothingElse) {
  WriteText("Quenn.exe", NPeBuilder().FileVersion(5, 4, 3, 2).Build());
  WriteText("Skeldon.exe", "not a program");
  WriteText("Parrow.exe", NPeBuilder().WithVersion(false).Build());
  WriteText("empty.exe", "");
  NFileVersion version = kUntouched;
  ASSERT_TRUE(NReadFileVersion(Path("Quenn.exe"), &version));
  EXPECT_TRUE(Same(version, {kApplication, 5, 4, 3, 2})) << Describe(version);
  for (const std::u16string& path : {Path("missing.exe"), Path("no such folder/Quenn.exe"), Path("Skeldon.exe"),
                                     Path("Parrow.exe"), Path("empty.exe"), m_folder.u16string(), std::u16string()}) {
    SCOPED_TRACE(NUtf16ToUtf8(path));
    version = kUntouched;
    EXPECT_FALSE(NReadFileVersion(path, &version));
    EXPECT_TRUE(Same(version, kUntouched)) << Describe(version);
  }
}

}  // namespace
