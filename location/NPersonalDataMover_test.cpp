// The personal data folder's registry values and dialog, and the migration
// and merge of the sessions' personal values.
#include "location/NPersonalDataMover.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "location/NConfigFolder.h"
#include "location/NPersonalDataFolder.h"
#include "location/NRegistryBase.h"
#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFolder.h"
#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"
#include "store/NProfileValueType.h"
#include "store/NRegistryAccess.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "uicore/NProgressDialog.h"
#include "uicore/PersonalDataFolderDialog.h"

namespace {

namespace fs = std::filesystem;

NUnicodeString U16(const fs::path& path) { return NUnicodeString(path.u16string()); }

class TraceRecorder final : public NReportMessageRouter {
 public:
  void RouteMessage(const NReportMessageParams&) override {}
  void Trace(std::u16string_view line) override {
    std::lock_guard<std::mutex> lock(mutex);
    lines.push_back(NUnicodeString(line).ToUtf8());
  }
  std::mutex mutex;
  std::vector<std::string> lines;
};
TraceRecorder* g_traces = nullptr;
NReportMessageRouter* Traces() { return g_traces; }
NIniFileStoreFactory* g_factory = nullptr;
NProfileStoreFactory* Factory() { return g_factory; }

struct ProgressSeen {
  std::mutex mutex;
  std::vector<NProgressEvent> events;
  std::u16string text;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> counts;
};

void Observe(void* context, NProgressEvent event, const char16_t* text, std::uint64_t done, std::uint64_t total) {
  auto& seen = *static_cast<ProgressSeen*>(context);
  std::lock_guard<std::mutex> lock(seen.mutex);
  seen.events.push_back(event);
  seen.text = text;
  if (event == NProgressEvent::kChanged) seen.counts.emplace_back(done, total);
}

// The host's side of the folder dialog.
struct FolderAnswer {
  bool ok = false;
  std::u16string folder;
  std::vector<std::u16string> proposed;
  std::vector<unsigned> icons;
};

bool Answer(void* context, const char16_t* proposed, unsigned icon, NUnicodeString& chosen) {
  auto& answer = *static_cast<FolderAnswer*>(context);
  answer.proposed.push_back(proposed);
  answer.icons.push_back(icon);
  if (answer.ok) chosen = answer.folder;
  return answer.ok;
}

// A key's values by name, each as its kind's letter and its value: "D:1",
// "S:text", "B:<the bytes>", "Z:line|line|".
using Values = std::map<std::string, std::string>;
using Tree = std::map<std::string, Values>;        // keys by path from the folder ("Sessions\A\s2")
using Files = std::map<std::string, std::string>;  // files by path beneath a folder, with their bytes

Values ReadValues(NProfileKey& key) {
  Values values;
  std::unique_ptr<NProfileKeyIterator> names = key.CreateIterator(true);
  NUnicodeString name;
  std::uint32_t type = 0;
  while (names->Next(&name, &type)) {
    std::string& value = values[name.ToUtf8()];
    std::uint32_t number = 0, length = 0;
    NUnicodeString text;
    NStringArray lines;
    using enum NProfileValueType;
    const auto kind = static_cast<NProfileValueType>(type);
    if (kind == kDword && key.GetDwordValue(name, &number)) {
      value = "D:" + std::to_string(number);
    } else if (kind == kString && key.GetStringValue(name, &text)) {
      value = "S:" + text.ToUtf8();
    } else if (kind == kBinary && key.GetBinaryValue(name, nullptr, &length)) {
      value = "B:" + std::string(length, '\0');
      EXPECT_TRUE(key.GetBinaryValue(name, value.data() + 2, &length));
    } else if (kind == kMultiString && key.GetMultiStringValue(name, &lines)) {
      value = "Z:";
      for (const NUnicodeString& line : lines) value += line.ToUtf8() + "|";
    } else {
      ADD_FAILURE() << "cannot read " << name.ToUtf8() << " of type " << type;
    }
  }
  return values;
}

class NPersonalDataMoverTest : public NTestFolderTest {
 protected:
  void SetUp() override {
    NTestFolderTest::SetUp();
    if (HasFatalFailure()) return;
    m_config = m_folder / "cfg";
    m_personal = m_folder / "cfg.personal";
    m_registryDir.emplace("CFGDECK_REGISTRY_DIR", (m_folder / "registry").u16string());
    NResetRegistryBase();
    NSetAppName(u"Skeldon");
    g_traces = &m_traces;
    NSetReportMessageRouterGetter(&Traces);
    NSetProgressObserver(&Observe, &m_progress);
    NClearShownMessageBoxes();
  }
  void TearDown() override {
    CfgdeckInitProfileFactory(nullptr);
    g_factory = nullptr;
    NSetPersonalDataFolderAnswer(nullptr, nullptr);
    NSetProgressObserver(nullptr, nullptr);
    NSetReportMessageRouterGetter(nullptr);
    NSetAppName(u"");
    NResetRegistryBase();
    m_registryDir.reset();
    NTestFolderTest::TearDown();
  }

