// The configuration folder functions, and the registry base and policies
// they read.
#include "location/NConfigFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <vector>

#include "location/NPolicy.h"
#include "location/NRegistryBase.h"
#include "location/NReportMessageRouter.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFolder.h"
#include "store/NIniFileStoreFactory.h"
#include "store/NIniRegistry.h"
#include "uicore/NAppName.h"

namespace {

namespace fs = std::filesystem;
constexpr std::string_view kBom = "\xEF\xBB\xBF";
constexpr std::string_view kCurrentVersion = "7B2F2717-85C8-4729-8394-3B7697039CEB 9.4";
constexpr NRegistryHive kUser = NRegistryHive::kCurrentUser;
constexpr NRegistryHive kMachine = NRegistryHive::kLocalMachine;
const std::tm kFixedTime = [] {
  std::tm time = {};
  time.tm_year = 2025 - 1900;
  time.tm_mon = 1;  // February
  time.tm_mday = 3;
  time.tm_hour = 9;
  time.tm_min = 5;
  time.tm_sec = 7;
  return time;
}();

class TraceRecorder final : public NReportMessageRouter {
 public:
  void RouteMessage(const NReportMessageParams&) override {}
  void Trace(std::u16string_view line) override { lines.push_back(NUnicodeString(line).ToUtf8()); }
  std::vector<std::string> lines;
};
TraceRecorder* g_traces = nullptr;
NReportMessageRouter* Traces() { return g_traces; }

std::vector<NReportMessageParams> g_reports;
void Report(const NReportMessageParams& params) { g_reports.push_back(params); }

NIniFileStoreFactory* g_factory = nullptr;
NProfileStoreFactory* Factory() { return g_factory; }

std::u16string U16(const fs::path& path) { return NUnicodeString::FromUtf8(path.string()); }

// Counts the keys opened for reading, in order, to show the probe's order.
class ProbeRecorder final : public NRegistry {
 public:
  explicit ProbeRecorder(NRegistry& target) : m_target(target) {}
  NStatus OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                  std::unique_ptr<NRegistryKey>* key) override {
    opened.push_back((hive == kUser ? "HKCU\\" : "HKLM\\") + NUnicodeString(path).ToUtf8());
    return m_target.OpenKey(hive, path, create, key);
  }
  std::vector<std::string> opened;

 private:
  NRegistry& m_target;
};

class NConfigFolderTest : public NTestFolderTest {
 protected:
  void SetUp() override {
    NTestFolderTest::SetUp();
    if (HasFatalFailure()) return;
    // The registry that NGetRegistry() opens, and the same folders opened directly.
    m_registryDir.emplace("CFGDECK_REGISTRY_DIR", (m_folder / "registry").u16string());
    m_registry.emplace(U16(m_folder / "registry/HKEY_CURRENT_USER"), U16(m_folder / "registry/HKEY_LOCAL_MACHINE"));
    NResetRegistryBase();
    NSetAppName(u"Skeldon");
    g_traces = &m_traces;
    NSetReportMessageRouterGetter(&Traces);
    g_reports.clear();
  }
  void TearDown() override {
    CfgdeckInitProfileFactory(nullptr);
    g_factory = nullptr;
    NSetReportMessageRouterGetter(nullptr);
    NSetAppName(u"");
    NResetRegistryBase();
    m_registryDir.reset();
    NTestFolderTest::TearDown();
  }

  // A configuration folder whose global file is `globalName` with the given
  // "Version", and optionally a redirect.
  fs::path MakeFolder(const std::string& name, std::string_view version, std::string_view redirect = {},
                      const std::string& globalName = "Global.ini") {
    const fs::path folder = m_folder / name;
    NWriteFileBytes(folder / globalName, std::string(kBom) + "S:\"Version\"=" + std::string(version) + "\r\n");
    if (!redirect.empty()) {
      NWriteFileBytes(folder / "NSWRedirect.ini",
                      std::string(kBom) + "S:\"New Config Path\"=" + std::string(redirect) + "\r\n");
    }
    return folder;
  }

  void UseFactoryFor(const fs::path& folder) {
    m_factory = std::make_unique<NIniFileStoreFactory>(U16(folder), NUnicodeString());
    g_factory = m_factory.get();
    CfgdeckInitProfileFactory(&Factory);
  }

