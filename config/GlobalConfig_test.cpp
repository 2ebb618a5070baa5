#include "config/GlobalConfig.h"

#include <gtest/gtest.h>

#include <set>

#include "base/OutOfRange.h"
#include "config/NConfigEntry.h"
#include "config/NConfigTestFolder.h"
#include "config/NInstallation.h"
#include "platform/testing/NPeBuilder.h"
#include "platform/testing/NTestFiles.h"
#include "uicore/NAppName.h"

namespace {

// A field's value as text: a boolean or a number in decimal.
std::string Shown(const GlobalConfig& config, std::u16string_view name) {
  const NProfileData* field = config.FindField(name);
  if (!field) return "(no such field)";
  const NFieldValue value = field->Describe();
  if (value.kind == NFieldValue::Kind::kString) return value.text.ToUtf8();
  return std::to_string(value.kind == NFieldValue::Kind::kBoolean ? value.boolean : value.number);
}

// A default of each kind of field; the rest are as declared.
TEST(GlobalConfigRecord, EachNameIsDeclaredOnceAndDefaultsOfEachKindHold) {
  const GlobalConfig config(3);
  const std::pair<std::u16string_view, std::string> defaults[] = {
      {u"Alt Selects Menu", "1"},
      {u"Show Toolbar", "0"},
      {u"Connected Color", std::to_string(0x28C828)},
      {u"Log Topic Error Text Color", std::to_string(0xFFFFFFFF)},
      {u"Max Scrollback Buffer Size", "128000"},
      {u"Parrow Tab State V2", "1,1,0;0"},
      {u"Hex View Font", "Courier New"},
      {u"Version", ""}};
  for (const auto& [name, expected] : defaults) {
    EXPECT_EQ(Shown(config, name), expected) << NUnicodeString(name).ToUtf8();
  }
  std::set<NUnicodeString> names;
  for (const NProfileData* field : config.Fields()) {
    EXPECT_TRUE(names.insert(NUnicodeString(field->Name())).second) << NUnicodeString(field->Name()).ToUtf8();
  }
  EXPECT_EQ(names.size(), 271u);
}

class GlobalConfigFolderTest : public testing::Test {
 protected:
  void TearDown() override {
    FreeGlobalConfig();
    NSetAppName(u"");
    NInstallation::ResetForTesting();
  }
  static GlobalConfig* Get(int product = 3) {
    GlobalConfig* config = nullptr;
    GetGlobalConfig(config, product);
    EXPECT_TRUE(config);
    return config;
  }
  static std::unique_ptr<GlobalConfig> Load(int product, const NProfileKey& key) {
    auto config = std::make_unique<GlobalConfig>(product);
    config->Load(key, nullptr);
    return config;
  }
  NConfigTestFolder m_folder;
};

TEST_F(GlobalConfigFolderTest, TransferProductsBindAndReadThePrwNames) {
  const std::u16string_view plain[] = {u"Use Dockable Session Manager", u"Show Toolbar", u"Show Menu Bar",
                                       u"Show Status Bar", u"Show Session Manager", u"Session Manager Window State",
                                       u"Use Auto Session", u"Auto Session Name", u"Use Remembered Sessions"};
  for (const int product : {6, 9}) {
    const GlobalConfig config(product);
    for (std::u16string_view name : plain) {
      EXPECT_FALSE(config.FindField(name)) << product;
      EXPECT_TRUE(config.FindField(NUnicodeString(name) + u" PRW")) << product;
    }
    EXPECT_TRUE(config.FindField(u"Remembered Sessions List PRW"));
    EXPECT_FALSE(config.FindField(u"Remembered Sessions List V2"));
  }
  for (const int product : {-1, 3, 8}) {
    const GlobalConfig config(product);
    EXPECT_TRUE(config.FindField(u"Show Toolbar")) << product;
    EXPECT_FALSE(config.FindField(u"Show Toolbar PRW")) << product;
    EXPECT_TRUE(config.FindField(u"Remembered Sessions List V2")) << product;
  }
  m_folder.Write("Global", {{u"Show Toolbar", 1}, {u"Show Toolbar PRW", 0}, {u"Show Menu Bar PRW", 0}});
  const auto key = m_folder.Key("Global");
  const auto terminal = Load(3, *key), vexa = Load(9, *key);
  EXPECT_TRUE(terminal->m_showToolbar.Get());
  EXPECT_FALSE(vexa->m_showToolbar.Get());
  EXPECT_TRUE(terminal->m_showMenuBar.Get());
  EXPECT_FALSE(vexa->m_showMenuBar.Get());
}

TEST_F(GlobalConfigFolderTest, TabStateMigratesOnlyWhenTheNewNameIsAbsent) {
  auto key = m_folder.Key("Global");
  key->SetStringValue(u"Skeldon Tab State", u"0,1,1");
  key->SetStringValue(u"Parrow Tab State", u"1,0,0");
  key->SetStringValue(u"Parrow Tab State V2", u"0,0,0;1");
  GlobalConfig config(3);
  config.Load(*key, nullptr);
  EXPECT_EQ(config.m_skeldonTabState.Get(), u"0,1,1;") << "old only: converted";
  EXPECT_EQ(config.m_parrowTabState.Get(), u"0,0,0;1") << "both: the new one wins";
  NReportMessageParams params;
  ASSERT_TRUE(config.Save(*m_folder.Key(""), *key, false, params));
  EXPECT_EQ(m_folder.String("Global", u"Skeldon Tab State V2"), u"0,1,1;");
  EXPECT_EQ(m_folder.String("Global", u"Skeldon Tab State"), u"0,1,1") << "the predecessor is left as it was";
  // The conversion keeps the tail of the default.
  EXPECT_EQ(GlobalConfig::ConvertTabState(u"1,0,1", u"1,1,0;0"), u"1,0,1;0");
  EXPECT_EQ(GlobalConfig::ConvertTabState(u"1,0,1", u"1,1,0;"), u"1,0,1;");
  EXPECT_EQ(GlobalConfig::ConvertTabState(u"1,0,1;5", u"1,1,0;0"), u"1,0,1;5");
}

TEST_F(GlobalConfigFolderTest, RememberedSessionsMigrateFromEitherOldFormAndOthersIgnoreTheirPredecessors) {
  auto key = m_folder.Key("Global");
  key->SetStringValue(u"Remembered Sessions List", u"Lab\\a;;Lab\\b");
  const auto fromText = Load(3, *key);
  ASSERT_EQ(fromText->m_rememberedSessions.Get().size(), 2u);
  EXPECT_EQ(fromText->m_rememberedSessions.Get()[1], u"Lab\\b");
  key->SetMultiStringValue(u"Remembered Sessions List", NStringArray{u"x"});
  EXPECT_EQ(Load(3, *key)->m_rememberedSessions.Get(), NStringArray{u"x"});
  key->SetMultiStringValue(u"Remembered Sessions List V2", NStringArray{u"new"});
  EXPECT_EQ(Load(3, *key)->m_rememberedSessions.Get(), NStringArray{u"new"}) << "both present: the old one is ignored";
  key->SetDwordValue(u"Remote Edit Upload On Modify", 0);
  const auto transfer = Load(6, *key);
  EXPECT_TRUE(transfer->m_rememberedSessions.Get().empty()) << "the PRW list has no predecessor";
  EXPECT_TRUE(transfer->m_remoteEditUploadOnModify.Get()) << "nor has V2 of the upload switch";
}

TEST_F(GlobalConfigFolderTest, MissingGlobalKeyGivesTheDefaults) {
  GlobalConfig* config = Get();
  ASSERT_TRUE(config);
  const GlobalConfig defaults(3);
  for (std::size_t i = 0; i < config->Fields().size(); ++i) {
    if (config->Fields()[i] == &config->m_quennUpdatePromptDate) continue;  // the time of construction
    const NFieldValue a = config->Fields()[i]->Describe();
    const NFieldValue b = defaults.Fields()[i]->Describe();
    EXPECT_TRUE(a.boolean == b.boolean && a.number == b.number && a.text == b.text && a.strings == b.strings &&
                a.bytes == b.bytes)
        << NUnicodeString(config->Fields()[i]->Name()).ToUtf8();
  }
}

TEST_F(GlobalConfigFolderTest, SaveAndReloadRoundTripWithQuickSync) {
  GlobalConfig* config = Get();
  config->m_minTabWidth = 77;
  config->m_hexViewFont = NUnicodeString(u"Mono");
  config->m_quickSync.m_remoteFolder = NUnicodeString(u"/srv");
  SaveGlobalConfig(false);
  EXPECT_TRUE(std::filesystem::exists(m_folder.Root() / "QuickSync.ini"));
  GlobalConfig* reloaded = nullptr;
  ReloadGlobalConfig(reloaded);
  ASSERT_TRUE(reloaded);
  EXPECT_NE(reloaded, config);
  EXPECT_EQ(reloaded->m_minTabWidth.Get(), 77);
  EXPECT_EQ(reloaded->m_hexViewFont.Get(), u"Mono");
  EXPECT_EQ(reloaded->m_quickSync.m_remoteFolder.Get(), u"/srv");
  EXPECT_EQ(m_folder.String("Global", u"Version"), GlobalConfig::kFormatIdentifiers[0]) << "a save stamps the format";
}

TEST_F(GlobalConfigFolderTest, OneRecordMadeForTheFirstProductAskedOrTheApplications) {
  GlobalConfig* first = Get(9);
  EXPECT_EQ(Get(3), first);
  EXPECT_EQ(first->ProductId(), 9);
  FreeGlobalConfig();
  NSetAppName(u"Parrow");
  CfgdeckInitGUI(nullptr, nullptr);
  GlobalConfig* made = Get(3);
  ASSERT_TRUE(made);
  EXPECT_EQ(made->ProductId(), 6) << "made for the application product id";
  CfgdeckInitGUI(nullptr, nullptr);
  EXPECT_EQ(Get(3), made) << "a second initialisation keeps the record";
}

TEST_F(GlobalConfigFolderTest, AnotherOwnersReferenceOutlivesFreeResetAndReload) {
  GlobalConfig* config = Get();
  config->AddRef();  // another owner
  config->m_minTabWidth = 55;
  FreeGlobalConfig();
  EXPECT_EQ(config->m_minTabWidth.Get(), 55) << "still alive for its other owner";
  GlobalConfig* fresh = Get();
  EXPECT_NE(fresh, config);
  EXPECT_EQ(config->Release(), 0u);
  fresh->AddRef();
  GlobalConfig* caller = fresh;
  ResetGlobalConfig(caller);
  EXPECT_EQ(caller, nullptr);
  EXPECT_EQ(fresh->Release(), 0u) << "reset dropped exactly the library's reference";
  GlobalConfig* current = Get();
  current->AddRef();
  GlobalConfig* replaced = nullptr;
  ReloadGlobalConfig(replaced);
  EXPECT_NE(replaced, current);
  EXPECT_EQ(current->Release(), 0u) << "reload dropped exactly the library's reference";
}

TEST_F(GlobalConfigFolderTest, FunctionsDoNothingWithoutARecord) {
  GlobalConfig* config = reinterpret_cast<GlobalConfig*>(1);
  ResetGlobalConfig(config);
  EXPECT_EQ(config, nullptr);
  SaveGlobalConfig(true);
  MergeGlobalConfig(*m_folder.Key("Global"));
  FreeGlobalConfig();
  EXPECT_FALSE(std::filesystem::exists(m_folder.Root() / "global.ini"));
}

TEST_F(GlobalConfigFolderTest, MergeKeepsThePassphraseAndTheStateFlag) {
  GlobalConfig* config = Get();
  config->m_configPassphrase = NEncryptedString::FromStored(NUnicodeString(u"mine"));
  config->SetStateFlag(3);
  m_folder.Write("Other", {{u"Config Passphrase", u"theirs"}, {u"Min Tab Width", 99}});
  MergeGlobalConfig(*m_folder.Key("Other"));
  EXPECT_EQ(config->m_minTabWidth.Get(), 99);
  EXPECT_EQ(config->m_configPassphrase.Get().Stored(), u"mine");
  EXPECT_EQ(config->StateFlag(), 3);
}

TEST_F(GlobalConfigFolderTest, ProductIdsComeFromTheWholeApplicationName) {
  const std::pair<std::u16string_view, int> cases[] = {{u"Skeldon", 3}, {u"kindler", 3}, {u"PARROW", 6},
                                                       {u"Tunnex", 8},  {u"vexa", 9},    {u"Skeldon2", -1},
                                                       {u"Parro", -1},  {u"xVexa", -1},  {u"", -1}};
  for (const auto& [name, id] : cases) EXPECT_EQ(NInstallation::ProductIdOfName(name), id) << NUnicodeString(name).ToUtf8();
  NSetAppName(u"Vexa");
  EXPECT_EQ(GetAppProductID(), 9);
  EXPECT_EQ(GetTransferAppProductID(), 9);
  for (std::u16string_view app : {u"Skeldon", u"Parrow", u"Tunnex", u"Other"}) {
    NSetAppName(app);
    EXPECT_EQ(GetTransferAppProductID(), 6);
  }
  SetCurrentAppProductID(42);
  EXPECT_EQ(GetCurrentAppProductID(), 42) << "kept as declared, not interpreted";
}

TEST_F(GlobalConfigFolderTest, InstallationPredicates) {
  NSetAppName(u"Vexa");
  SetSkeldonInstalled(true);
  SetParrowInstalled(true);
  EXPECT_FALSE(IsIntegrated()) << "product 9 is never integrated";
  EXPECT_TRUE(HasIntegratedProtocols());
  NSetAppName(u"Skeldon");
  NUnicodeString partner(u"with ");
  EXPECT_TRUE(IsIntegrated(partner));
  EXPECT_EQ(partner, u"with Parrow");
  NSetAppName(u"Parrow");
  partner.clear();
  EXPECT_TRUE(IsIntegrated(partner));
  EXPECT_EQ(partner, u"Skeldon");
  EXPECT_TRUE(CanLaunchTerminalApp());
  EXPECT_TRUE(HasSecureTerminalProtocols());
  EXPECT_TRUE(CanLaunchFileTransferApp());
  SetSkeldonInstalled(false);
  EXPECT_FALSE(HasTerminalProtocols());
  EXPECT_FALSE(IsIntegrated());
  EXPECT_STREQ(reinterpret_cast<const char*>(GetSkeldonPath()), "") << "no path for what is not installed";
}

TEST_F(GlobalConfigFolderTest, CompanionsCountAsInstalledFromTheirVersionResource) {
  const std::filesystem::path folder = m_folder.Root() / "programs";
  NWriteFileBytes(folder / "Skeldon.exe", NPeBuilder().FileVersion(4, 9, 0, 0).Build());
  NWriteFileBytes(folder / "Parrow.exe", NPeBuilder().FileVersion(3, 0, 0, 0).Build());
  NWriteFileBytes(folder / "Quenn.exe", NPeBuilder().FileVersion(7, 0, 0, 0).FileType(2).Build());
  NInstallation::Detect(NUnicodeString::FromUtf8(folder.string()));
  EXPECT_FALSE(IsSkeldonInstalled()) << "4.x is below the threshold of 5";
  EXPECT_TRUE(IsParrowInstalled()) << "3.0 reaches the threshold of 3";
  EXPECT_FALSE(IsQuennInstalled()) << "a DLL is no application";
  EXPECT_EQ(NUnicodeString(GetParrowPath()).ToUtf8(), (folder / "Parrow.exe").string());
  EXPECT_TRUE(HasTransferProtocols());
  EXPECT_FALSE(HasIntegratedProtocols());
  NWriteFileBytes(folder / "Skeldon.exe", NPeBuilder().FileVersion(5, 0, 0, 0).Build());
  NWriteFileBytes(folder / "Quenn.exe", NPeBuilder().WithVersion(false).Build());
  NInstallation::Detect(NUnicodeString::FromUtf8(folder.string()));
  EXPECT_TRUE(IsSkeldonInstalled());
  EXPECT_FALSE(IsQuennInstalled()) << "no version resource";
  EXPECT_FALSE(NInstallation::IsInstalledAt(u"x", 0)) << "a path shorter than two characters";
}

TEST_F(GlobalConfigFolderTest, AliasesAreOneFunction) {
  EXPECT_EQ(reinterpret_cast<void*>(&CanLaunchTerminalApp), reinterpret_cast<void*>(&IsSkeldonInstalled));
  EXPECT_EQ(reinterpret_cast<void*>(&HasSecureTerminalProtocols), reinterpret_cast<void*>(&IsSkeldonInstalled));
  EXPECT_EQ(reinterpret_cast<void*>(&HasTerminalProtocols), reinterpret_cast<void*>(&IsSkeldonOrQuennInstalled));
  EXPECT_EQ(reinterpret_cast<void*>(&CanLaunchFileTransferApp), reinterpret_cast<void*>(&IsParrowInstalled));
}

TEST_F(GlobalConfigFolderTest, HolletIsTheTerminalApplicationsFifthEmulation) {
  NSetAppName(u"Skeldon");
  CfgdeckInit(nullptr, 0);
  EXPECT_TRUE(HasHolletEmulation());
  NSetAppName(u"Migrate");
  CfgdeckInit(nullptr, 0);
  EXPECT_FALSE(HasHolletEmulation()) << "the migration tool builds the table of no product";
  NSetAppName(u"Parrow");
  CfgdeckInit(nullptr, 0);
  EXPECT_THROW(HasHolletEmulation(), OutOfRange);
  EXPECT_EQ(GetIconStatusArray().size(), 4u);
  CfgdeckCleanupForUnload();
  EXPECT_TRUE(GetIconStatusArray().empty());
}

TEST_F(GlobalConfigFolderTest, SharedCacheNamesCarryTheProductUnlessIntegrated) {
  NSetAppName(u"Skeldon");
  SetSkeldonInstalled(true);
  SetParrowInstalled(true);
  NStringArray names = NInstallation::SharedCacheNames();
  ASSERT_EQ(names.size(), 2u);
  EXPECT_EQ(names[0], u"{BE251B73-D0CC-49D6-BAD8-73E1DF33D0DE}");
  SetParrowInstalled(false);
  names = NInstallation::SharedCacheNames();
  EXPECT_EQ(names[1], u"{4F896D0D-BE15-474B-9673-7EE8C3FB12223}");
}

}  // namespace
