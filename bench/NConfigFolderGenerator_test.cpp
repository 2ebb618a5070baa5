#include "bench/NConfigFolderGenerator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBom = "\xEF\xBB\xBF";
constexpr int kSessions = 200;

struct NParsedValue {
  char kind = 0;
  std::uint32_t count = 0;  // DWORD value, binary byte count or multi-string line count
  std::string text;         // string text
  std::vector<std::string> lines;
};

struct NParsedFile {
  std::map<std::string, NParsedValue> values;
  std::vector<std::string> errors;
};

bool IsValidUtf8(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size()) {
    const auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = 0;
    std::uint32_t code = 0;
    if (lead < 0x80) {
      ++i;
      continue;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
      code = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      code = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      code = lead & 0x07;
    } else {
      return false;
    }
    if (i + length > text.size()) return false;
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(text[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      code = (code << 6) | (next & 0x3F);
    }
    const std::uint32_t minimum = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    i += length;
  }
  return true;
}

bool IsLowerHex(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

bool ParseCount(std::string_view text, std::uint32_t* value) {
  if (text.size() != 8 || !IsLowerHex(text)) return false;
  *value = 0;
  for (char c : text) *value = *value * 16 + static_cast<std::uint32_t>(c <= '9' ? c - '0' : c - 'a' + 10);
  return true;
}

std::string Lowered(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// A strict reader of the key file format, independent of the library's own.
NParsedFile ParseKeyFile(std::string_view bytes) {
  NParsedFile file;
  auto fail = [&file](std::size_t line, const std::string& message) {
    file.errors.push_back("line " + std::to_string(line + 1) + ": " + message);
  };
  if (!bytes.starts_with(kBom)) {
    file.errors.push_back("no byte-order mark");
    return file;
  }
  const std::string_view body = bytes.substr(kBom.size());
  if (!IsValidUtf8(body)) file.errors.push_back("not valid UTF-8");

  std::vector<std::string_view> lines;
  std::size_t start = 0;
  while (start < body.size()) {
    const std::size_t end = body.find('\n', start);
    if (end == std::string_view::npos) {
      fail(lines.size(), "no line break at the end of the file");
      return file;
    }
    if (end == start || body[end - 1] != '\r') fail(lines.size(), "LF without CR");
    const std::string_view line = body.substr(start, end - start - (end > start && body[end - 1] == '\r' ? 1 : 0));
    if (line.find('\r') != std::string_view::npos) fail(lines.size(), "stray CR");
    lines.push_back(line);
    start = end + 1;
  }

  std::set<std::string> seen;
  std::size_t i = 0;
  while (i < lines.size()) {
    const std::string_view line = lines[i];
    const std::size_t quote = line.size() > 3 ? line.find('"', 3) : std::string_view::npos;
    if (line.size() < 6 || std::string_view("DSBZ").find(line[0]) == std::string_view::npos || line[1] != ':' ||
        line[2] != '"' || quote == std::string_view::npos || quote == 3 || quote + 1 >= line.size() ||
        line[quote + 1] != '=') {
      fail(i, "not a record header: " + std::string(line));
      return file;
    }
    const std::string name(line.substr(3, quote - 3));
    const std::string_view rest = line.substr(quote + 2);
    if (!seen.insert(Lowered(name)).second) fail(i, "duplicate name " + name);
    NParsedValue value;
    value.kind = line[0];
    const std::size_t header = i++;
    if (value.kind == 'S') {
      value.text = rest;
    } else if (!ParseCount(rest, &value.count)) {
      fail(header, "bad hex field in " + std::string(line));
      return file;
    } else if (value.kind == 'B') {
      std::size_t remaining = 2 * static_cast<std::size_t>(value.count);
      while (remaining > 0) {
        const std::size_t expected = std::min<std::size_t>(remaining, 64);
        if (i >= lines.size() || lines[i].size() != expected || !IsLowerHex(lines[i])) {
          fail(i, "binary line of " + name + " is not " + std::to_string(expected) + " lowercase hex digits");
          return file;
        }
        remaining -= expected;
        ++i;
      }
    } else if (value.kind == 'Z') {
      for (std::uint32_t k = 0; k < value.count; ++k, ++i) {
        if (i >= lines.size() || !lines[i].starts_with(' ')) {
          fail(i, "multi-string line of " + name + " does not start with a space");
          return file;
        }
        value.lines.emplace_back(lines[i].substr(1));
      }
    }
    file.values.emplace(name, std::move(value));
  }
  return file;
}

std::string ReadAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Relative path with '/' separators -> file bytes.
std::map<std::string, std::string> ReadTree(const fs::path& root) {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file()) files[fs::relative(entry.path(), root).generic_string()] = ReadAll(entry.path());
  }
  return files;
}

