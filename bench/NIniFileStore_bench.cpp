#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <memory>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "base/NStringArray.h"
#include "base/NUnicodeString.h"
#include "bench/NBareFile.h"
#include "bench/NConfigFolderGenerator.h"
#include "bench/NPairedRatio.h"
#include "config/NSessionTree.h"
#include "config/SessionConfig.h"
#include "location/NReportMessageParams.h"
#include "platform/NFile.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyMap.h"
#include "store/NIniFileStore.h"
#include "store/NKeyPath.h"
#include "store/NProfileValueType.h"
#include "store/NTextFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kSeed = 1;
constexpr char kMarkerName[] = ".cfgdeck-bench-sessions";
constexpr char kFolderDataFile[] = "__FolderData__.ini";
// The bytes every reader and writer of a key file locks, as the store does.
constexpr std::uint64_t kLockOffset = 0;
constexpr std::uint64_t kLockLength = 4;
// Saves rewrite this many session keys taken from the 10,000-session folder.
constexpr int kSaveKeys = 300;
constexpr int kSaveSourceSessions = 10000;
// A DWORD every generated session holds; a save flips it between two values of one width.
constexpr char16_t kChangedValue[] = u"Is Session";

std::string BenchDir() {
  const char* dir = std::getenv("CFGDECK_BENCH_DIR");
  return dir && *dir ? dir : "/tmp/cfgdeck-bench";
}

std::string ReadWhole(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The session keys of one folder in one fixed order, with the file of each
// built as the store builds it, so that every walk visits the same files.
// A value a host reads: a record declares its fields by name and kind.
struct NField {
  NUnicodeString name;
  NProfileValueType kind;
};

struct NSessionFolder {
  std::string root;
  std::vector<NKeyPath> keys;
  std::vector<NUnicodeString> files;
  std::vector<std::string> systemFiles;  // the same files, for the floor's system calls
  std::uint64_t bytes = 0;
  // Every name and kind the sessions use: the session record's fields.
  std::vector<NField> fields;
};

NSessionFolder CollectSessions(const fs::path& root) {
  NSessionFolder folder;
  folder.root = root.string();
  std::vector<std::string> relative;
  const std::string prefix = folder.root + "/";
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root / "Sessions")) {
    if (!entry.is_regular_file() || entry.path().extension() != ".ini") continue;
    if (entry.path().filename() == kFolderDataFile) continue;
    relative.push_back(entry.path().string().substr(prefix.size()));
    folder.bytes += entry.file_size();
  }
  std::sort(relative.begin(), relative.end());
  NPlatform& platform = NPlatform::Default();
  const NUnicodeString root16 = NUnicodeString::FromUtf8(folder.root);
  for (const std::string& path : relative) {
    NKeyPath key;
    if (!key.Append(NUnicodeString::FromUtf8(path.substr(0, path.size() - 4)), true)) continue;
    NUnicodeString file = key.Under(root16, platform.PathSeparator());
    file += u".ini";
    folder.systemFiles.push_back(file.ToUtf8());
    folder.files.push_back(std::move(file));
    folder.keys.push_back(std::move(key));
  }
  return folder;
}

// Opens, locks shared, reads whole and closes one key file, as a load does
// before it parses anything.
bool ReadLocked(NPlatform& platform, const NUnicodeString& path, std::string* raw) {
  NOpenOptions options;
  options.noFollow = true;
  std::unique_ptr<NFile> file;
  if (!platform.OpenFile(path, options, &file)) return false;
  if (!file->Lock(kLockOffset, kLockLength, NLockKind::kShared, NIniFileStoreOptions().lockWarning)) return false;
  const bool read = static_cast<bool>(NTextFile(*file).Read(raw));
  return file->Unlock(kLockOffset, kLockLength) && read;
}