  static std::unique_ptr<NRegistryKey> ProductKey(std::u16string_view product) {
    std::unique_ptr<NRegistryKey> key;
    EXPECT_TRUE(NGetRegistry().OpenKey(NRegistryHive::kCurrentUser, u"SOFTWARE\\Nerrin\\" + std::u16string(product),
                                       true, &key));
    return key;
  }

  // Writes `values` to the key at `path` of the folder, through a store
  // without a private root.
  static void Put(const fs::path& folder, const std::string& path, const Values& values) {
    NIniFileStore store(U16(folder), NUnicodeString());
    NReportMessageParams params;
    std::unique_ptr<NProfileKey> root = store.OpenRootKey(false, params);
    ASSERT_TRUE(root);
    std::unique_ptr<NProfileKey> key = root->OpenSubKey(NUnicodeString::FromUtf8(path), params);
    ASSERT_TRUE(key) << path;
    for (const auto& [name, text] : values) {
      const NUnicodeString name16 = NUnicodeString::FromUtf8(name);
      const std::string value = text.substr(2);
      NStringArray lines;
      for (std::size_t at = 0, bar; (bar = value.find('|', at)) != std::string::npos; at = bar + 1) {
        lines.Add(NUnicodeString::FromUtf8(value.substr(at, bar - at)));
      }
      const auto size = static_cast<std::uint32_t>(value.size());
      ASSERT_TRUE(text[0] == 'D'   ? key->SetDwordValue(name16, static_cast<std::uint32_t>(std::stoul(value)))
                  : text[0] == 'S' ? key->SetStringValue(name16, NUnicodeString::FromUtf8(value))
                  : text[0] == 'B' ? key->SetBinaryValue(name16, value.data(), size)
                                   : key->SetMultiStringValue(name16, lines))
          << path << ": " << name;
    }
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  }

  // Sessions at several depths with personal values of every kind, a
  // session without any, and keys that are no sessions but hold personal
  // names (they stay where they are). Returns the tree as written.
  Tree MakeConfig() {
    fs::remove_all(m_config);
    fs::remove_all(m_personal);
    Put(m_config, "Sessions\\__FolderData__", {{"Is Expanded", "D:1"}, {"Password", "S:folder secret"}});
    Put(m_config, "Sessions\\s1",
        {{"Is Session", "D:1"}, {"Hostname", "S:h1"}, {"Username", "S:u1"}, {"Password V2", "S:p1"}});
    Put(m_config, "Sessions\\A\\__FolderData__", {{"Is Expanded", "D:0"}});
    Put(m_config, "Sessions\\A\\B\\C\\D\\deep",
        {{"Is Session", "D:1"},
         {"Hostname", "S:hd"},
         {"Username", "S:ud"},
         {"Login Script V3", "Z:send x|wait y|"},
         {"Normal Font v2", "B:\x01\x02\x03\xff"}});
    Put(m_config, "Sessions\\A\\B\\plainkey", {{"Account", "S:not a session"}});
    Put(m_config, "Sessions\\A\\B\\nopersonal", {{"Is Session", "D:1"}, {"Hostname", "S:hn"}});
    Put(m_config, "Sessions\\A\\B\\C\\s2",
        {{"Is Session", "D:1"}, {"Username", "S:u2"}, {"Monitor Password V2", "S:mp"}, {"Rows", "D:24"}});
    return View(m_config, std::nullopt);
  }