bool IsSessionFile(const std::string& relative) {
  return relative.starts_with("Sessions/") && !relative.ends_with("/__FolderData__.ini");
}

fs::path UniqueFolder(const std::string& label) {
  std::random_device device;
  return fs::temp_directory_path() / ("cfgdeck-benchgen-" + label + "-" + std::to_string(device()));
}

class NScratchFolder {
 public:
  explicit NScratchFolder(const std::string& label) : m_path(UniqueFolder(label)) {}
  ~NScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  NScratchFolder(const NScratchFolder&) = delete;
  NScratchFolder& operator=(const NScratchFolder&) = delete;

  const fs::path& Path() const { return m_path; }

  NConfigFolderStats Generate(std::uint64_t seed, int sessions = kSessions, int fanout = 8, int depth = 3) const {
    NConfigFolderSpec settings;
    settings.root = m_path.string();
    settings.sessions = sessions;
    settings.seed = seed;
    settings.fanout = fanout;
    settings.depth = depth;
    return NGenerateConfigFolder(settings);
  }

 private:
  fs::path m_path;
};

// One default tree, read once, for the tests that only inspect it.
class NConfigFolderGeneratorTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_folder = new NScratchFolder("shared");
    s_stats = s_folder->Generate(1);
    s_files = new std::map<std::string, std::string>(ReadTree(s_folder->Path()));
  }
  static void TearDownTestSuite() {
    delete s_files;
    delete s_folder;
    s_files = nullptr;
    s_folder = nullptr;
  }

  static NScratchFolder* s_folder;
  static NConfigFolderStats s_stats;
  static std::map<std::string, std::string>* s_files;
};

NScratchFolder* NConfigFolderGeneratorTest::s_folder = nullptr;
NConfigFolderStats NConfigFolderGeneratorTest::s_stats;
std::map<std::string, std::string>* NConfigFolderGeneratorTest::s_files = nullptr;

TEST(NConfigFolderGeneratorDeterminismTest, SameSeedGivesIdenticalBytesAndAnotherSeedDoesNot) {
  const NScratchFolder first("first");
  const NScratchFolder second("second");
  const NScratchFolder other("other");
  const NConfigFolderStats firstStats = first.Generate(42);
  const NConfigFolderStats secondStats = second.Generate(42);
  other.Generate(43);

  const std::map<std::string, std::string> firstFiles = ReadTree(first.Path());
  const std::map<std::string, std::string> secondFiles = ReadTree(second.Path());
  const std::map<std::string, std::string> otherFiles = ReadTree(other.Path());
  ASSERT_EQ(firstFiles.size(), secondFiles.size());
  for (const auto& [path, bytes] : firstFiles) {
    const auto match = secondFiles.find(path);
    ASSERT_NE(match, secondFiles.end()) << path << " is missing from the second run";
    EXPECT_TRUE(match->second == bytes) << path << " differs between runs with the same seed";
  }
  EXPECT_EQ(firstStats.totalBytes, secondStats.totalBytes);
  EXPECT_EQ(firstStats.dwordValues, secondStats.dwordValues);

  EXPECT_NE(firstFiles.at("global.ini"), otherFiles.at("global.ini"));
  std::size_t differing = 0;
  for (const auto& [path, bytes] : firstFiles) {
    const auto match = otherFiles.find(path);
    differing += match == otherFiles.end() || match->second != bytes;
  }
  // Session names, and so most paths, depend on the seed.
  EXPECT_GT(differing, static_cast<std::size_t>(kSessions) / 2);
}

