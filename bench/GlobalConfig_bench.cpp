// GetGlobalConfig on a Global key that holds every value of the record,
// against the floor of opening, locking, reading and closing that one file.

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <thread>

#include "bench/NBareFile.h"
#include "bench/NPairedRatio.h"
#include "config/GlobalConfig.h"
#include "config/NConfigEntry.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyMap.h"
#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"
#include "store/NTextFile.h"

namespace {

namespace fs = std::filesystem;

std::unique_ptr<NIniFileStoreFactory> g_factory;
NProfileStoreFactory* Factory() { return g_factory.get(); }

// A folder whose global.ini holds every field, written once per run.
const fs::path& GlobalFolder() {
  static const fs::path folder = [] {
    const fs::path root = fs::temp_directory_path() / "cfgdeck-bench-global";
    fs::remove_all(root);
    fs::create_directories(root);
    g_factory = std::make_unique<NIniFileStoreFactory>(NUnicodeString::FromUtf8(root.string()), NUnicodeString());
    CfgdeckInitProfileFactory(&Factory);
    GlobalConfig* config = nullptr;
    GetGlobalConfig(config, 3);
    SaveGlobalConfig(true);
    FreeGlobalConfig();
    // A configuration folder changes only when a key is made or deleted:
    // let this one age past the file system's coarsest clock tick, as a
    // host's has, so that a missing key is looked for as it would be there.
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    return root;
  }();
  return folder;
}

template <NBareReader::Calls kCalls>
void GlobalFloor(benchmark::State& state) {
  const std::string path = (GlobalFolder() / "global.ini").string();
  NBareReader reader(kCalls);
  std::string_view raw;
  for (auto _ : state) {
    if (!reader.Read(path, &raw)) {
      state.SkipWithError("global.ini could not be read");
      return;
    }
    benchmark::DoNotOptimize(raw.data());
  }
  state.counters["bytes"] = static_cast<double>(raw.size());
}

void BM_GlobalFloorOpenLockReadClose(benchmark::State& state) { GlobalFloor<NBareReader::Calls::kBare>(state); }
// The same with the calls every load of a key makes on top.
void BM_GlobalFloorStoreCalls(benchmark::State& state) { GlobalFloor<NBareReader::Calls::kStore>(state); }

void BM_GetGlobalConfig(benchmark::State& state) {
  GlobalFolder();
  std::size_t fields = 0;
  for (auto _ : state) {
    GlobalConfig* config = nullptr;
    GetGlobalConfig(config, 3);
    fields = config->Fields().size();
    benchmark::DoNotOptimize(config);
    FreeGlobalConfig();
  }
  state.counters["fields"] = static_cast<double>(fields);
}

// GetGlobalConfig and the floor, a block of calls of each in every
// iteration: the ratio of the two as one figure.
void BM_GetGlobalConfigOverFloor(benchmark::State& state) {
  constexpr int kCalls = 200;
  const std::string path = (GlobalFolder() / "global.ini").string();
  NBareReader reader;
  NPairedRatio pairs;
  for (auto _ : state) {
    const bool ran = pairs.Run(
        [&] {
          std::string_view raw;
          for (int i = 0; i < kCalls; ++i) {
            if (!reader.Read(path, &raw)) return false;
            benchmark::DoNotOptimize(raw.data());
          }
          return true;
        },
        [&] {
          for (int i = 0; i < kCalls; ++i) {
            GlobalConfig* config = nullptr;
            GetGlobalConfig(config, 3);
            benchmark::DoNotOptimize(config);
            FreeGlobalConfig();
            if (!config) return false;
          }
          return true;
        });
    if (!ran) {
      state.SkipWithError("global.ini could not be read or the record made");
      return;
    }
  }
  pairs.SetCounters(state, kCalls);
}

// The record alone: its fields declared with their defaults, then freed.
void BM_GlobalConfigDefaults(benchmark::State& state) {
  for (auto _ : state) {
    auto* config = new GlobalConfig(3);
    benchmark::DoNotOptimize(config);
    config->Release();
  }
}

// The keys a load opens, without the record: the store and its root
// alone (0), with "Global" (1), with the missing "QuickSync" (2), with both
// (3).
void BM_GlobalKeysOpen(benchmark::State& state) {
  GlobalFolder();
  const auto which = state.range(0);
  for (auto _ : state) {
    std::unique_ptr<NProfileStore> store = g_factory->CreateStore();
    NReportMessageParams params;
    std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params);
    std::unique_ptr<NProfileKey> global = which & 1 ? root->OpenSubKey(u"global", params) : nullptr;
    std::unique_ptr<NProfileKey> quickSync = which & 2 ? root->OpenSubKey(u"QuickSync", params) : nullptr;
    benchmark::DoNotOptimize(quickSync.get());
  }
}

// The key's value table alone: the text of global.ini, already read and
// decoded, made into a table.
void BM_GlobalKeyTable(benchmark::State& state) {
  const NUnicodeString path = NUnicodeString::FromUtf8((GlobalFolder() / "global.ini").string());
  std::unique_ptr<NFile> file;
  std::string raw;
  NOpenOptions options;
  if (!NPlatform::Default().OpenFile(path, options, &file) || !NTextFile(*file).Read(&raw)) {
    state.SkipWithError("global.ini could not be read");
    return;
  }
  NTextFile::Encoding encoding;
  const std::string text = NTextFile::Decode(raw, &encoding);
  for (auto _ : state) {
    NIniFileKeyMap map;
    const NIniFileKeyMap::ReadResult read = map.ReadRecords(map.AdoptText(text));
    benchmark::DoNotOptimize(read.invalidLine);
  }
}

// The record's reads alone: every field read from a loaded "Global".
void BM_GlobalConfigRead(benchmark::State& state) {
  GlobalFolder();
  std::unique_ptr<NProfileStore> store = g_factory->CreateStore();
  NReportMessageParams params;
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params);
  std::unique_ptr<NProfileKey> global = root ? root->OpenSubKey(u"global", params) : nullptr;
  if (!global) {
    state.SkipWithError("global could not be opened");
    return;
  }
  auto* config = new GlobalConfig(3);
  for (auto _ : state) config->Load(*global, nullptr);
  config->Release();
}

BENCHMARK(BM_GlobalConfigDefaults)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GlobalConfigRead)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GlobalKeyTable)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GlobalKeysOpen)->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GlobalFloorOpenLockReadClose)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GlobalFloorStoreCalls)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GetGlobalConfig)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GetGlobalConfigOverFloor)->Iterations(101)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