  // Every key with a file under the folder's "Sessions", as a store with
  // the given private root reads it.
  static Tree View(const fs::path& folder, const std::optional<fs::path>& privateRoot) {
    Tree tree;
    NIniFileStore store(U16(folder), privateRoot ? U16(*privateRoot) : NUnicodeString());
    NReportMessageParams params;
    std::unique_ptr<NProfileKey> root = store.OpenRootKey(true, params);
    EXPECT_TRUE(root);
    if (!root || !fs::exists(folder / "Sessions")) return tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder / "Sessions")) {
      if (!entry.is_regular_file() || entry.path().extension() != ".ini") continue;
      std::string path = fs::relative(entry.path(), folder).replace_extension().generic_string();
      for (char& c : path) c = c == '/' ? '\\' : c;
      std::unique_ptr<NProfileKey> key = root->OpenSubKey(NUnicodeString::FromUtf8(path), params);
      EXPECT_TRUE(key) << path;
      if (key) tree[path] = ReadValues(*key);
    }
    return tree;
  }

  static Files Bytes(const fs::path& folder) {
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) files[fs::relative(entry.path(), folder).generic_string()] = NReadFileBytes(entry);
    }
    return files;
  }

  static std::vector<std::string> Names(const Values& values) {
    std::vector<std::string> names;
    for (const auto& [name, text] : values) names.push_back(name);
    return names;
  }

  // A complete run: its flag cleared, and the folders as it leaves them. A
  // migration leaves each session's personal values in its private file, the
  // rest in its main file and other keys as they were; a merge leaves the
  // configuration as it was before the migration, and no "Sessions" beside it.
  void ExpectDone(bool merge, const Tree& original) {
    EXPECT_FALSE(merge ? DoPersonalDataMerge(u"Skeldon") : DoPersonalDataMigration(u"Skeldon"));
    const Tree main = View(m_config, std::nullopt);
    if (merge) {
      EXPECT_EQ(main, original);
      EXPECT_FALSE(fs::exists(m_personal / "Sessions"));
      return;
    }
    const Tree personal = View(m_personal, std::nullopt);
    using List = std::vector<std::string>;
    EXPECT_EQ(Names(main.at("Sessions\\s1")), (List{"Hostname", "Is Session"}));
    EXPECT_EQ(Names(personal.at("Sessions\\s1")), (List{"Password V2", "Username"}));
    EXPECT_EQ(Names(main.at("Sessions\\A\\B\\C\\D\\deep")), (List{"Hostname", "Is Session"}));
    EXPECT_EQ(Names(personal.at("Sessions\\A\\B\\C\\D\\deep")),
              (List{"Login Script V3", "Normal Font v2", "Username"}));
    EXPECT_EQ(Names(main.at("Sessions\\A\\B\\C\\s2")), (List{"Is Session", "Rows"}));
    EXPECT_EQ(Names(personal.at("Sessions\\A\\B\\C\\s2")), (List{"Monitor Password V2", "Username"}));
    // Not sessions, or nothing personal: left alone.
    for (const char* path : {"Sessions\\__FolderData__", "Sessions\\A\\B\\plainkey", "Sessions\\A\\B\\nopersonal"}) {
      EXPECT_EQ(main.at(path), original.at(path)) << path;
    }
    EXPECT_EQ(personal.size(), 3u);
    // Read together, nothing is lost and nothing changed.
    EXPECT_EQ(View(m_config, m_personal), original);
  }

  // Runs the operation once for each N with its Nth file operation failing,
  // until a run makes fewer calls: each run either completes or leaves its
  // flag set and loses nothing, and a run without faults then completes it.
  void FailEachCall(bool merge, std::uint32_t error) {
    int n = 1;
    for (; n < 400; ++n) {
      SCOPED_TRACE("failing call " + std::to_string(n));
      const Tree original = MakeConfig();
      NReportMessageParams params;
      if (merge) {
        ASSERT_TRUE(Mover().Migrate(params));
      }
      (merge ? SaveDoPersonalDataMerge : SaveDoPersonalDataMigration)(true, false);
      NFaultPlatform faults(NPlatform::Default());
      faults.FailNthOfAny(n, error);
      NPersonalDataRunOptions options = Options(&faults);
      // Every other merge is also cut short after its first session.
      if (merge && n % 2) options.step = [](std::size_t done, std::size_t) { return done < 1; };
      // A failure that changes nothing (a case-insensitive search for a file
      // that is not there) may let the run complete: then completely.
      if (Run(merge, params, options)) {
        EXPECT_FALSE(options.step) << "a run cut short cannot complete";
        ExpectDone(merge, original);
        if (!faults.Fired()) break;
        continue;
      }
      EXPECT_NE(params.GetCode(), 0u);
      EXPECT_TRUE(merge ? DoPersonalDataMerge(u"Skeldon") : DoPersonalDataMigration(u"Skeldon"));
      // Whatever was moved so far, the values are still there to be read.
      ASSERT_EQ(View(m_config, m_personal), original);
      NReportMessageParams again;
      ASSERT_TRUE(Run(merge, again, Options())) << again.GetText().ToUtf8();
      ExpectDone(merge, original);
    }
    EXPECT_GT(n, 20) << "the run made too few calls to have been exercised";
    EXPECT_LT(n, 400) << "the fault kept firing";
  }

  static bool Run(bool merge, NReportMessageParams& params, const NPersonalDataRunOptions& options) {
    return merge ? NMergeFromPersonalDataLocation(u"Skeldon", params, options)
                 : NMigrateToPersonalDataLocation(params, options);
  }

  void ExpectOwnerOnly(const fs::path& folder) {
    // On Windows access lists stand for the bits; the platform layer's tests check them.
    if (NPlatform::Default().PathSeparator() != u'/') return;
    constexpr fs::perms kOthers = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(folder).permissions() & kOthers, fs::perms::none) << folder;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      EXPECT_EQ(entry.status().permissions() & kOthers, fs::perms::none) << entry.path();
      EXPECT_EQ(entry.status().permissions() & fs::perms::owner_read, fs::perms::owner_read) << entry.path();
    }
  }

  std::vector<fs::path> MergedFolders() const {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(m_personal)) {
      if (entry.path().filename().string().starts_with("Sessions-merged-")) found.push_back(entry.path());
    }
    return found;
  }

  void UseFactory(const fs::path& root, const fs::path& privateRoot) {
    m_factory = std::make_unique<NIniFileStoreFactory>(U16(root), U16(privateRoot));
    g_factory = m_factory.get();
    CfgdeckInitProfileFactory(&Factory);
  }

  NPersonalDataMover Mover() const { return NPersonalDataMover(U16(m_config), U16(m_personal), NPlatform::Default()); }

  NPersonalDataRunOptions Options(NPlatform* platform = nullptr) const {
    NPersonalDataRunOptions options;
    options.configFolder = U16(m_config);
    options.personalFolder = U16(m_personal);
    options.platform = platform;
    return options;
  }

  fs::path m_config;
  fs::path m_personal;
  TraceRecorder m_traces;
  ProgressSeen m_progress;
  std::optional<NScopedEnvironment> m_registryDir;
  std::unique_ptr<NIniFileStoreFactory> m_factory;
};
using NPersonalDataFolderTest = NPersonalDataMoverTest;