  // The key, created where it is missing.
  std::unique_ptr<NRegistryKey> Key(NRegistryHive hive, std::u16string_view path) {
    std::unique_ptr<NRegistryKey> key;
    EXPECT_TRUE(m_registry->OpenKey(hive, path, true, &key)) << NUnicodeString(path).ToUtf8();
    return key;
  }
  void Remember(std::u16string_view product, std::u16string_view path) {
    ASSERT_TRUE(Key(kUser, u"SOFTWARE\\Nerrin\\" + std::u16string(product))->SetString(kConfigPathValue, path));
  }

  static std::vector<std::string> Names(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  std::optional<NScopedEnvironment> m_registryDir;
  std::optional<NIniRegistry> m_registry;
  TraceRecorder m_traces;
  std::unique_ptr<NIniFileStoreFactory> m_factory;
};
using NRegistryBaseTest = NConfigFolderTest;

TEST_F(NConfigFolderTest, UnderExeNeedsAGlobalFileInConfig) {
  fs::create_directories(m_folder / "app" / "Config");
  EXPECT_EQ(GetAppConfigPathUnderExe(U16(m_folder / "app").c_str()), u"");
  NWriteFileBytes(m_folder / "app" / "Config" / "global.ini", "");
  EXPECT_EQ(GetAppConfigPathUnderExe(U16(m_folder / "app").c_str()), U16(m_folder / "app" / "Config"));
  // As copied from Windows, in another case: the folder as it is on disk,
  // where the file system tells cases apart.
  NWriteFileBytes(m_folder / "copied" / "config" / "GLOBAL.INI", "");
  const NUnicodeString copied = GetAppConfigPathUnderExe(U16(m_folder / "copied").c_str());
  if (NFileSystemIgnoresCase(m_folder)) {
    EXPECT_TRUE(copied.EqualsIgnoreCase(U16(m_folder / "copied" / "config"))) << copied.ToUtf8();
  } else {
    EXPECT_EQ(copied, U16(m_folder / "copied" / "config"));
  }
  // A folder named like the file is no file.
  fs::create_directories(m_folder / "odd" / "Config" / "global.ini");
  EXPECT_EQ(GetAppConfigPathUnderExe(U16(m_folder / "odd").c_str()), u"");
  EXPECT_EQ(GetAppConfigPathUnderExe(nullptr), u"");
}

TEST_F(NConfigFolderTest, CommandLineFolderMustBeADirectory) {
  const fs::path file = m_folder / "file.ini";
  NWriteFileBytes(file, "x");
  for (const fs::path& bad : {m_folder / "missing", file}) {
    NReportMessageParams params;
    NUnicodeString result;
    EXPECT_FALSE(CheckAppConfigPathCommandLine(U16(bad).c_str(), result, params));
    EXPECT_EQ(params.GetCode(), 0xE1380009u);
    ASSERT_EQ(params.GetArguments().size(), 1u);
    EXPECT_EQ(params.GetArguments()[0], U16(bad));
    EXPECT_EQ(params.GetText().ToUtf8(),
              "The folder specified using /F on the command line is not valid:\r\n\r\n'" + bad.string() + "'\r\n");
  }

  const fs::path folder = m_folder / "my config";
  fs::create_directories(folder);
  std::vector<std::u16string> given = {U16(folder), u"  \"" + U16(folder) + u"\" ", U16(m_folder / "." / "my config")};
  // A link to the folder is resolved too, where the system can make one.
  if (NMakeSymbolicLink(folder, m_folder / "link", true)) given.push_back(U16(m_folder / "link"));
  for (const std::u16string& path : given) {
    NReportMessageParams params;
    NUnicodeString result;
    EXPECT_TRUE(CheckAppConfigPathCommandLine(path.c_str(), result, params)) << NUnicodeString(path).ToUtf8();
    EXPECT_EQ(result, U16(fs::canonical(folder)));
    EXPECT_EQ(params.GetCode(), 0u);
  }
}

TEST_F(NConfigFolderTest, RedirectAcceptsEmptyPathsNonConfigurationsAndCurrentFolders) {
  const fs::path plain = m_folder / "plain";
  NWriteFileBytes(plain / "notes.txt", "");
  NWriteFileBytes(plain / "NSWRedirect.ini", std::string(kBom) + "S:\"New Config Path\"=/elsewhere\r\n");
  // The current format is never redirected, in any case of the file name.
  const fs::path current = MakeFolder("current", kCurrentVersion, "/elsewhere", "global.ini");
  UseFactoryFor(current);
  for (const std::u16string& given : {std::u16string(), U16(plain), U16(current)}) {
    NUnicodeString path = given;
    EXPECT_TRUE(CheckAppConfigPathRedirect(true, &Report, path)) << NUnicodeString(given).ToUtf8();
    EXPECT_EQ(path, given);
  }
  EXPECT_TRUE(g_reports.empty());
  EXPECT_EQ(Names(current), (std::vector<std::string>{"NSWRedirect.ini", "global.ini"}));
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"");
}