TEST_F(NConfigFolderGeneratorTest, EveryFileFollowsTheRecordGrammarAndTheStatsAddUp) {
  std::uint64_t bytes = 0;
  std::uint64_t counts[4] = {};
  for (const auto& [path, content] : *s_files) {
    const NParsedFile parsed = ParseKeyFile(content);
    EXPECT_TRUE(parsed.errors.empty()) << path << ": " << parsed.errors.front();
    EXPECT_FALSE(parsed.values.empty()) << path;
    bytes += content.size();
    for (const auto& [name, value] : parsed.values) ++counts[std::string_view("DSBZ").find(value.kind)];
  }
  EXPECT_EQ(s_stats.filesWritten, s_files->size());
  EXPECT_EQ(s_stats.totalBytes, bytes);
  EXPECT_EQ(s_stats.dwordValues, counts[0]);
  EXPECT_EQ(s_stats.stringValues, counts[1]);
  EXPECT_EQ(s_stats.binaryValues, counts[2]);
  EXPECT_EQ(s_stats.multiStringValues, counts[3]);
}

TEST_F(NConfigFolderGeneratorTest, SessionFilesHoldTheUsualValuesCountsAndSizes) {
  int sessions = 0;
  int international = 0;
  std::map<std::string, int> nameUse;
  for (const auto& [path, content] : *s_files) {
    if (!IsSessionFile(path)) continue;
    ++sessions;
    const NParsedFile parsed = ParseKeyFile(content);
    ASSERT_TRUE(parsed.errors.empty()) << path << ": " << parsed.errors.front();
    EXPECT_GE(parsed.values.size(), 190u) << path;
    EXPECT_LE(parsed.values.size(), 250u) << path;
    EXPECT_GE(content.size(), 7u * 1024) << path;
    EXPECT_LE(content.size(), 9u * 1024) << path;

    std::set<char> kinds;
    for (const auto& [name, value] : parsed.values) {
      kinds.insert(value.kind);
      ++nameUse[name];
    }
    EXPECT_EQ(kinds.size(), 4u) << path;
    ASSERT_TRUE(parsed.values.contains("Is Session")) << path;
    EXPECT_EQ(parsed.values.at("Is Session").kind, 'D');
    EXPECT_EQ(parsed.values.at("Is Session").count, 1u);
    ASSERT_TRUE(parsed.values.contains("Window Placement")) << path;
    EXPECT_EQ(parsed.values.at("Window Placement").kind, 'B');
    EXPECT_EQ(parsed.values.at("Window Placement").count, 44u);
    ASSERT_TRUE(parsed.values.contains("Normal Font v2")) << path;
    EXPECT_EQ(parsed.values.at("Normal Font v2").count, 92u);
    ASSERT_TRUE(parsed.values.contains("Keymap")) << path;
    EXPECT_EQ(parsed.values.at("Keymap").kind, 'Z');
    EXPECT_LE(parsed.values.at("Keymap").count, 50u);
    for (const char* name : {"Hostname", "Username", "Emulation"}) {
      ASSERT_TRUE(parsed.values.contains(name)) << path << " lacks " << name;
      EXPECT_EQ(parsed.values.at(name).kind, 'S');
    }
    international += std::any_of(content.begin() + 3, content.end(), [](char c) { return (c & 0x80) != 0; });
  }
  EXPECT_EQ(sessions, kSessions);
  EXPECT_EQ(s_stats.sessions, kSessions);
  // Enough non-ASCII text to exercise decoding, yet mostly plain files.
  EXPECT_GT(international, kSessions / 20);
  EXPECT_LT(international, kSessions / 2);
  // The vocabulary is shared: few names are unique to one session.
  const auto rare = std::count_if(nameUse.begin(), nameUse.end(), [](const auto& use) { return use.second < 10; });
  EXPECT_GT(nameUse.size(), 190u);
  EXPECT_EQ(rare, 0);
}