TEST_F(NPersonalDataFolderTest, NothingStoredGivesTheDefaultBesideTheFolderAndFalseSwitches) {
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Skeldon"), u"");
  EXPECT_EQ(GetAppPersonalDataPath(u"Skeldon", u"D:\\cfg"), u"D:\\cfg.personal");
  EXPECT_EQ(GetAppPersonalDataPathDefault(u"D:\\cfg"), u"D:\\cfg.personal");
  EXPECT_EQ(GetAppPersonalDataPathDefault(u"D:\\cfg\\"), u"D:\\cfg.personal");
  EXPECT_EQ(GetAppPersonalDataPathDefault(u"/home/me/cfg//"), u"/home/me/cfg.personal");
  EXPECT_EQ(GetAppPersonalDataPathDefault(u"D:\\"), u"D:\\.personal");
  EXPECT_EQ(GetAppPersonalDataPathDefault(u""), u"");
  EXPECT_EQ(GetAppPersonalDataPathDefault(nullptr), u"");
  for (const char16_t* product : {u"Skeldon", u"", static_cast<const char16_t*>(nullptr)}) {
    EXPECT_FALSE(UsePersonalDataPath(product));
    EXPECT_FALSE(DoPersonalDataMigration(product));
    EXPECT_FALSE(DoPersonalDataMerge(product));
  }
  // The key exists, the values do not.
  (void)ProductKey(u"Skeldon");
  EXPECT_FALSE(UsePersonalDataPath(u"Skeldon"));
  EXPECT_EQ(GetAppPersonalDataPath(u"Skeldon", u"D:\\cfg"), u"D:\\cfg.personal");
}