TEST_F(NConfigFolderTest, OldFolderWithARedirectIsReplacedAndReportedOnce) {
  const fs::path old = MakeFolder("old", "0311ABC6-1CDD-46fc-A08A-0D7C00242FCa", "/srv/new config");
  for (const bool save : {false, true}) {
    g_reports.clear();
    NUnicodeString path = U16(old);
    EXPECT_TRUE(CheckAppConfigPathRedirect(save, &Report, path));
    EXPECT_EQ(path, u"/srv/new config");
    ASSERT_EQ(g_reports.size(), 1u);
    EXPECT_EQ(g_reports[0].GetCode(), 0x61380017u);
    EXPECT_TRUE(g_reports[0].GetText().ToUtf8().starts_with("The configuration was migrated from: \r\n'" +
                                                            old.string() + "'\r\nto\r\n'/srv/new config'."))
        << g_reports[0].GetText().ToUtf8();
    EXPECT_EQ(GetAppConfigPath(u"Skeldon"), save ? u"/srv/new config" : u"");
  }
  // A folder holding only index files is a configuration too.
  NWriteFileBytes(m_folder / "indexed" / "Sessions.IDX", "");
  NWriteFileBytes(m_folder / "indexed" / "NSWRedirect.ini", std::string(kBom) + "S:\"New Config Path\"=/next\r\n");
  NUnicodeString path = U16(m_folder / "indexed");
  EXPECT_TRUE(CheckAppConfigPathRedirect(false, nullptr, path));
  EXPECT_EQ(path, u"/next");
}

TEST_F(NConfigFolderTest, OldFolderWithoutARedirectMovesTheGlobalFileAside) {
  const fs::path old = MakeFolder("old", "3.0");
  UseFactoryFor(old);
  NUnicodeString path = U16(old);
  EXPECT_TRUE(CheckAppConfigPathRedirect(true, &Report, path));
  EXPECT_EQ(path, U16(old));
  EXPECT_TRUE(g_reports.empty());
  const std::vector<std::string> names = Names(old);
  ASSERT_EQ(names.size(), 1u);
  EXPECT_TRUE(names[0].starts_with("Global-incomplete-") && names[0].ends_with(".ini")) << names[0];
  EXPECT_EQ(names[0].size(), std::string("Global-incomplete-20250302_090507.ini").size());
}

TEST_F(NConfigFolderTest, RenameUsesYearDayMonthAndFailsWithoutTouchingEitherFile) {
  EXPECT_EQ(NIncompleteGlobalName(kFixedTime), u"Global-incomplete-20250302_090507.ini");

  // Without a factory the folder is the one remembered for the application.
  const fs::path folder = MakeFolder("remembered", "3.0", {}, "global.ini");
  Remember(u"Skeldon", U16(folder));
  EXPECT_TRUE(NRenameGlobalConfig(kFixedTime));
  EXPECT_EQ(Names(folder), std::vector<std::string>{"Global-incomplete-20250302_090507.ini"});
  // Nothing left to move.
  EXPECT_TRUE(NRenameGlobalConfig(kFixedTime));

  MakeFolder("remembered", "3.0");
  EXPECT_FALSE(NRenameGlobalConfig(kFixedTime));
  EXPECT_EQ(Names(folder), (std::vector<std::string>{"Global-incomplete-20250302_090507.ini", "Global.ini"}));
  EXPECT_EQ(NReadFileBytes(folder / "Global.ini"), std::string(kBom) + "S:\"Version\"=3.0\r\n");
}

