#include "location/NPersonalDataMover.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "location/NConfigFolder.h"
#include "location/NPersonalDataFolder.h"
#include "location/NRegistryBase.h"
#include "location/NReportMessageRouter.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "uicore/NProgressDialog.h"

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

// A key's values as text: name -> kind letter and value.
using Values = std::map<std::string, std::string>;
// Keys by path relative to the folder ("Sessions\A\s2").
using Tree = std::map<std::string, Values>;
// Files by path relative to a folder, with their bytes.
using Files = std::map<std::string, std::string>;

Values ReadValues(NProfileKey& key) {
  Values values;
  std::unique_ptr<NProfileKeyIterator> names = key.CreateIterator(true);
  NUnicodeString name;
  std::uint32_t type = 0;
  while (names->Next(&name, &type)) {
    std::string text;
    switch (type) {
      case 0: {
        std::uint32_t value = 0;
        EXPECT_TRUE(key.GetDwordValue(name, &value));
        text = "D:" + std::to_string(value);
        break;
      }
      case 1: {
        NUnicodeString value;
        EXPECT_TRUE(key.GetStringValue(name, &value));
        text = "S:" + value.ToUtf8();
        break;
      }
      case 2: {
        std::uint32_t length = 0;
        EXPECT_TRUE(key.GetBinaryValue(name, nullptr, &length));
        std::string bytes(length, '\0');
        EXPECT_TRUE(key.GetBinaryValue(name, bytes.data(), &length));
        text = "B:";
        for (const unsigned char c : bytes) {
          char hex[3];
          std::snprintf(hex, sizeof hex, "%02x", c);
          text += hex;
        }
        break;
      }
      default: {
        NStringArray value;
        EXPECT_TRUE(key.GetMultiStringValue(name, &value));
        text = "Z:";
        for (const NUnicodeString& line : value) text += line.ToUtf8() + "|";
      }
    }
    values[name.ToUtf8()] = text;
  }
  return values;
}