TEST_F(NPersonalDataFolderTest, StoredValuesAreReadFromTheProductKeyGiven) {
  {
    std::unique_ptr<NRegistryKey> parrow = ProductKey(u"Parrow");
    ASSERT_TRUE(parrow->SetString(kPersonalDataPathValue, u"E:\\mine"));
    ASSERT_TRUE(parrow->SetDword(kUsePersonalDataPathValue, 7));
    ASSERT_TRUE(parrow->SetDword(kDoPersonalDataMigrationValue, 0));
    // A switch stored as a string is no switch.
    ASSERT_TRUE(parrow->SetString(kDoPersonalDataMergeValue, u"1"));
  }
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Parrow"), u"E:\\mine");
  EXPECT_EQ(GetAppPersonalDataPath(u"Parrow", u"D:\\cfg"), u"E:\\mine");
  EXPECT_TRUE(UsePersonalDataPath(u"Parrow"));
  EXPECT_FALSE(DoPersonalDataMigration(u"Parrow"));
  EXPECT_FALSE(DoPersonalDataMerge(u"Parrow"));
  EXPECT_EQ(GetAppPersonalDataPath(u"Skeldon", u"D:\\cfg"), u"D:\\cfg.personal");
  EXPECT_FALSE(UsePersonalDataPath(u"Skeldon"));
}

TEST_F(NPersonalDataFolderTest, SettersWriteUnderTheApplicationsKeyAndTraceEachSave) {
  SaveAppPersonalDataPath(u"E:\\p", false);
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Skeldon"), u"E:\\p");
  SaveAppPersonalDataPath(u"E:\\p", false);
  SaveAppPersonalDataPath(u"E:\\p", true);
  SaveAppPersonalDataPath(u"E:\\q", true);
  EXPECT_EQ(m_traces.lines, (std::vector<std::string>{"Save: 0 1 0 E:\\p\n", "Save: 0 0 0 E:\\p\n",
                                                      "Save: 1 0 0 E:\\p\n", "Save: 1 1 0 E:\\q\n"}));
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Skeldon"), u"E:\\q");
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Parrow"), u"");

  const std::tuple<const char*, void (*)(bool, bool), bool (*)(const char16_t*)> switches[] = {
      {"use", &SaveUsePersonalDataPath, &UsePersonalDataPath},
      {"migration", &SaveDoPersonalDataMigration, &DoPersonalDataMigration},
      {"merge", &SaveDoPersonalDataMerge, &DoPersonalDataMerge}};
  for (const auto& [name, save, read] : switches) {
    SCOPED_TRACE(name);
    m_traces.lines.clear();
    save(true, false);
    EXPECT_TRUE(read(u"Skeldon"));
    save(true, false);
    save(false, false);
    EXPECT_FALSE(read(u"Skeldon"));
    save(false, true);
    EXPECT_EQ(m_traces.lines,
              (std::vector<std::string>{"Save: 0 1 0 1\n", "Save: 0 0 0 1\n", "Save: 0 1 0 0\n", "Save: 1 0 0 0\n"}));
  }
  // Each switch is a value of its own.
  SaveDoPersonalDataMerge(true, false);
  EXPECT_FALSE(UsePersonalDataPath(u"Skeldon"));
  EXPECT_FALSE(DoPersonalDataMigration(u"Skeldon"));
  EXPECT_TRUE(DoPersonalDataMerge(u"Skeldon"));
  EXPECT_FALSE(DoPersonalDataMerge(u"Parrow"));

  NSetAppName(u"Parrow");
  SaveUsePersonalDataPath(true, false);
  EXPECT_TRUE(UsePersonalDataPath(u"Parrow"));
}

TEST_F(NPersonalDataFolderTest, AFailedSaveIsTracedWithTheSystemErrorAndReported) {
  // The registry folder is a file: no key can be made under it.
  NWriteFileBytes(m_folder / "blocked", "x");
  NScopedEnvironment blocked("CFGDECK_REGISTRY_DIR", (m_folder / "blocked").u16string());
  NResetRegistryBase();
  NReportMessageParams params;
  EXPECT_FALSE(NSaveDoPersonalDataMigration(true, false, params));
  EXPECT_EQ(params.GetCode(), kMsgPlatformOperationFailed);
  ASSERT_FALSE(m_traces.lines.empty());
  const std::string& line = m_traces.lines.back();
  EXPECT_EQ(line.rfind("Save: 0 1 ", 0), 0u) << line;
  EXPECT_NE(line.rfind("Save: 0 1 0 ", 0), 0u) << "a system error code: " << line;
  EXPECT_EQ(line.substr(line.size() - 3), " 1\n");
  NReportMessageParams pathParams;
  EXPECT_FALSE(NSaveAppPersonalDataPath(u"E:\\p", true, pathParams));
  EXPECT_EQ(pathParams.GetCode(), kMsgPlatformOperationFailed);
}