TEST_F(NConfigFolderTest, SavedPathsAreReadBackAndTracedAndUnchangedOnesAreNotRewritten) {
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"");
  SaveAppConfigPath(u"/srv/cfg", false);
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"/srv/cfg");
  EXPECT_EQ(GetAppConfigPath(u"skeldon"), u"/srv/cfg");
  EXPECT_EQ(GetAppConfigPath(u"Parrow"), u"");
  EXPECT_EQ(GetAppConfigPath(nullptr), u"");

  // Whether the file was written shows in its time.
  const fs::path file = m_folder / "registry/HKEY_CURRENT_USER/SOFTWARE/Nerrin/Skeldon.ini";
  const auto old = fs::last_write_time(file) - std::chrono::hours(24);
  fs::last_write_time(file, old);
  SaveAppConfigPath(u"/srv/cfg", false);
  EXPECT_EQ(fs::last_write_time(file), old);
  SaveAppConfigPath(u"/srv/cfg", true);
  EXPECT_NE(fs::last_write_time(file), old);
  SaveAppConfigPath(u"/srv/other", false);
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"/srv/other");
  EXPECT_EQ(m_traces.lines, (std::vector<std::string>{"Save: 0 1 0 /srv/cfg\n", "Save: 0 0 0 /srv/cfg\n",
                                                      "Save: 1 0 0 /srv/cfg\n", "Save: 0 1 0 /srv/other\n"}));
}

TEST_F(NConfigFolderTest, AFailedSaveIsTracedWithItsCodeAndReported) {
  // The product's key cannot be made where a file stands in for its folder.
  NWriteFileBytes(m_folder / "registry/HKEY_CURRENT_USER/SOFTWARE/Nerrin/Skeldon", "");
  NReportMessageParams params;
  EXPECT_FALSE(NSaveAppConfigPath(u"/srv/cfg", true, params));
  EXPECT_NE(params.GetCode(), 0u);
  ASSERT_EQ(m_traces.lines.size(), 1u);
  EXPECT_TRUE(m_traces.lines[0].starts_with("Save: 1 1 ")) << m_traces.lines[0];
  EXPECT_FALSE(m_traces.lines[0].starts_with("Save: 1 1 0 ")) << m_traces.lines[0];
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"");
}

TEST_F(NConfigFolderTest, AlphaCopiesTheSharedFolderToTheApplicationsKey) {
  EXPECT_EQ(GetAppConfigPathAlpha(), u"");
  EXPECT_FALSE(fs::exists(m_folder / "registry/HKEY_CURRENT_USER/SOFTWARE/Nerrin/Skeldon.ini"));
  Remember(u"Global", u"D:\\Shared\\Config");
  EXPECT_EQ(GetAppConfigPathAlpha(), u"D:\\Shared\\Config");
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"D:\\Shared\\Config");
}

TEST(NConfigFormatTest, TheFirst36CharactersNameTheFormatExactly) {
  EXPECT_TRUE(NIsCurrentConfigFormat(u"0311ABC6-1CDD-46fc-A08A-0D7C00242FCA"));
  EXPECT_TRUE(NIsCurrentConfigFormat(u"7B2F2717-85C8-4729-8394-3B7697039CEBanything after"));
  EXPECT_FALSE(NIsCurrentConfigFormat(u"0311ABC6-1CDD-46FC-A08A-0D7C00242FCA"));
  EXPECT_FALSE(NIsCurrentConfigFormat(u"7B2F2717-85C8-4729-8394-3B7697039CE"));
}

