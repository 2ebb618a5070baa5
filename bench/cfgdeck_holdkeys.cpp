#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"
#include "store/NKeyPath.h"

// Loads every key of a folder and holds them all, then prints how much
// memory they took next to the bytes of their files.

namespace {

namespace fs = std::filesystem;

constexpr const char kUsage[] = "usage: cfgdeck-holdkeys FOLDER\n";

// A field of /proc/self/status in kB, or 0 when missing.
std::uint64_t StatusKilobytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.compare(0, field.size(), field) == 0 && line.size() > field.size() && line[field.size()] == ':') {
      return std::stoull(line.substr(field.size() + 1));
    }
  }
  return 0;
}

double Ratio(std::uint64_t kilobytes, std::uint64_t baseline, std::uint64_t bytes) {
  if (bytes == 0) return 0;
  const double grown = kilobytes > baseline ? static_cast<double>(kilobytes - baseline) * 1024.0 : 0.0;
  return grown / static_cast<double>(bytes);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const std::string root = fs::path(argv[1]).lexically_normal().string();
  // The list of files is made first, so that the baseline holds it and the
  // keys' growth is theirs alone.
  std::vector<std::string> relative;
  std::uint64_t fileBytes = 0;
  try {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
      if (!entry.is_regular_file() || entry.path().extension() != ".ini") continue;
      relative.push_back(fs::relative(entry.path(), root).string());
      fileBytes += entry.file_size();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "cfgdeck-holdkeys: %s\n", error.what());
    return 1;
  }
  std::sort(relative.begin(), relative.end());

  NIniFileStore store(NUnicodeString::FromUtf8(root), NUnicodeString(), NPlatform::Default());
  std::vector<std::unique_ptr<NIniFileKey>> keys;
  keys.reserve(relative.size());
  const std::uint64_t baselineRss = StatusKilobytes("VmRSS");
  const std::uint64_t baselineHwm = StatusKilobytes("VmHWM");
  for (const std::string& path : relative) {
    NKeyPath key;
    if (!key.Append(NUnicodeString::FromUtf8(path.substr(0, path.size() - 4)), true)) {
      std::fprintf(stderr, "cfgdeck-holdkeys: not a key path: %s\n", path.c_str());
      return 1;
    }
    NReportMessageParams params;
    std::unique_ptr<NIniFileKey> loaded = NIniFileKey::Open(store, std::move(key), true, params);
    if (!loaded) {
      std::fprintf(stderr, "cfgdeck-holdkeys: cannot load %s\n", path.c_str());
      return 1;
    }
    keys.push_back(std::move(loaded));
  }
  const std::uint64_t peak = StatusKilobytes("VmHWM");
  const std::uint64_t rss = StatusKilobytes("VmRSS");
  std::uint64_t values = 0;
  for (const std::unique_ptr<NIniFileKey>& key : keys) values += key->Values().ValueCount();

  std::printf("keys held:        %zu (%llu values)\n", keys.size(), static_cast<unsigned long long>(values));
  std::printf("file bytes:       %llu (%.1f MiB)\n", static_cast<unsigned long long>(fileBytes),
              static_cast<double>(fileBytes) / (1024.0 * 1024.0));
  std::printf("baseline VmRSS:   %llu kB (VmHWM %llu kB)\n", static_cast<unsigned long long>(baselineRss),
              static_cast<unsigned long long>(baselineHwm));
  std::printf("held VmRSS:       %llu kB\n", static_cast<unsigned long long>(rss));
  std::printf("peak VmHWM:       %llu kB\n", static_cast<unsigned long long>(peak));
  std::printf("(peak-base)/file: %.3f\n", Ratio(peak, baselineRss, fileBytes));
  std::printf("(rss-base)/file:  %.3f\n", Ratio(rss, baselineRss, fileBytes));
  return 0;
}