// The fields of the session record, gathered from a few hundred sessions
// (they share one vocabulary and one order, each holding a part of it), in
// the order the files hold them: a record declares its fields in the order
// it saves them. A name first seen in a file goes right after the name
// before it there, not at the end, so that the files' common order holds.
std::vector<NField> CollectFields(const NSessionFolder& folder) {
  NIniFileStore store(NUnicodeString::FromUtf8(folder.root), NUnicodeString(), NPlatform::Default());
  std::vector<NField> fields;
  std::set<std::pair<NUnicodeString, std::uint32_t>> seen;
  for (std::size_t i = 0; i < folder.keys.size() && i < 500; ++i) {
    NReportMessageParams params;
    auto key = NIniFileKey::Open(store, folder.keys[i], true, params);
    if (!key) continue;
    std::size_t after = 0;  // where the next new name goes
    key->Values().ForEach([&](const NIniFileKeyMap::Element& element) {
      NField field{NUnicodeString::FromUtf8(element.Name()), element.Data()->TypeTag()};
      if (seen.insert({field.name, static_cast<std::uint32_t>(field.kind)}).second) {
        fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(after), std::move(field));
        ++after;
        return;
      }
      for (std::size_t at = 0; at < fields.size(); ++at) {
        if (fields[at].name == field.name && fields[at].kind == field.kind) after = at + 1;
      }
    });
  }
  return fields;
}

// Whether the folder at `root` must be written: its marker does not hold
// `expected`. A folder this benchmark made (it has a marker) that holds
// something else is removed whole first; no other folder is.
bool MustWrite(const fs::path& root, const std::string& expected) {
  const fs::path marker = root / kMarkerName;
  if (ReadWhole(marker) == expected) return false;
  std::error_code ignored;
  if (fs::exists(marker, ignored)) fs::remove_all(root, ignored);
  return true;
}

// The sessions of the folder at `root`, each file read once through so that
// every walk finds them cached.
std::unique_ptr<NSessionFolder> CollectCached(const fs::path& root) {
  auto folder = std::make_unique<NSessionFolder>(CollectSessions(root));
  std::string raw;
  for (const NUnicodeString& file : folder->files) ReadLocked(NPlatform::Default(), file, &raw);
  return folder;
}

// Generated on first use and reused by later runs while its marker names the
// same count and seed; read once through so that every walk finds it cached.
const NSessionFolder& Folder(int sessions) {
  static std::map<int, std::unique_ptr<NSessionFolder>> folders;
  std::unique_ptr<NSessionFolder>& slot = folders[sessions];
  if (slot) return *slot;
  const fs::path root = fs::path(BenchDir()) / ("sessions-" + std::to_string(sessions));
  const std::string expected = std::to_string(sessions) + " " + std::to_string(kSeed) + "\n";
  if (MustWrite(root, expected)) {
    std::fprintf(stderr, "generating %d sessions in %s\n", sessions, root.c_str());
    NConfigFolderSpec settings;
    settings.root = root.string();
    settings.sessions = sessions;
    settings.seed = kSeed;
    NGenerateConfigFolder(settings);
    std::ofstream(root / kMarkerName) << expected;
  }
  slot = CollectCached(root);
  slot->fields = CollectFields(*slot);
  return *slot;
}

// The same tree with each session as the application writes it: loaded
// from the generated folder into a SessionConfig and saved with every field
// (names, kinds and order the record's own), beside the same folder data.
const NSessionFolder& RecordFolder(int sessions) {
  static std::map<int, std::unique_ptr<NSessionFolder>> folders;
  std::unique_ptr<NSessionFolder>& slot = folders[sessions];
  if (slot) return *slot;
  const NSessionFolder& source = Folder(sessions);
  const fs::path root = fs::path(BenchDir()) / ("records-" + std::to_string(sessions));
  const std::string expected = std::to_string(sessions) + " " + std::to_string(kSeed) + " records\n";
  if (MustWrite(root, expected)) {
    std::fprintf(stderr, "writing %d session records in %s\n", sessions, root.c_str());
    fs::create_directories(root);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(source.root) / "Sessions")) {
      if (entry.path().filename() != kFolderDataFile) continue;
      const fs::path copy = root / fs::relative(entry.path(), source.root);
      fs::create_directories(copy.parent_path());
      fs::copy_file(entry.path(), copy, fs::copy_options::overwrite_existing);
    }
    NIniFileStore from(NUnicodeString::FromUtf8(source.root), NUnicodeString(), NPlatform::Default());
    NIniFileStore to(NUnicodeString::FromUtf8(root.string()), NUnicodeString(), NPlatform::Default());
    for (const NKeyPath& path : source.keys) {
      NReportMessageParams params;
      SessionConfig record;
      std::unique_ptr<NIniFileKey> in = NIniFileKey::Open(from, path, true, params);
      std::unique_ptr<NIniFileKey> out = NIniFileKey::Open(to, path, false, params);
      if (!in || !out || !record.Load(*in, params) || !record.Save(*out, true, params) || !out->Flush(params)) {
        std::fprintf(stderr, "could not write the record %s\n", NUnicodeString(path.Join(u'\\')).ToUtf8().c_str());
        std::exit(1);
      }
    }
    std::ofstream(root / kMarkerName) << expected;
  }
  slot = CollectCached(root);
  return *slot;
}