TEST_F(NRegistryBaseTest, TheFirstOfFourProbesThatOpensIsTheBase) {
  ProbeRecorder recorder(*m_registry);
  NRegistryBase base = NFindRegistryBase(recorder);
  EXPECT_EQ(recorder.opened,
            (std::vector<std::string>{"HKCU\\SOFTWARE\\Nerrin", "HKLM\\SOFTWARE\\Nerrin",
                                      "HKCU\\SOFTWARE\\Nerrin Technologies", "HKLM\\SOFTWARE\\Nerrin Technologies"}));
  EXPECT_EQ(base.hive, kUser);
  EXPECT_EQ(base.path, u"SOFTWARE\\Nerrin");
  EXPECT_EQ(base.ProductKey(u"Skeldon"), u"SOFTWARE\\Nerrin\\Skeldon");

  // Each probe wins over those after it; removing it lets the next one win.
  for (const char16_t* path : {u"SOFTWARE\\Nerrin Technologies\\Skeldon", u"SOFTWARE\\Nerrin\\Skeldon"}) {
    Key(kMachine, path);
    Key(kUser, path);
  }
  const struct {
    NRegistryHive hive;
    std::u16string_view path;
    const char* removeAfter;
  } expected[] = {{kUser, u"SOFTWARE\\Nerrin", "SOFTWARE/Nerrin"},
                  {kMachine, u"SOFTWARE\\Nerrin", "SOFTWARE/Nerrin"},
                  {kUser, u"SOFTWARE\\Nerrin Technologies", "SOFTWARE"},
                  {kMachine, u"SOFTWARE\\Nerrin Technologies", "SOFTWARE"}};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    SCOPED_TRACE("probe " + std::to_string(i + 1));
    recorder.opened.clear();
    base = NFindRegistryBase(recorder);
    EXPECT_EQ(base.hive, expected[i].hive);
    EXPECT_EQ(base.path, expected[i].path);
    EXPECT_EQ(recorder.opened.size(), i + 1) << "probing stops at the base";
    fs::remove_all(m_folder / "registry" / (expected[i].hive == kUser ? "HKEY_CURRENT_USER" : "HKEY_LOCAL_MACHINE") /
                   expected[i].removeAfter);
  }
  base = NFindRegistryBase(*m_registry);
  EXPECT_EQ(base.hive, kUser);
  EXPECT_EQ(base.path, u"SOFTWARE\\Nerrin");
}

TEST_F(NRegistryBaseTest, TheRememberedFolderIsReadUnderTheChosenBase) {
  ASSERT_TRUE(Key(kMachine, u"SOFTWARE\\Nerrin Technologies\\Skeldon")->SetString(kConfigPathValue, u"/opt/shared"));
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"/opt/shared");
  // Kept for the process, until forgotten.
  Key(kUser, u"SOFTWARE\\Nerrin");
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"/opt/shared");
  NResetRegistryBase();
  EXPECT_EQ(GetAppConfigPath(u"Skeldon"), u"");
}

TEST_F(NRegistryBaseTest, PoliciesAreReadFromTheKeyAndItsGlobalSubkey) {
  EXPECT_FALSE(NReadPolicy(*m_registry, kUser).savePasswords.has_value());
  ASSERT_TRUE(Key(kMachine, u"Software\\Policies\\Nerrin")->SetDword(u"Save Passwords", 0));
  ASSERT_TRUE(Key(kMachine, u"Software\\Policies\\Nerrin")->SetDword(u"Disable Passwords", 7));
  ASSERT_TRUE(Key(kMachine, u"Software\\Policies\\Nerrin\\Global")->SetDword(u"Disable Passwords", 0));
  ASSERT_TRUE(Key(kMachine, u"Software\\Policies\\Nerrin\\Global")->SetDword(u"Save Usernames", 1));
  ASSERT_TRUE(Key(kUser, u"Software\\Policies\\Nerrin")->SetDword(u"Save Usernames", 0));

  const NPolicy machine = NReadPolicy(*m_registry, kMachine);
  EXPECT_EQ(machine.savePasswords, std::optional<bool>(false));
  EXPECT_EQ(machine.saveUsernames, std::optional<bool>(true));
  EXPECT_EQ(machine.disablePasswords, std::optional<bool>(false)) << "Global wins";
  const NPolicy user = NReadPolicy(*m_registry, kUser);
  EXPECT_EQ(user.saveUsernames, std::optional<bool>(false));
  EXPECT_FALSE(user.savePasswords.has_value());
  EXPECT_FALSE(user.disablePasswords.has_value());
}

TEST(NPolicyTest, PoliciesOnlyTakeChoicesAway) {
  NPolicy policy;
  policy.savePasswords = true;
  policy.saveUsernames = false;
  EXPECT_FALSE(policy.SavePasswords(false)) << "a policy of 1 forces nothing on";
  EXPECT_TRUE(policy.SavePasswords(true));
  EXPECT_FALSE(policy.SaveUsernames(true));
  policy.disablePasswords = true;
  EXPECT_FALSE(policy.SavePasswords(true));
  EXPECT_TRUE(policy.FixesSavePasswords());
}

}  // namespace