class NPersonalDataMoverTest : public testing::Test {
 protected:
  void SetUp() override {
    // Unique: other builds of the tree may run the same test at the same time.
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_mover_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
             std::to_string(std::random_device()()));
    fs::remove_all(m_dir);
    fs::create_directories(m_dir);
    m_config = m_dir / "cfg";
    m_personal = m_dir / "cfg.personal";
    m_registryDir.emplace("CFGDECK_REGISTRY_DIR", (m_dir / "registry").u16string());
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
    NSetProgressObserver(nullptr, nullptr);
    NSetReportMessageRouterGetter(nullptr);
    NSetAppName(u"");
    NResetRegistryBase();
    m_registryDir.reset();
    fs::remove_all(m_dir);
  }

  // Writes `values` ("D:1", "S:text", "B:hex", "Z:a|b|") to the key at
  // `path` of the folder, through a store without a private root.
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
      switch (text[0]) {
        case 'D':
          ASSERT_TRUE(key->SetDwordValue(name16, static_cast<std::uint32_t>(std::stoul(value))));
          break;
        case 'S':
          ASSERT_TRUE(key->SetStringValue(name16, NUnicodeString::FromUtf8(value)));
          break;
        case 'B': {
          std::string bytes;
          for (std::size_t i = 0; i + 1 < value.size(); i += 2) {
            bytes.push_back(static_cast<char>(std::stoi(value.substr(i, 2), nullptr, 16)));
          }
          ASSERT_TRUE(key->SetBinaryValue(name16, bytes.data(), static_cast<std::uint32_t>(bytes.size())));
          break;
        }
        default: {
          NStringArray lines;
          for (std::size_t at = 0, bar; (bar = value.find('|', at)) != std::string::npos; at = bar + 1) {
            lines.Add(NUnicodeString::FromUtf8(value.substr(at, bar - at)));
          }
          ASSERT_TRUE(key->SetMultiStringValue(name16, lines));
        }
      }
    }
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  }

  // Sessions at several depths with personal values of every kind, a
  // session without any, and keys that are no sessions but hold personal
  // names (they stay where they are).
  void MakeConfig() {
    Put(m_config, "Sessions\\__FolderData__", {{"Is Expanded", "D:1"}, {"Password", "S:folder secret"}});
    Put(m_config, "Sessions\\s1",
        {{"Is Session", "D:1"}, {"Hostname", "S:h1"}, {"Username", "S:u1"}, {"Password V2", "S:p1"}});
    Put(m_config, "Sessions\\A\\__FolderData__", {{"Is Expanded", "D:0"}});
    Put(m_config, "Sessions\\A\\B\\C\\D\\deep",
        {{"Is Session", "D:1"},
         {"Hostname", "S:hd"},
         {"Username", "S:ud"},
         {"Login Script V3", "Z:send x|wait y|"},
         {"Normal Font v2", "B:010203ff"}});
    Put(m_config, "Sessions\\A\\B\\plainkey", {{"Account", "S:not a session"}});
    Put(m_config, "Sessions\\A\\B\\nopersonal", {{"Is Session", "D:1"}, {"Hostname", "S:hn"}});
    Put(m_config, "Sessions\\A\\B\\C\\s2",
        {{"Is Session", "D:1"}, {"Username", "S:u2"}, {"Monitor Password V2", "S:mp"}, {"Rows", "D:24"}});
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
      fs::path relative = fs::relative(entry.path(), folder);
      relative.replace_extension();
      std::string path = relative.generic_string();
      for (char& c : path) c = c == '/' ? '\\' : c;
      std::unique_ptr<NProfileKey> key = root->OpenSubKey(NUnicodeString::FromUtf8(path), params);
      EXPECT_TRUE(key) << path;
      if (key) tree[path] = ReadValues(*key);
    }
    return tree;
  }

  static Files Bytes(const fs::path& folder) {
    Files files;
    if (!fs::exists(folder)) return files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file())
        files[fs::relative(entry.path(), folder).generic_string()] = NReadFileBytes(entry.path());
    }
    return files;
  }

  static std::vector<std::string> Names(const Values& values) {
    std::vector<std::string> names;
    for (const auto& [name, text] : values) names.push_back(name);
    return names;
  }

  // The folders as a complete migration leaves them: each session's
  // personal values in its private file, the rest in its main file, other
  // keys as they were.
  void ExpectMigrated(const Tree& original) {
    const Tree main = View(m_config, std::nullopt);
    const Tree personal = View(m_personal, std::nullopt);
    EXPECT_EQ(Names(main.at("Sessions\\s1")), (std::vector<std::string>{"Hostname", "Is Session"}));
    EXPECT_EQ(Names(personal.at("Sessions\\s1")), (std::vector<std::string>{"Password V2", "Username"}));
    EXPECT_EQ(Names(main.at("Sessions\\A\\B\\C\\D\\deep")), (std::vector<std::string>{"Hostname", "Is Session"}));
    EXPECT_EQ(Names(personal.at("Sessions\\A\\B\\C\\D\\deep")),
              (std::vector<std::string>{"Login Script V3", "Normal Font v2", "Username"}));
    EXPECT_EQ(Names(main.at("Sessions\\A\\B\\C\\s2")), (std::vector<std::string>{"Is Session", "Rows"}));
    EXPECT_EQ(Names(personal.at("Sessions\\A\\B\\C\\s2")),
              (std::vector<std::string>{"Monitor Password V2", "Username"}));
    // Not sessions, or nothing personal: left alone.
    EXPECT_EQ(main.at("Sessions\\__FolderData__"), original.at("Sessions\\__FolderData__"));
    EXPECT_EQ(main.at("Sessions\\A\\B\\plainkey"), original.at("Sessions\\A\\B\\plainkey"));
    EXPECT_EQ(main.at("Sessions\\A\\B\\nopersonal"), original.at("Sessions\\A\\B\\nopersonal"));
    EXPECT_EQ(personal.size(), 3u);
    // Read together, nothing is lost and nothing changed.
    EXPECT_EQ(View(m_config, m_personal), original);
  }

  static bool IsPosix() { return NPlatform::Default().PathSeparator() == u'/'; }

  void ExpectOwnerOnly(const fs::path& folder) {
    if (!IsPosix()) return;  // Windows: access lists, which the platform layer's tests check
    constexpr fs::perms kOthers = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(folder).permissions() & kOthers, fs::perms::none) << folder;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      EXPECT_EQ(entry.status().permissions() & kOthers, fs::perms::none) << entry.path();
      EXPECT_EQ(entry.status().permissions() & fs::perms::owner_read, fs::perms::owner_read) << entry.path();
    }
  }

  std::vector<fs::path> MergedFolders() const {
    std::vector<fs::path> found;
    if (!fs::exists(m_personal)) return found;
    for (const auto& entry : fs::directory_iterator(m_personal)) {
      if (entry.path().filename().string().rfind("Sessions-merged-", 0) == 0) found.push_back(entry.path());
    }
    return found;
  }

  void UseFactory(const fs::path& root, const fs::path& privateRoot) {
    m_factory = std::make_unique<NIniFileStoreFactory>(U16(root), U16(privateRoot));
    g_factory = m_factory.get();
    CfgdeckInitProfileFactory(&Factory);
  }

  NPersonalDataMover Mover() const { return NPersonalDataMover(U16(m_config), U16(m_personal), NPlatform::Default()); }

  fs::path m_dir;
  fs::path m_config;
  fs::path m_personal;
  TraceRecorder m_traces;
  ProgressSeen m_progress;
  std::optional<NScopedEnvironment> m_registryDir;
  std::unique_ptr<NIniFileStoreFactory> m_factory;
};