// Times the walks' wall time itself, so that the per-file figure prints as a
// plain number of microseconds.
class NWalkClock {
 public:
  void Start() { m_start = std::chrono::steady_clock::now(); }
  void Stop() { m_total += std::chrono::steady_clock::now() - m_start; }

  void SetCounters(benchmark::State& state, std::size_t files, std::uint64_t bytes) const {
    const double count = static_cast<double>(files);
    const double walks = static_cast<double>(state.iterations());
    if (files == 0 || walks == 0) return;
    state.counters["us_per_file"] = std::chrono::duration<double, std::micro>(m_total).count() / (walks * count);
    state.counters["files"] = count;
    state.counters["bytes_per_file"] = static_cast<double>(bytes) / count;
  }

 private:
  std::chrono::steady_clock::time_point m_start;
  std::chrono::steady_clock::duration m_total{};
};

// Opens, locks, reads and closes every session file; false when one fails.
bool FloorWalk(const NSessionFolder& folder, NBareReader& reader) {
  std::uint64_t bytes = 0;
  for (const std::string& file : folder.systemFiles) {
    std::string_view raw;
    if (!reader.Read(file, &raw)) return false;
    bytes += raw.size();
  }
  benchmark::DoNotOptimize(bytes);
  return true;
}

// The generated folder, or (`records`) the one written by SessionConfig.
const NSessionFolder* FolderOrSkip(benchmark::State& state, bool records = false) {
  const int sessions = static_cast<int>(state.range(0));
  const NSessionFolder& folder = records ? RecordFolder(sessions) : Folder(sessions);
  if (folder.files.size() != static_cast<std::size_t>(sessions)) {
    state.SkipWithError("the folder does not hold the expected sessions");
    return nullptr;
  }
  // One untimed pass first: the walks run a few times each, and the first
  // walk of a size after the others would otherwise pay alone for bringing
  // its names and pages back into the caches.
  NBareReader reader;
  (void)FloorWalk(folder, reader);  // a file that fails fails the timed walk too
  return &folder;
}

template <bool kRecords, NBareReader::Calls kCalls = NBareReader::Calls::kBare>
void FloorOpenLockReadClose(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state, kRecords);
  if (!folder) return;
  NBareReader reader(kCalls);
  NWalkClock clock;
  for (auto _ : state) {
    clock.Start();
    if (!FloorWalk(*folder, reader)) {
      state.SkipWithError("a session file could not be read");
      return;
    }
    clock.Stop();
  }
  clock.SetCounters(state, folder->files.size(), folder->bytes);
}

void BM_FloorOpenLockReadClose(benchmark::State& state) { FloorOpenLockReadClose<false>(state); }
// The same with the calls every load makes on top: how much of a load's
// cost over the floor is the kernel's.
void BM_FloorStoreCalls(benchmark::State& state) {
  FloorOpenLockReadClose<false, NBareReader::Calls::kStore>(state);
}
// The floor of the walk that loads full records: the same files.
void BM_RecordFloorOpenLockReadClose(benchmark::State& state) { FloorOpenLockReadClose<true>(state); }

void BM_FloorPlusSplit(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state);
  if (!folder) return;
  NBareReader reader;
  std::uint64_t lines = 0;
  NWalkClock clock;
  for (auto _ : state) {
    clock.Start();
    lines = 0;
    for (const std::string& file : folder->systemFiles) {
      std::string_view raw;
      if (!reader.Read(file, &raw)) {
        state.SkipWithError("a session file could not be read");
        return;
      }
      NLineReader split(raw);
      std::string_view line;
      while (split.Next(&line)) benchmark::DoNotOptimize(line.data());
      lines += split.LineNumber();
    }
    benchmark::DoNotOptimize(lines);
    clock.Stop();
  }
  clock.SetCounters(state, folder->files.size(), folder->bytes);
  state.counters["lines_per_file"] = static_cast<double>(lines) / static_cast<double>(folder->files.size());
}