TEST_F(NPersonalDataFolderTest, AskingShowsTheDialogWithTheFolderAndTakesTheAnswer) {
  FolderAnswer answer{true, u"E:\\chosen", {}, {}};
  NSetPersonalDataFolderAnswer(&Answer, &answer);
  NUnicodeString folder;
  EXPECT_TRUE(GetPersonalDataFolderAsk(u"D:\\cfg", folder));
  EXPECT_EQ(folder, u"E:\\chosen");
  // A folder given is shown as it is; Cancel empties it.
  answer.ok = false;
  folder = u"F:\\given";
  EXPECT_FALSE(GetPersonalDataFolderAsk(u"D:\\cfg", folder));
  EXPECT_EQ(folder, u"");
  EXPECT_EQ(answer.proposed, (std::vector<std::u16string>{u"D:\\cfg.personal", u"F:\\given"}));
  EXPECT_EQ(answer.icons, (std::vector<unsigned>{kMessageBoxIconQuestion, kMessageBoxIconQuestion}));
  // No host to answer: cancelled.
  NSetPersonalDataFolderAnswer(nullptr, nullptr);
  folder = u"F:\\given";
  EXPECT_FALSE(GetPersonalDataFolderAsk(u"D:\\cfg", folder));
  EXPECT_EQ(folder, u"");
  EXPECT_EQ(answer.proposed.size(), 2u);
}

TEST_F(NPersonalDataMoverTest, MigrationAndMergeMoveEveryPersonalValueThereAndBack) {
  const Tree original = MakeConfig();
  const std::string folderData = NReadFileBytes(m_config / "Sessions/__FolderData__.ini");

  // As a host starts with a pending migration: its factory has the private root.
  SaveDoPersonalDataMigration(true, false);
  UseFactory(m_config, m_personal);
  NReportMessageParams params;
  ASSERT_TRUE(NMigrateToPersonalDataLocation(params)) << params.GetText().ToUtf8();
  ExpectDone(false, original);
  ExpectOwnerOnly(m_personal);
  EXPECT_EQ(NReadFileBytes(m_config / "Sessions/__FolderData__.ini"), folderData);
  EXPECT_EQ(m_progress.text,
            u"Skeldon is migrating the personal configuration data to a separate location. This "
            u"operation cannot be cancelled.\r\n");
  // The worker may report a step before the dialog has begun to run.
  EXPECT_NE(std::find(m_progress.events.begin(), m_progress.events.end(), NProgressEvent::kShown),
            m_progress.events.end());
  EXPECT_EQ(m_progress.events.back(), NProgressEvent::kClosed);
  EXPECT_EQ(m_progress.counts,
            (std::vector<std::pair<std::uint64_t, std::uint64_t>>{{0, 4}, {1, 4}, {2, 4}, {3, 4}, {4, 4}}));

  // The merge finds the configuration folder remembered for the application.
  CfgdeckInitProfileFactory(nullptr);
  SaveAppConfigPath(U16(m_config).c_str(), false);
  SaveDoPersonalDataMerge(true, false);
  m_progress.events.clear();
  ASSERT_TRUE(NMergeFromPersonalDataLocation(u"Skeldon", params)) << params.GetText().ToUtf8();
  ExpectDone(true, original);
  EXPECT_EQ(m_progress.text,
            u"Skeldon is merging the personal configuration data. This operation cannot be cancelled.\r\n");
  EXPECT_EQ(m_progress.events.back(), NProgressEvent::kClosed);

  // The personal values are kept aside, where no later migration reads them.
  const std::vector<fs::path> merged = MergedFolders();
  ASSERT_EQ(merged.size(), 1u);
  EXPECT_TRUE(fs::exists(merged[0] / "A/B/C/D/deep.ini"));
  ExpectOwnerOnly(m_personal);

  // A second round trip starts from the merged state and ends the same.
  ASSERT_TRUE(Mover().Migrate(params)) << params.GetText().ToUtf8();
  ExpectDone(false, original);
  ASSERT_TRUE(Mover().Merge(params)) << params.GetText().ToUtf8();
  ExpectDone(true, original);
  EXPECT_EQ(MergedFolders().size(), 2u);
}

