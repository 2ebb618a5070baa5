// The generated folder must be what the benchmarks claim to measure: files
// the store reads without a problem, of the promised sizes and shape, the
// same for the same seed.
#include "bench/NConfigFolderGenerator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;
constexpr int kSessions = 200;

class ScratchFolder {
 public:
  ScratchFolder() : m_path(fs::temp_directory_path() / ("cfgdeck-benchgen-" + std::to_string(std::random_device()()))) {}
  ~ScratchFolder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  NConfigFolderStats Generate(std::uint64_t seed) const {
    NConfigFolderSpec settings;
    settings.root = m_path.string();
    settings.sessions = kSessions;
    settings.seed = seed;
    return NGenerateConfigFolder(settings);
  }
  const fs::path& Path() const { return m_path; }

 private:
  fs::path m_path;
};

std::map<std::string, std::string> ReadTree(const fs::path& root) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    files[fs::relative(entry.path(), root).string()] = bytes.str();
  }
  return files;
}

TEST(NConfigFolderGeneratorTest, SameSeedGivesTheSameBytesAndAnotherSeedDoesNot) {
  const ScratchFolder first, second, third;
  first.Generate(7);
  second.Generate(7);
  third.Generate(8);
  const auto a = ReadTree(first.Path());
  EXPECT_EQ(a, ReadTree(second.Path()));
  EXPECT_NE(a, ReadTree(third.Path()));
}

TEST(NConfigFolderGeneratorTest, TheStoreReadsEveryFileAndSessionsHaveThePromisedSize) {
  const ScratchFolder folder;
  const NConfigFolderStats stats = folder.Generate(1);
  EXPECT_EQ(stats.sessions, kSessions);
  NIniFileStore store(NUnicodeString::FromUtf8(folder.Path().string()), NUnicodeString());
  std::uint64_t bytes = 0, files = 0, values = 0, sessions = 0;
  std::map<int, int> folderDataAtDepth;
  for (const auto& entry : fs::recursive_directory_iterator(folder.Path())) {
    if (!entry.is_regular_file()) continue;
    const fs::path relative = fs::relative(entry.path(), folder.Path());
    std::string keyPath = relative.string();
    keyPath.resize(keyPath.size() - 4);  // ".ini"
    NKeyPath path;
    ASSERT_TRUE(path.Append(NUnicodeString::FromUtf8(keyPath), true)) << keyPath;
    NReportMessageParams params;
    auto key = NIniFileKey::Open(store, path, true, params);
    ASSERT_TRUE(key) << keyPath << ": " << params.GetText().ToUtf8();
    const NIniLoadReport& report = key->LoadReport();
    EXPECT_EQ(report.invalidLine, 0u) << keyPath << ": " << report.problem;
    EXPECT_FALSE(report.unterminated || report.emptyFile) << keyPath;
    const std::size_t count = key->Values().ValueCount();
    ++files;
    bytes += entry.file_size();
    values += count;
    if (relative.filename() == "__FolderData__.ini") {
      ++folderDataAtDepth[static_cast<int>(std::distance(relative.begin(), relative.end())) - 2];
    } else if (relative.begin()->string() == "Sessions") {
      ++sessions;
      EXPECT_EQ(std::distance(relative.begin(), relative.end()), 5) << keyPath << " is not three folders deep";
      EXPECT_GE(count, 190u) << keyPath;
      EXPECT_LE(count, 250u) << keyPath;
      EXPECT_GE(entry.file_size(), 7u * 1024) << keyPath;
      EXPECT_LE(entry.file_size(), 9u * 1024) << keyPath;
      std::uint32_t isSession = 0;
      EXPECT_TRUE(key->GetDwordValue(u"Is Session", &isSession) && isSession == 1) << keyPath;
    }
  }
  EXPECT_EQ(sessions, static_cast<std::uint64_t>(kSessions));
  EXPECT_EQ(files, stats.filesWritten);
  EXPECT_EQ(bytes, stats.totalBytes);
  EXPECT_EQ(values, stats.dwordValues + stats.stringValues + stats.binaryValues + stats.multiStringValues);
  // A __FolderData__ key in "Sessions" and in each of its 8 + 64 + 512 folders.
  EXPECT_EQ(folderDataAtDepth, (std::map<int, int>{{0, 1}, {1, 8}, {2, 64}, {3, 512}}));
}

}  // namespace