// Output buffers a host keeps across reads.
struct NValueBuffers {
  NUnicodeString name;
  NUnicodeString text;
  NStringArray strings;
  std::vector<std::uint8_t> bytes;
};

// Reads one value through the getter of its kind.
bool ReadValue(const NIniFileKey& key, const NUnicodeString& name, NProfileValueType kind, NValueBuffers& buffers) {
  bool ok = false;
  switch (kind) {
    case NProfileValueType::kDword: {
      std::uint32_t dword = 0;
      ok = key.GetDwordValue(name, &dword);
      benchmark::DoNotOptimize(dword);
      break;
    }
    case NProfileValueType::kString:
      ok = key.GetStringValue(name, &buffers.text);
      break;
    case NProfileValueType::kBinary: {
      std::uint32_t length = 0;
      ok = key.GetBinaryValue(name, nullptr, &length);
      if (ok && buffers.bytes.size() < length) buffers.bytes.resize(length);
      ok = ok && key.GetBinaryValue(name, buffers.bytes.data(), &length);
      break;
    }
    case NProfileValueType::kMultiString:
      ok = key.GetMultiStringValue(name, &buffers.strings);
      break;
  }
  return ok;
}

// Reads every field of the session record through the getter of its kind,
// as a host loading its record does; the count of values found.
std::uint64_t ReadAllValues(const NIniFileKey& key, const std::vector<NField>& fields, NValueBuffers& buffers) {
  std::uint64_t read = 0;
  for (const NField& field : fields) read += ReadValue(key, field.name, field.kind, buffers) ? 1 : 0;
  return read;
}

// Reads every value the key holds, found through its value iterator, as the
// check command does; the count of values read.
std::uint64_t IterateAllValues(NIniFileKey& key, NValueBuffers& buffers) {
  std::uint64_t read = 0;
  std::unique_ptr<NProfileKeyIterator> values = key.CreateIterator(true);
  std::uint32_t kind = 0;
  while (values->Next(&buffers.name, &kind)) {
    read += ReadValue(key, buffers.name, static_cast<NProfileValueType>(kind), buffers) ? 1 : 0;
  }
  return read;
}

enum class NReads { kAllByName, kIterated, kNone };

// Loads every session key through the store and reads its values as
// `kReads` says; the count of values read, or false when a key fails.
template <NReads kReads>
bool LoadWalk(const NSessionFolder& folder, const NIniFileStore& store, NValueBuffers& buffers,
              std::uint64_t* values) {
  *values = 0;
  for (const NKeyPath& path : folder.keys) {
    NReportMessageParams params;
    std::unique_ptr<NIniFileKey> key = NIniFileKey::Open(store, path, true, params);
    if (!key) return false;
    if constexpr (kReads == NReads::kAllByName) *values += ReadAllValues(*key, folder.fields, buffers);
    if constexpr (kReads == NReads::kIterated) *values += IterateAllValues(*key, buffers);
  }
  benchmark::DoNotOptimize(*values);
  return true;
}

template <NReads kReads>
void StoreWalk(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state);
  if (!folder) return;
  NIniFileStore store(NUnicodeString::FromUtf8(folder->root), NUnicodeString(), NPlatform::Default());
  NValueBuffers buffers;
  std::uint64_t values = 0;
  NWalkClock clock;
  for (auto _ : state) {
    clock.Start();
    if (!LoadWalk<kReads>(*folder, store, buffers, &values)) {
      state.SkipWithError("a session key could not be opened");
      return;
    }
    clock.Stop();
  }
  clock.SetCounters(state, folder->files.size(), folder->bytes);
  state.counters["values_per_file"] = static_cast<double>(values) / static_cast<double>(folder->files.size());
  state.counters["fields"] = static_cast<double>(folder->fields.size());
}