TEST_F(NPersonalDataMoverTest, EachSideWinsOverAStaleCopyLeftOnTheOtherSide) {
  MakeConfig();
  // An older private file, as a merge that predates the renaming left it.
  Put(m_personal, "Sessions\\s1", {{"Username", "S:old user"}, {"Account", "S:only here"}});
  NReportMessageParams params;
  ASSERT_TRUE(Mover().Migrate(params)) << params.GetText().ToUtf8();
  Values s1 = View(m_config, m_personal).at("Sessions\\s1");
  EXPECT_EQ(s1.at("Username"), "S:u1");
  EXPECT_EQ(s1.at("Account"), "S:only here");

  // A copy left in the main file by an interrupted save loses to the
  // private one, which is the value in use.
  Put(m_config, "Sessions\\s1", {{"Username", "S:stale"}});
  Put(m_personal, "Sessions\\s1", {{"Username", "S:current"}});
  ASSERT_TRUE(Mover().Merge(params)) << params.GetText().ToUtf8();
  s1 = View(m_config, std::nullopt).at("Sessions\\s1");
  EXPECT_EQ(s1.at("Username"), "S:current");
  EXPECT_EQ(s1.at("Account"), "S:only here");
  EXPECT_EQ(s1.at("Password V2"), "S:p1");
}

TEST_F(NPersonalDataMoverTest, AnInterruptedMigrationKeepsItsFlagAndTheNextRunCompletesIt) {
  const Tree original = MakeConfig();
  SaveDoPersonalDataMigration(true, false);
  NPersonalDataRunOptions options = Options();
  options.step = [](std::size_t done, std::size_t) { return done < 2; };
  NReportMessageParams params;
  EXPECT_FALSE(NMigrateToPersonalDataLocation(params, options));
  EXPECT_EQ(params.GetCode(), kMsgPersonalDataInterrupted);
  EXPECT_TRUE(DoPersonalDataMigration(u"Skeldon"));
  // Half done: two sessions moved, two not; read together, all there.
  EXPECT_EQ(View(m_personal, std::nullopt).size(), 2u);
  EXPECT_EQ(View(m_config, m_personal), original);
  EXPECT_EQ(m_progress.events.back(), NProgressEvent::kClosed);

  NReportMessageParams again;
  ASSERT_TRUE(NMigrateToPersonalDataLocation(again, Options())) << again.GetText().ToUtf8();
  ExpectDone(false, original);
}

TEST_F(NPersonalDataMoverTest, AMigrationFailingAtAnyFileOperationLosesNothing) {
  FailEachCall(false, NStatus::kDiskFull);
}

TEST_F(NPersonalDataMoverTest, AMergeFailingAtAnyFileOperationOrInterruptedLosesNothing) {
  FailEachCall(true, NStatus::kAccessDenied);
}

TEST_F(NPersonalDataMoverTest, PersonalValuesForAKeyThatIsNoSessionStopTheMergeBeforeAnyWrite) {
  MakeConfig();
  NReportMessageParams params;
  ASSERT_TRUE(Mover().Migrate(params));
  // Values for a session that the configuration folder does not have, and
  // for a key that is there but is no session.
  Put(m_personal, "Sessions\\Lab\\ghost", {{"Password", "S:boo"}});
  Put(m_personal, "Sessions\\A\\B\\plainkey", {{"Password", "S:x"}});
  const Files config = Bytes(m_config);
  const Files personal = Bytes(m_personal);
  SaveDoPersonalDataMerge(true, false);
  SaveAppConfigPath(U16(m_config).c_str(), false);
  m_traces.lines.clear();

  MergeFromPersonalDataLocation(u"Skeldon");
  EXPECT_EQ(Bytes(m_config), config);
  EXPECT_EQ(Bytes(m_personal), personal);
  EXPECT_TRUE(DoPersonalDataMerge(u"Skeldon"));
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].text.ToUtf8(),
            "The personal data folder could not be merged with the configuration folder\r\nbecause the configuration "
            "data does not match the personal data.\r\n\r\nPlease contact your system administrator or technical "
            "support for assistance.\r\n");
  EXPECT_EQ(shown[0].caption, u"Skeldon");
  EXPECT_EQ(shown[0].style, kMessageBoxOk | kMessageBoxIconError);
  std::string traced;
  for (const std::string& line : m_traces.lines) traced += line;
  EXPECT_NE(traced.find("Sessions\\Lab\\ghost"), std::string::npos) << traced;
  EXPECT_NE(traced.find("Sessions\\A\\B\\plainkey"), std::string::npos) << traced;

  EXPECT_FALSE(Mover().Merge(params));
  EXPECT_EQ(params.GetCode(), kMsgPersonalDataMismatch);
  // Once the stray files are gone, the merge goes through.
  fs::remove(m_personal / "Sessions/Lab/ghost.ini");
  fs::remove(m_personal / "Sessions/A/B/plainkey.ini");
  NReportMessageParams again;
  EXPECT_TRUE(Mover().Merge(again)) << again.GetText().ToUtf8();
}