TEST_F(NPersonalDataMoverTest, MigrationAndMergeMoveEveryPersonalValueThereAndBack) {
  MakeConfig();
  const Tree original = View(m_config, std::nullopt);
  const Files folderData = {{"Sessions/__FolderData__.ini", NReadFileBytes(m_config / "Sessions/__FolderData__.ini")}};

  // As a host starts with a pending migration: its factory has the private root.
  SaveDoPersonalDataMigration(true, false);
  UseFactory(m_config, m_personal);
  NReportMessageParams params;
  ASSERT_TRUE(NMigrateToPersonalDataLocation(params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(DoPersonalDataMigration(u"Skeldon"));
  ExpectMigrated(original);
  ExpectOwnerOnly(m_personal);
  EXPECT_EQ(NReadFileBytes(m_config / "Sessions/__FolderData__.ini"), folderData.begin()->second);
  EXPECT_FALSE(fs::exists(m_personal / "Sessions/A/B/nopersonal.ini"));

  EXPECT_EQ(m_progress.text,
            u"Skeldon is migrating the personal configuration data to a separate location. This "
            u"operation cannot be cancelled.\r\n");
  EXPECT_EQ(m_progress.events.front(), NProgressEvent::kShown);
  EXPECT_EQ(m_progress.events.back(), NProgressEvent::kClosed);
  EXPECT_EQ(m_progress.counts,
            (std::vector<std::pair<std::uint64_t, std::uint64_t>>{{0, 4}, {1, 4}, {2, 4}, {3, 4}, {4, 4}}));

  // The merge finds the configuration folder remembered for the application.
  CfgdeckInitProfileFactory(nullptr);
  SaveAppConfigPath(U16(m_config).c_str(), false);
  SaveDoPersonalDataMerge(true, false);
  m_progress.events.clear();
  ASSERT_TRUE(NMergeFromPersonalDataLocation(u"Skeldon", params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(DoPersonalDataMerge(u"Skeldon"));
  EXPECT_EQ(View(m_config, std::nullopt), original);
  EXPECT_EQ(m_progress.text,
            u"Skeldon is merging the personal configuration data. This operation cannot be cancelled.\r\n");
  EXPECT_EQ(m_progress.events.back(), NProgressEvent::kClosed);

  // The personal values are kept aside, where no later migration reads them.
  EXPECT_FALSE(fs::exists(m_personal / "Sessions"));
  const std::vector<fs::path> merged = MergedFolders();
  ASSERT_EQ(merged.size(), 1u);
  EXPECT_TRUE(fs::exists(merged[0] / "A/B/C/D/deep.ini"));
  ExpectOwnerOnly(m_personal);

  // A second round trip starts from the merged state and ends the same.
  ASSERT_TRUE(Mover().Migrate(params)) << params.GetText().ToUtf8();
  ExpectMigrated(original);
  ASSERT_TRUE(Mover().Merge(params)) << params.GetText().ToUtf8();
  EXPECT_EQ(View(m_config, std::nullopt), original);
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
  MakeConfig();
  const Tree original = View(m_config, std::nullopt);
  SaveDoPersonalDataMigration(true, false);
  NPersonalDataRunOptions options;
  options.configFolder = U16(m_config);
  options.personalFolder = U16(m_personal);
  options.step = [](std::size_t done, std::size_t) { return done < 2; };
  NReportMessageParams params;
  EXPECT_FALSE(NMigrateToPersonalDataLocation(params, options));
  EXPECT_EQ(params.GetCode(), kMsgPersonalDataInterrupted);
  EXPECT_TRUE(DoPersonalDataMigration(u"Skeldon"));
  // Half done: two sessions moved, two not; read together, all there.
  EXPECT_EQ(View(m_personal, std::nullopt).size(), 2u);
  EXPECT_EQ(View(m_config, m_personal), original);
  EXPECT_EQ(m_progress.events.back(), NProgressEvent::kClosed);

  options.step = nullptr;
  NReportMessageParams again;
  ASSERT_TRUE(NMigrateToPersonalDataLocation(again, options)) << again.GetText().ToUtf8();
  EXPECT_FALSE(DoPersonalDataMigration(u"Skeldon"));
  ExpectMigrated(original);
}

TEST_F(NPersonalDataMoverTest, AMigrationFailingAtAnyFileOperationLosesNothing) {
  int n = 1;
  for (; n < 400; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    fs::remove_all(m_config);
    fs::remove_all(m_personal);
    MakeConfig();
    const Tree original = View(m_config, std::nullopt);
    SaveDoPersonalDataMigration(true, false);
    NFaultPlatform faults(NPlatform::Default());
    faults.FailNthOfAny(n, NStatus::kDiskFull);
    NPersonalDataRunOptions options;
    options.configFolder = U16(m_config);
    options.personalFolder = U16(m_personal);
    options.platform = &faults;
    NReportMessageParams params;
    const bool done = NMigrateToPersonalDataLocation(params, options);
    // A failure that changes nothing (a case-insensitive search for a file
    // that is not there) may let the run complete: then completely.
    if (done) {
      EXPECT_FALSE(DoPersonalDataMigration(u"Skeldon"));
      ExpectMigrated(original);
      if (!faults.Fired()) break;
      continue;
    }
    EXPECT_NE(params.GetCode(), 0u);
    EXPECT_TRUE(DoPersonalDataMigration(u"Skeldon"));
    ASSERT_EQ(View(m_config, m_personal), original);

    options.platform = nullptr;
    NReportMessageParams again;
    ASSERT_TRUE(NMigrateToPersonalDataLocation(again, options)) << again.GetText().ToUtf8();
    EXPECT_FALSE(DoPersonalDataMigration(u"Skeldon"));
    ExpectMigrated(original);
  }
  EXPECT_GT(n, 20) << "the run made too few calls to have been exercised";
  EXPECT_LT(n, 400) << "the fault kept firing";
}

TEST_F(NPersonalDataMoverTest, AMergeFailingAtAnyFileOperationOrInterruptedLosesNothing) {
  int n = 1;
  for (; n < 400; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    fs::remove_all(m_config);
    fs::remove_all(m_personal);
    MakeConfig();
    const Tree original = View(m_config, std::nullopt);
    NReportMessageParams params;
    ASSERT_TRUE(Mover().Migrate(params));
    SaveDoPersonalDataMerge(true, false);
    NFaultPlatform faults(NPlatform::Default());
    faults.FailNthOfAny(n, NStatus::kAccessDenied);
    NPersonalDataRunOptions options;
    options.configFolder = U16(m_config);
    options.personalFolder = U16(m_personal);
    options.platform = &faults;
    // Every other run is also cut short after its first session.
    if (n % 2) options.step = [](std::size_t done, std::size_t) { return done < 1; };
    const bool done = NMergeFromPersonalDataLocation(u"Skeldon", params, options);
    if (done) {
      EXPECT_FALSE(options.step) << "a run cut short cannot complete";
      EXPECT_FALSE(DoPersonalDataMerge(u"Skeldon"));
      EXPECT_EQ(View(m_config, std::nullopt), original);
      EXPECT_FALSE(fs::exists(m_personal / "Sessions"));
      if (!faults.Fired()) break;
      continue;
    }
    EXPECT_TRUE(DoPersonalDataMerge(u"Skeldon"));
    // Whatever was merged so far, the private files are still there to be read.
    ASSERT_EQ(View(m_config, m_personal), original);

    options.platform = nullptr;
    options.step = nullptr;
    NReportMessageParams again;
    ASSERT_TRUE(NMergeFromPersonalDataLocation(u"Skeldon", again, options)) << again.GetText().ToUtf8();
    EXPECT_FALSE(DoPersonalDataMerge(u"Skeldon"));
    EXPECT_EQ(View(m_config, std::nullopt), original);
    EXPECT_FALSE(fs::exists(m_personal / "Sessions"));
  }
  EXPECT_GT(n, 20);
  EXPECT_LT(n, 400) << "the fault kept firing";
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
  for (const fs::path& personal : {m_config, m_dir / "." / "cfg" / "", m_config / "private"}) {
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
  NPersonalDataMover beside(U16(m_config), U16(m_dir / "cfg2"), NPlatform::Default());
  NReportMessageParams params;
  EXPECT_TRUE(beside.Migrate(params)) << params.GetText().ToUtf8();
}

TEST_F(NPersonalDataMoverTest, AMergeWithoutAPersonalDataFolderHasNothingToDoAndCompletes) {
  MakeConfig();
  const Files before = Bytes(m_config);
  SaveDoPersonalDataMerge(true, false);
  NPersonalDataRunOptions options;
  options.configFolder = U16(m_config);
  options.personalFolder = U16(m_personal);
  NReportMessageParams params;
  EXPECT_TRUE(NMergeFromPersonalDataLocation(u"Skeldon", params, options)) << params.GetText().ToUtf8();
  EXPECT_FALSE(DoPersonalDataMerge(u"Skeldon"));
  EXPECT_EQ(Bytes(m_config), before);
  EXPECT_FALSE(fs::exists(m_personal));
}

TEST_F(NPersonalDataMoverTest, AFailedRunIsShownInAMessageBoxAndKeepsItsFlag) {
  SaveDoPersonalDataMigration(true, false);
  // The factory names a configuration folder that does not exist.
  UseFactory(m_dir / "missing", m_personal);
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