// Every key loaded and every field of the record read by name.
void BM_StoreLoadAndReadAll(benchmark::State& state) { StoreWalk<NReads::kAllByName>(state); }
// Every key loaded and every value it holds read through its iterator.
void BM_StoreLoadAndIterate(benchmark::State& state) { StoreWalk<NReads::kIterated>(state); }
// Every key loaded and nothing read: what loading alone costs.
void BM_StoreLoadOnly(benchmark::State& state) { StoreWalk<NReads::kNone>(state); }

// The load and read of every key against the floor's walk over the same
// files, both in every iteration: the ratio of the two as one figure.
void BM_LoadAndReadAllOverFloor(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state);
  if (!folder) return;
  NIniFileStore store(NUnicodeString::FromUtf8(folder->root), NUnicodeString(), NPlatform::Default());
  NBareReader reader;
  NValueBuffers buffers;
  std::uint64_t values = 0;
  NPairedRatio pairs;
  for (auto _ : state) {
    if (!pairs.Run([&] { return FloorWalk(*folder, reader); },
                   [&] { return LoadWalk<NReads::kAllByName>(*folder, store, buffers, &values); })) {
      state.SkipWithError("a session file could not be read or its key loaded");
      return;
    }
  }
  pairs.SetCounters(state, static_cast<double>(folder->files.size()));
  state.counters["values_per_file"] = static_cast<double>(values) / static_cast<double>(folder->files.size());
}

// ---- The value table alone, on texts already in memory ----

// The decoded texts of the first session files: what a load parses once
// the file is read.
std::vector<std::string> SampleTexts(const NSessionFolder& folder, std::size_t count) {
  std::vector<std::string> texts;
  std::string raw;
  for (std::size_t i = 0; i < folder.files.size() && i < count; ++i) {
    if (!ReadLocked(NPlatform::Default(), folder.files[i], &raw)) continue;
    NTextFile::Encoding encoding;
    texts.push_back(NTextFile::Decode(raw, &encoding));
  }
  return texts;
}

// Reads one value of a table through the getter of its kind, as a key does.
bool ReadTableValue(const NIniFileKeyMap& map, const NField& field, NValueBuffers& buffers) {
  const NIniFileKeyMap::Element* element = map.Find(std::u16string_view(field.name));
  const NIniFileData* data = element ? element->Data() : nullptr;
  if (!data) return false;
  switch (field.kind) {
    case NProfileValueType::kDword: {
      std::uint32_t dword = 0;
      const bool ok = data->GetDword(&dword);
      benchmark::DoNotOptimize(dword);
      return ok;
    }
    case NProfileValueType::kString:
      return data->GetString(&buffers.text);
    case NProfileValueType::kBinary: {
      std::uint32_t length = 0;
      if (!data->GetBinary(nullptr, &length)) return false;
      if (buffers.bytes.size() < length) buffers.bytes.resize(length);
      return map.Find(std::u16string_view(field.name))->Data()->GetBinary(buffers.bytes.data(), &length);
    }
    case NProfileValueType::kMultiString:
      return data->GetMultiString(&buffers.strings);
  }
  return false;
}

// A table made from each text, its records read, and (`kRead`) every field
// of the record read by name: the part of a load that is not I/O.
template <bool kRead>
void KeyTable(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state);
  if (!folder) return;
  const std::vector<std::string> texts = SampleTexts(*folder, 256);
  NValueBuffers buffers;
  std::uint64_t values = 0;
  for (auto _ : state) {
    values = 0;
    for (const std::string& text : texts) {
      NIniFileKeyMap map;
      const NIniFileKeyMap::ReadResult read = map.ReadRecords(map.AdoptText(text));
      benchmark::DoNotOptimize(read.invalidLine);
      if constexpr (kRead) {
        for (const NField& field : folder->fields) values += ReadTableValue(map, field, buffers) ? 1 : 0;
      }
    }
    benchmark::DoNotOptimize(values);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
  state.counters["values_per_file"] = static_cast<double>(values) / static_cast<double>(texts.size());
}

// Per file: the time shown is for the 256 files of one iteration.
void BM_KeyTableLoad(benchmark::State& state) { KeyTable<false>(state); }
void BM_KeyTableLoadAndReadAll(benchmark::State& state) { KeyTable<true>(state); }
BENCHMARK(BM_KeyTableLoad)->Arg(10000)->ArgName("sessions")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_KeyTableLoadAndReadAll)->Arg(10000)->ArgName("sessions")->Unit(benchmark::kMicrosecond);