TEST_F(NPersonalDataMoverTest, KeysMatchWithoutCaseAndEmptyPrivateFilesNeedNoSession) {
  MakeConfig();
  Put(m_personal, "sessions\\a\\b\\c\\S2", {{"Password", "S:found"}});
  NWriteFileBytes(m_personal / "sessions/Gone.ini", "\xEF\xBB\xBF");
  NReportMessageParams params;
  ASSERT_TRUE(Mover().Merge(params)) << params.GetText().ToUtf8();
  EXPECT_EQ(View(m_config, std::nullopt).at("Sessions\\A\\B\\C\\s2").at("Password"), "S:found");
}

TEST_F(NPersonalDataMoverTest, TheSameFolderOrOneInsideTheConfigurationIsRefused) {
  MakeConfig();
  const Files before = Bytes(m_config);
  for (const fs::path& personal : {m_config, m_folder / "." / "cfg" / "", m_config / "private"}) {
    SCOPED_TRACE(personal.string());
    NPersonalDataMover mover(U16(m_config), U16(personal), NPlatform::Default());
    NReportMessageParams params;
    EXPECT_FALSE(mover.Migrate(params));
    EXPECT_EQ(params.GetCode(), kMsgPersonalDataSameFolder);
    EXPECT_EQ(params.GetText().ToUtf8(),
              "The Personal Data Folder cannot be the same folder as the Configuration Folder.\r\n");
    NReportMessageParams merge;
    EXPECT_FALSE(mover.Merge(merge));
    EXPECT_EQ(merge.GetCode(), kMsgPersonalDataSameFolder);
  }
  EXPECT_EQ(Bytes(m_config), before);
  // Beside it, with a name that merely begins like it, is fine.
  NPersonalDataMover beside(U16(m_config), U16(m_folder / "cfg2"), NPlatform::Default());
  NReportMessageParams params;
  EXPECT_TRUE(beside.Migrate(params)) << params.GetText().ToUtf8();
}

TEST_F(NPersonalDataMoverTest, AMergeWithoutAPersonalDataFolderHasNothingToDoAndCompletes) {
  MakeConfig();
  const Files before = Bytes(m_config);
  SaveDoPersonalDataMerge(true, false);
  NReportMessageParams params;
  EXPECT_TRUE(NMergeFromPersonalDataLocation(u"Skeldon", params, Options())) << params.GetText().ToUtf8();
  EXPECT_FALSE(DoPersonalDataMerge(u"Skeldon"));
  EXPECT_EQ(Bytes(m_config), before);
  EXPECT_FALSE(fs::exists(m_personal));
}

TEST_F(NPersonalDataMoverTest, AFailedRunIsShownInAMessageBoxAndKeepsItsFlag) {
  SaveDoPersonalDataMigration(true, false);
  // The factory names a configuration folder that does not exist.
  UseFactory(m_folder / "missing", m_personal);
  MigrateToPersonalDataLocation();
  EXPECT_TRUE(DoPersonalDataMigration(u"Skeldon"));
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_NE(shown[0].text.ToUtf8().find("missing"), std::string::npos) << shown[0].text.ToUtf8();
  EXPECT_EQ(shown[0].style & kMessageBoxIconMask, kMessageBoxIconError);
  EXPECT_FALSE(fs::exists(m_personal));
}

TEST_F(NPersonalDataMoverTest, MergedFolderNamesCarryTheUtcTime) {
  // 2025-02-03 09:05:07 UTC.
  constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
  const std::uint64_t fileTime = kUnixEpochAsFileTime + 1738573507ull * 10000000ull;
  EXPECT_EQ(NPersonalDataMover::MergedFolderName(fileTime), u"Sessions-merged-20250203-090507");
}

}  // namespace