TEST_F(NConfigFolderGeneratorTest, GlobalSettingsHoldTheExpectedValues) {
  const NParsedFile parsed = ParseKeyFile(s_files->at("global.ini"));
  ASSERT_TRUE(parsed.errors.empty()) << parsed.errors.front();
  EXPECT_GE(parsed.values.size(), 270u);
  EXPECT_LE(parsed.values.size(), 330u);
  std::map<char, int> kinds;
  for (const auto& [name, value] : parsed.values) ++kinds[value.kind];
  EXPECT_GT(kinds['D'], 100);
  EXPECT_GT(kinds['S'], 20);
  EXPECT_GT(kinds['B'], 10);
  EXPECT_GT(kinds['Z'], 3);

  const auto expect = [&parsed](const char* name, char kind) -> const NParsedValue* {
    const auto found = parsed.values.find(name);
    if (found == parsed.values.end() || found->second.kind != kind) {
      ADD_FAILURE() << name << " is missing or not of kind " << kind;
      return nullptr;
    }
    return &found->second;
  };
  if (const NParsedValue* value = expect("Window Placement", 'B')) {
    EXPECT_EQ(value->count, 44u);
  }
  if (const NParsedValue* value = expect("Normal Font v2", 'B')) {
    EXPECT_EQ(value->count, 92u);
  }
  if (const NParsedValue* value = expect("Language", 'S')) {
    EXPECT_FALSE(value->text.empty());
  }
  expect("Show Toolbar", 'D');
  // Recent sessions name sessions that exist.
  if (const NParsedValue* value = expect("Recent Sessions", 'Z')) {
    EXPECT_FALSE(value->lines.empty());
    for (const std::string& session : value->lines) EXPECT_TRUE(s_files->contains(session + ".ini")) << session;
  }
}

TEST_F(NConfigFolderGeneratorTest, EveryFolderHasFolderDataAndSessionsLiveInTheDeepestFolders) {
  const fs::path sessions = s_folder->Path() / "Sessions";
  std::map<std::ptrdiff_t, int> foldersAtDepth;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(sessions)) {
    if (!entry.is_directory()) continue;
    const fs::path relative = fs::relative(entry.path(), sessions);
    ++foldersAtDepth[std::distance(relative.begin(), relative.end())];
    EXPECT_TRUE(fs::is_regular_file(entry.path() / "__FolderData__.ini")) << entry.path();
  }
  EXPECT_TRUE(fs::is_regular_file(sessions / "__FolderData__.ini"));
  EXPECT_EQ(foldersAtDepth, (std::map<std::ptrdiff_t, int>{{1, 8}, {2, 64}, {3, 512}}));
  EXPECT_EQ(s_stats.folders, 1u + 8u + 64u + 512u);

  std::map<std::string, int> perLeaf;
  for (const auto& [path, content] : *s_files) {
    const auto parts = std::count(path.begin(), path.end(), '/');
    if (IsSessionFile(path)) {
      EXPECT_EQ(parts, 4) << path;  // Sessions/region/site/team/name.ini
      ++perLeaf[path.substr(0, path.rfind('/'))];
    } else if (path != "global.ini") {
      EXPECT_TRUE(path.ends_with("__FolderData__.ini")) << path;
    }
  }
  EXPECT_EQ(perLeaf.size(), static_cast<std::size_t>(kSessions));  // 200 sessions over 512 leaves: one each
}

TEST(NConfigFolderGeneratorShapeTest, SessionsAreSpreadEvenlyOverTheLeaves) {
  const NScratchFolder folder("shape");
  const NConfigFolderStats stats = folder.Generate(5, 23, 3, 2);
  EXPECT_EQ(stats.sessions, 23);
  EXPECT_EQ(stats.folders, 1u + 3u + 9u);
  std::map<std::string, int> perLeaf;
  for (const auto& [path, content] : ReadTree(folder.Path())) {
    if (IsSessionFile(path)) {
      EXPECT_EQ(std::count(path.begin(), path.end(), '/'), 3) << path;
      ++perLeaf[path.substr(0, path.rfind('/'))];
    }
  }
  ASSERT_EQ(perLeaf.size(), 9u);
  for (const auto& [leaf, count] : perLeaf) {
    EXPECT_GE(count, 2) << leaf;
    EXPECT_LE(count, 3) << leaf;
  }
}

TEST(NConfigFolderGeneratorShapeTest, RejectsSettingsItCannotHonour) {
  const NScratchFolder folder("rejected");
  EXPECT_THROW(folder.Generate(1, -1), std::invalid_argument);
  EXPECT_THROW(folder.Generate(1, 10, 0), std::invalid_argument);
  EXPECT_THROW(folder.Generate(1, 10, 8, -1), std::invalid_argument);
  EXPECT_FALSE(fs::exists(folder.Path()));
}

}  // namespace