// ---- The sessions tree ----

// Lists every folder of the sessions tree, as the floor of a walk that asks
// only for names and kinds.
void BM_FloorListFolders(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state);
  if (!folder) return;
  NPlatform& platform = NPlatform::Default();
  const NUnicodeString sessions = NUnicodeString::FromUtf8(folder->root + "/Sessions");
  NWalkClock clock;
  std::uint64_t entries = 0;
  for (auto _ : state) {
    clock.Start();
    entries = 0;
    std::vector<NUnicodeString> pending{sessions};
    std::vector<NFolderEntry> listed;
    while (!pending.empty()) {
      const NUnicodeString at = std::move(pending.back());
      pending.pop_back();
      if (!platform.ListFolder(at, &listed)) {
        state.SkipWithError("a folder could not be listed");
        return;
      }
      for (const NFolderEntry& entry : listed) {
        ++entries;
        if (entry.kind != NPathKind::kFolder) continue;
        NUnicodeString child = at;
        child += u'/';
        child += entry.name;
        pending.push_back(std::move(child));
      }
    }
    benchmark::DoNotOptimize(entries);
    clock.Stop();
  }
  clock.SetCounters(state, folder->files.size(), folder->bytes);
  state.counters["entries"] = static_cast<double>(entries);
}

// The sessions tree walked through the library: each key loaded to tell a
// session from a folder, and then, or not, every session read as a full record.
template <bool kLoadRecords>
void SessionWalk(benchmark::State& state) {
  const NSessionFolder* folder = FolderOrSkip(state, true);
  if (!folder) return;
  NIniFileStore store(NUnicodeString::FromUtf8(folder->root), NUnicodeString(), NPlatform::Default());
  NWalkClock clock;
  std::uint64_t sessions = 0;
  for (auto _ : state) {
    clock.Start();
    sessions = 0;
    NReportMessageParams params;
    std::unique_ptr<NProfileKey> root = store.OpenRootKey(true, params);
    NSessionTree tree(*root);
    const bool walked = tree.Walk(
        [&](const NSessionTreeEntry& entry) {
          if (!entry.isSession) return true;
          ++sessions;
          if constexpr (kLoadRecords) {
            SessionConfig record;
            NReportMessageParams ignored;
            record.Load(*entry.key, ignored);
            benchmark::DoNotOptimize(record.m_terminal.m_rows.Get());
          }
          return true;
        },
        params);
    if (!walked) {
      state.SkipWithError("the sessions tree could not be walked");
      return;
    }
    clock.Stop();
  }
  clock.SetCounters(state, folder->files.size(), folder->bytes);
  state.counters["sessions"] = static_cast<double>(sessions);
}

void BM_SessionWalkOnly(benchmark::State& state) { SessionWalk<false>(state); }
void BM_SessionWalkAndLoadRecords(benchmark::State& state) { SessionWalk<true>(state); }

// ---- Saving ----

// A fresh copy of kSaveKeys session files spread over the 10,000-session
// folder, under `name` in the bench folder, so that the source stays intact.
struct NSaveFolder {
  std::string root;
  std::vector<NKeyPath> keys;
  std::vector<NUnicodeString> files;
  std::vector<std::string> systemFiles;  // the same files, for the floor's system calls
  std::uint64_t bytes = 0;
};

NSaveFolder CopyForSaving(const std::string& name) {
  const NSessionFolder& source = Folder(kSaveSourceSessions);
  NSaveFolder copy;
  const fs::path root = fs::path(BenchDir()) / "save-scratch" / name;
  copy.root = root.string();
  fs::remove_all(root);
  NPlatform& platform = NPlatform::Default();
  const NUnicodeString root16 = NUnicodeString::FromUtf8(copy.root);
  const std::size_t total = source.keys.size();
  for (std::size_t i = 0; i < static_cast<std::size_t>(kSaveKeys) && i < total; ++i) {
    const NKeyPath& key = source.keys[i * total / kSaveKeys];
    NUnicodeString relative = key.Join(u'/');
    relative += u".ini";
    const fs::path from = fs::path(source.root) / relative.ToUtf8();
    const fs::path to = root / relative.ToUtf8();
    fs::create_directories(to.parent_path());
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
    copy.bytes += fs::file_size(to);
    NUnicodeString file = key.Under(root16, platform.PathSeparator());
    file += u".ini";
    copy.systemFiles.push_back(file.ToUtf8());
    copy.files.push_back(std::move(file));
    copy.keys.push_back(key);
  }
  return copy;
}

