#include "location/NPersonalDataFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "location/NRegistryBase.h"
#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFiles.h"
#include "store/NRegistryAccess.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "uicore/PersonalDataFolderDialog.h"

namespace {

namespace fs = std::filesystem;

class TraceRecorder final : public NReportMessageRouter {
 public:
  void RouteMessage(const NReportMessageParams&) override {}
  void Trace(std::u16string_view line) override { lines.push_back(NUnicodeString(line).ToUtf8()); }
  std::vector<std::string> lines;
};
TraceRecorder* g_traces = nullptr;
NReportMessageRouter* Traces() { return g_traces; }

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

class NPersonalDataFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    // Unique: other builds of the tree may run the same test at the same time.
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_personal_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
             std::to_string(std::random_device()()));
    fs::remove_all(m_dir);
    fs::create_directories(m_dir);
    m_registryDir.emplace("CFGDECK_REGISTRY_DIR", (m_dir / "registry").u16string());
    NResetRegistryBase();
    NSetAppName(u"Skeldon");
    g_traces = &m_traces;
    NSetReportMessageRouterGetter(&Traces);
  }
  void TearDown() override {
    NSetPersonalDataFolderAnswer(nullptr, nullptr);
    NSetReportMessageRouterGetter(nullptr);
    NSetAppName(u"");
    NResetRegistryBase();
    m_registryDir.reset();
    fs::remove_all(m_dir);
  }

  static std::unique_ptr<NRegistryKey> ProductKey(std::u16string_view product) {
    std::unique_ptr<NRegistryKey> key;
    EXPECT_TRUE(NGetRegistry().OpenKey(NRegistryHive::kCurrentUser, u"SOFTWARE\\Nerrin\\" + std::u16string(product),
                                       true, &key));
    return key;
  }

  std::string LastTrace() const { return m_traces.lines.empty() ? std::string() : m_traces.lines.back(); }

  fs::path m_dir;
  TraceRecorder m_traces;
  std::optional<NScopedEnvironment> m_registryDir;
};

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
  EXPECT_EQ(LastTrace(), "Save: 0 1 0 E:\\p\n");
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Skeldon"), u"E:\\p");
  SaveAppPersonalDataPath(u"E:\\p", false);
  EXPECT_EQ(LastTrace(), "Save: 0 0 0 E:\\p\n");
  SaveAppPersonalDataPath(u"E:\\p", true);
  EXPECT_EQ(LastTrace(), "Save: 1 0 0 E:\\p\n");
  SaveAppPersonalDataPath(u"E:\\q", true);
  EXPECT_EQ(LastTrace(), "Save: 1 1 0 E:\\q\n");
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Skeldon"), u"E:\\q");
  EXPECT_EQ(GetAppPersonalDataPathStored(u"Parrow"), u"");

  struct Switch {
    void (*save)(bool, bool);
    bool (*read)(const char16_t*);
  };
  const Switch switches[] = {{&SaveUsePersonalDataPath, &UsePersonalDataPath},
                             {&SaveDoPersonalDataMigration, &DoPersonalDataMigration},
                             {&SaveDoPersonalDataMerge, &DoPersonalDataMerge}};
  for (const Switch& s : switches) {
    m_traces.lines.clear();
    s.save(true, false);
    EXPECT_TRUE(s.read(u"Skeldon"));
    s.save(true, false);
    s.save(false, false);
    EXPECT_FALSE(s.read(u"Skeldon"));
    s.save(false, true);
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
  NWriteFileBytes(m_dir / "blocked", "x");
  NScopedEnvironment blocked("CFGDECK_REGISTRY_DIR", (m_dir / "blocked").u16string());
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
  FolderAnswer answer;
  NSetPersonalDataFolderAnswer(&Answer, &answer);

  // OK with another folder.
  answer.ok = true;
  answer.folder = u"E:\\chosen";
  NUnicodeString folder;
  EXPECT_TRUE(GetPersonalDataFolderAsk(u"D:\\cfg", folder));
  EXPECT_EQ(folder, u"E:\\chosen");

  // A folder given is shown as it is; Cancel empties it.
  answer.ok = false;
  folder = u"F:\\given";
  EXPECT_FALSE(GetPersonalDataFolderAsk(u"D:\\cfg", folder));
  EXPECT_EQ(folder, u"");

  ASSERT_EQ(answer.proposed.size(), 2u);
  EXPECT_EQ(answer.proposed[0], u"D:\\cfg.personal");
  EXPECT_EQ(answer.proposed[1], u"F:\\given");
  EXPECT_EQ(answer.icons, (std::vector<unsigned>{kMessageBoxIconQuestion, kMessageBoxIconQuestion}));

  // No host to answer: cancelled.
  NSetPersonalDataFolderAnswer(nullptr, nullptr);
  folder = u"F:\\given";
  EXPECT_FALSE(GetPersonalDataFolderAsk(u"D:\\cfg", folder));
  EXPECT_EQ(folder, u"");
  EXPECT_EQ(answer.proposed.size(), 2u);
}

}  // namespace