void BM_FloorCutWrite(benchmark::State& state) {
  const bool sync = state.range(0) != 0;
  const NSaveFolder folder = CopyForSaving(sync ? "floor-sync" : "floor-nosync");
  std::vector<std::string> contents;
  for (const std::string& file : folder.systemFiles) contents.push_back(ReadWhole(file));
  NWalkClock clock;
  for (auto _ : state) {
    clock.Start();
    for (std::size_t i = 0; i < folder.systemFiles.size(); ++i) {
      if (!NBareRewrite(folder.systemFiles[i], contents[i], sync)) {
        state.SkipWithError("a session file could not be rewritten");
        return;
      }
    }
    clock.Stop();
  }
  clock.SetCounters(state, folder.files.size(), folder.bytes);
}

void BM_StoreSave(benchmark::State& state) {
  const bool sync = state.range(0) != 0;
  const NSaveFolder folder = CopyForSaving(sync ? "store-sync" : "store-nosync");
  NIniFileStoreOptions options;
  options.syncOnSave = sync;
  NIniFileStore store(NUnicodeString::FromUtf8(folder.root), NUnicodeString(), NPlatform::Default(), options);
  std::vector<std::unique_ptr<NIniFileKey>> keys;
  for (const NKeyPath& path : folder.keys) {
    NReportMessageParams params;
    std::unique_ptr<NIniFileKey> key = NIniFileKey::Open(store, path, false, params);
    std::uint32_t value = 0;
    if (!key || !key->GetDwordValue(kChangedValue, &value)) {
      state.SkipWithError("a session key could not be opened, or lacks the value to change");
      return;
    }
    keys.push_back(std::move(key));
  }
  std::uint32_t flip = 0;
  NWalkClock clock;
  for (auto _ : state) {
    clock.Start();
    flip ^= 1;
    for (std::unique_ptr<NIniFileKey>& key : keys) {
      NReportMessageParams params;
      if (!key->SetDwordValue(kChangedValue, 1 + flip) || !key->Flush(params)) {
        state.SkipWithError("a session key could not be saved");
        return;
      }
    }
    clock.Stop();
  }
  clock.SetCounters(state, folder.files.size(), folder.bytes);
}

// One key of `bytes` bytes saved again and again, paired with a bare
// rewrite of the same bytes (open, exclusive lock, cut, write, flush, close)
// or with the same save without its journal. Every save flushes, as a
// user's does.
template <bool kOverFloor>
void SaveOverFloor(benchmark::State& state) {
  constexpr int kSavesPerSide = 20;
  const std::size_t bytes = static_cast<std::size_t>(state.range(0));
  const fs::path root = fs::path(BenchDir()) / "save-scratch" / ("paired-" + std::to_string(bytes));
  fs::remove_all(root);
  fs::create_directories(root);
  NIniFileStoreOptions journaled;
  NIniFileStoreOptions bare;
  bare.journal = false;
  NIniFileStore store(NUnicodeString::FromUtf8(root.string()), NUnicodeString(), NPlatform::Default(), journaled);
  NIniFileStore unjournaled(NUnicodeString::FromUtf8(root.string()), NUnicodeString(), NPlatform::Default(), bare);
  NKeyPath path;
  (void)path.Append(u"key");
  NReportMessageParams params;
  std::unique_ptr<NIniFileKey> key = NIniFileKey::Open(store, path, false, params);
  std::unique_ptr<NIniFileKey> other = NIniFileKey::Open(unjournaled, path, false, params);
  if (!key || !other || !key->SetStringValue(u"Blob", NUnicodeString::FromUtf8(std::string(bytes - 64, 'x'))) ||
      !key->Flush(params) || !other->Reload(params)) {
    state.SkipWithError("the key could not be made");
    return;
  }
  const std::string file = (root / "key.ini").string();
  const std::string content = ReadWhole(file);
  std::uint32_t flip = 0;
  auto saves = [&flip](NIniFileKey& target) {
    for (int i = 0; i < kSavesPerSide; ++i) {
      NReportMessageParams ignored;
      if (!target.SetDwordValue(kChangedValue, ++flip % 2) || !target.Flush(ignored)) return false;
    }
    return true;
  };
  auto floor = [&] {
    for (int i = 0; i < kSavesPerSide; ++i) {
      if (!NBareRewrite(file, content, true)) return false;
    }
    return true;
  };
  NPairedRatio pairs;
  for (auto _ : state) {
    // The first save of a side finds the file changed by the other side, and
    // merges its change onto it, as a save after another process's does.
    const bool ran = kOverFloor ? pairs.Run(floor, [&] { return saves(*key); })
                                : pairs.Run([&] { return saves(*other); }, [&] { return saves(*key); });
    if (!ran) {
      state.SkipWithError("a save failed");
      return;
    }
  }
  pairs.SetCounters(state, kSavesPerSide);
}

void BM_SaveOverFloor(benchmark::State& state) { SaveOverFloor<true>(state); }
void BM_SaveOverUnjournaledSave(benchmark::State& state) { SaveOverFloor<false>(state); }

// One iteration walks a whole folder, so iteration counts are fixed and
// small, larger for the smaller folders to keep each measurement near a second.
void RegisterBenchmarks() {
  struct NCase {
    const char* name;
    void (*function)(benchmark::State&);
  };
  constexpr NCase kWalks[] = {{"BM_FloorOpenLockReadClose", BM_FloorOpenLockReadClose},
                              {"BM_FloorStoreCalls", BM_FloorStoreCalls},
                              {"BM_FloorPlusSplit", BM_FloorPlusSplit},
                              {"BM_StoreLoadAndReadAll", BM_StoreLoadAndReadAll},
                              {"BM_StoreLoadAndIterate", BM_StoreLoadAndIterate},
                              {"BM_StoreLoadOnly", BM_StoreLoadOnly},
                              {"BM_FloorListFolders", BM_FloorListFolders},
                              {"BM_SessionWalkOnly", BM_SessionWalkOnly},
                              {"BM_RecordFloorOpenLockReadClose", BM_RecordFloorOpenLockReadClose},
                              {"BM_SessionWalkAndLoadRecords", BM_SessionWalkAndLoadRecords}};
  constexpr struct NSize {
    int sessions;
    int iterations;
    int pairs;  // odd, for a median of its own
  } kSizes[] = {{1000, 20, 21}, {10000, 3, 7}, {50000, 1, 3}};
  for (const auto& size : kSizes) {
    for (const NCase& walk : kWalks) {
      benchmark::RegisterBenchmark(walk.name, walk.function)
          ->Arg(size.sessions)
          ->ArgName("sessions")
          ->Iterations(size.iterations)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    }
    benchmark::RegisterBenchmark("BM_LoadAndReadAllOverFloor", BM_LoadAndReadAllOverFloor)
        ->Arg(size.sessions)
        ->ArgName("sessions")
        ->Iterations(size.pairs)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
  }
  constexpr NCase kSaves[] = {{"BM_FloorCutWrite", BM_FloorCutWrite}, {"BM_StoreSave", BM_StoreSave}};
  for (const int sync : {0, 1}) {
    for (const NCase& save : kSaves) {
      benchmark::RegisterBenchmark(save.name, save.function)
          ->Arg(sync)
          ->ArgName("sync")
          ->Iterations(sync ? 2 : 10)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    }
  }
  constexpr NCase kPairedSaves[] = {{"BM_SaveOverFloor", BM_SaveOverFloor},
                                    {"BM_SaveOverUnjournaledSave", BM_SaveOverUnjournaledSave}};
  for (const NCase& paired : kPairedSaves) {
    for (const int bytes : {8 << 10, 64 << 10}) {
      benchmark::RegisterBenchmark(paired.name, paired.function)
          ->Arg(bytes)
          ->ArgName("bytes")
          ->Iterations(15)
          ->Unit(benchmark::kMillisecond)
          ->UseRealTime();
    }
  }
}

[[maybe_unused]] const bool kRegistered = (RegisterBenchmarks(), true);

}  // namespace
