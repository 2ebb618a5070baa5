#include "dialogs/global/GlobalOptionsDialog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "config/NConfigEntry.h"
#include "config/NConfigTestFolder.h"
#include "config/NLibraryState.h"
#include "dialogs/NMessageText.h"
#include "dialogs/protocols/NProtocolTable.h"
#include "location/NPersonalDataFolder.h"
#include "location/NRegistryBase.h"
#include "store/NRegistryAccess.h"
#include "platform/testing/NFakePrinterDevices.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFiles.h"
#include "printing/PrinterBase.h"
#include "uicore/NAppName.h"
#include "uicore/NHeadlessDialogBackend.h"

namespace {

namespace fs = std::filesystem;

void SetInstalled(bool skeldon, bool parrow) {
  SetSkeldonInstalled(skeldon);
  SetParrowInstalled(parrow);
}

// The host's file-type register and icon cache, recording what the page did.
struct FakeFileTypes final : NFileTypeManager, NIconManager {
  NStringArray Associations() const override { return lines; }
  bool SetAssociations(const NStringArray& changed) override {
    lines = changed;
    return true;
  }
  void Invalidate(std::u16string_view extension) override { invalidated += NUnicodeString(extension) + u" "; }
  NStringArray lines = {u"txt=notepad.exe", u"log=viewer.exe"};
  NUnicodeString invalidated;
};

// The Global Options dialog on a real configuration folder and a registry
// of its own, run headless.
class GlobalOptionsDialogTest : public testing::Test {
 protected:
  GlobalOptionsDialogTest() {
    NResetRegistryBase();
    NSetAppName(u"Skeldon");
    SetInstalled(true, true);
    SetCurrentAppProductID(3);
    GetGlobalConfig(m_global, 3);
    NClearShownMessageBoxes();
    m_inputs.appName = u"Skeldon";
    m_inputs.fileTypes = &m_types;
    m_inputs.icons = &m_types;
    m_inputs.printers = &m_printers;
    m_printers.Add(u"Laser", {8.5, 11, 0.25, 0.2, 8.0, 10.6});
    m_printers.SetDefault(u"Laser");
  }
  ~GlobalOptionsDialogTest() override {
    FreeGlobalConfig();
    SetInstalled(false, false);
    SetCurrentAppProductID(0);
    NProtocolTable::SetGlobalPageFactory(nullptr);
    NSetAppName(u"");
    NResetRegistryBase();
  }

  // Runs the dialog with `script` acting in it; the dialog's result.
  std::intptr_t Run(NHeadlessDialogBackend::Script script) {
    GlobalOptionsDialog dialog(m_global, m_inputs, nullptr);
    m_backend.SetScript(std::move(script));
    return dialog.DoModal();
  }

  // Every page of the tree as "DEPTH TITLE", in order.
  std::string Tree() {
    GlobalOptionsDialog dialog(m_global, m_inputs, nullptr);
    std::string text;
    for (const NPropertyTreeDialog::Row& row : dialog.AllRows()) {
      text += (text.empty() ? "" : ", ") + std::to_string(row.depth) + " " + row.page->Title().ToUtf8();
    }
    return text;
  }

  static NFormControl& Control(NPropertyTreeDialog& dialog, std::u16string_view page, std::u16string_view label) {
    NPropertyTreePage* found = dialog.FindPage(page);
    EXPECT_NE(found, nullptr) << NUnicodeString(page).ToUtf8();
    found->OnSetActive();
    NFormControl* control = found->Form().Find(label);
    EXPECT_NE(control, nullptr) << NUnicodeString(label).ToUtf8();
    return *control;
  }

  static std::vector<std::uint32_t> Codes() {
    std::vector<std::uint32_t> codes;
    for (const NShownMessageBox& shown : NShownMessageBoxes()) codes.push_back(shown.code);
    return codes;
  }

  NConfigTestFolder m_folder;
  NScopedEnvironment m_registry{"CFGDECK_REGISTRY_DIR", (m_folder.Root() / "registry").u16string()};
  GlobalConfig* m_global = nullptr;
  FakeFileTypes m_types;
  NFakePrinterDevices m_printers;
  NGlobalDialogInputs m_inputs;
  NHeadlessDialogBackend m_backend;
  NScopedDialogBackend m_installed{m_backend};
};

TEST_F(GlobalOptionsDialogTest, PagesFollowTheInstalledApplicationsTheProductAndTheManagers) {
  const std::string general = "0 General, 1 Configuration Paths, 1 Default Session";
  const std::string terminal =
      "0 Terminal, 1 Appearance, 2 ANSI Color, 2 Advanced, 1 Tabs/Tiling, 1 Printing, 1 Web Browser, "
      "1 TFTP Server, 1 Advanced";
  const std::string transfer = "0 File Transfer, 1 Options, 2 Advanced, 1 View, 1 FTP, 1 TLS, 1 Sound, 1 File Types";
  const std::string withoutFileTypes = general + ", " + terminal +
                                       ", 0 File Transfer, 1 Options, 2 Advanced, 1 View, 1 FTP, 1 TLS, 1 Sound, "
                                       "1 Filters, 0 Firewall";
  struct Row {
    const char* name;
    bool terminalInstalled;
    int product;
    bool typeManager;
    bool iconManager;
    std::string expected;
  };
  const Row rows[] = {
      {"everything", true, 3, true, true, general + ", " + terminal + ", " + transfer + ", 1 Filters, 0 Firewall"},
      {"transfer application only", false, 6, true, true, general + ", " + transfer + ", 1 Filters, 0 Firewall"},
      {"product 9", true, 9, true, true,
       "0 General, 1 Configuration Paths, " + terminal +
           ", 0 File Transfer, 1 Options, 2 Advanced, 1 FTP, 1 TLS, 1 File Types, 1 Filters, 0 Firewall"},
      {"no file-type manager", true, 3, false, true, withoutFileTypes},
      {"no icon manager", true, 3, true, false, withoutFileTypes},
  };
  for (const Row& row : rows) {
    SetInstalled(row.terminalInstalled, true);
    SetCurrentAppProductID(row.product);
    m_inputs.fileTypes = row.typeManager ? &m_types : nullptr;
    m_inputs.icons = row.iconManager ? &m_types : nullptr;
    EXPECT_EQ(Tree(), row.expected) << row.name;
  }
}

TEST_F(GlobalOptionsDialogTest, TheHostPageGoesLastAtTheRootAndTheDialogDeletesIt) {
  static bool deleted = false;
  struct HostPage final : NPropertyTreePage {
    HostPage() : NPropertyTreePage(u"Host") {}
    ~HostPage() override { deleted = true; }
  };
  IPropertyTreeDialog* given = nullptr;
  NProtocolTable::SetGlobalPageFactory([&given](IPropertyTreeDialog& dialog) {
    given = &dialog;
    return std::make_unique<HostPage>();
  });
  EXPECT_EQ(Tree().substr(Tree().rfind("0 Firewall")), "0 Firewall, 0 Host");
  EXPECT_NE(given, nullptr);
  EXPECT_TRUE(deleted);
}

TEST_F(GlobalOptionsDialogTest, TheRunningDialogIsReachableOnlyWhileItRuns) {
  for (const bool ok : {true, false}) {
    NPropertyTreeDialog* running = nullptr;
    NPropertyTreeDialog* seen = nullptr;
    m_backend.SetScript([&](NPropertyTreeDialog& dialog) {
      seen = running;
      EXPECT_EQ(running, &dialog);
      if (ok) dialog.PressOk();
    });
    const std::intptr_t result = ShowGlobalOptionsDialog(m_global, u"Skeldon", false, false, false, 96, false, false,
                                                         nullptr, &m_types, &m_types, nullptr, &running, false);
    EXPECT_EQ(result, ok ? IModalDialog::kOk : IModalDialog::kCancel);
    EXPECT_NE(seen, nullptr);
    EXPECT_EQ(running, nullptr);
  }
}

TEST_F(GlobalOptionsDialogTest, EachAnnouncementIsShownOnceWhenItsSettingChanges) {
  struct Row {
    const char* name;
    std::u16string_view page;
    std::u16string_view label;
    NControlValue value;
    std::vector<std::uint32_t> expected;
  };
  const Row rows[] = {
      {"unchanged value", u"Tabs/Tiling", GlobalTabsPage::kStyleLabel, std::int64_t{0}, {}},
      {"status indicator type", u"Tabs/Tiling", GlobalTabsPage::kStyleLabel, std::int64_t{1}, {0x61380027}},
      {"language", u"General", GlobalGeneralPage::kLanguageLabel, NUnicodeString(u"de-DE"), {0x6138002E}},
      {"TFTP server", u"TFTP Server", u"Port (0: 69)", std::int64_t{6969}, {0x61380044}},
      {"a setting without one", u"General", u"Show toolbar", true, {}},
  };
  m_inputs.showLanguage = true;
  m_inputs.tftpServerAvailable = true;
  for (const Row& row : rows) {
    NClearShownMessageBoxes();
    EXPECT_EQ(Run([&](NPropertyTreeDialog& dialog) {
                Control(dialog, row.page, row.label).SetValue(row.value);
                // A second TFTP setting changed with it: still one message.
                if (row.page == u"TFTP Server") {
                  Control(dialog, row.page, u"Accept connections from this computer only").SetValue(true);
                }
                EXPECT_TRUE(dialog.PressOk());
              }),
              IModalDialog::kOk)
        << row.name;
    EXPECT_EQ(Codes(), row.expected) << row.name;
    if (!row.expected.empty()) {
      EXPECT_EQ(NShownMessageBoxes().front().text, NMessageText(row.expected[0], {u"Skeldon"})) << row.name;
    }
  }
  EXPECT_EQ(m_global->m_statusIndicatorStyle.Get(), 1);
  EXPECT_EQ(m_global->m_locale.Get(), u"de-DE");
  EXPECT_EQ(m_global->m_tftpServerPort.Get(), 6969);
  EXPECT_TRUE(m_global->m_showToolbar.Get());
}

TEST_F(GlobalOptionsDialogTest, RefusalsKeepTheDialogOpenWithTheirMessage) {
  const fs::path config = m_folder.Root();
  struct Row {
    const char* name;
    std::u16string_view page;
    std::vector<std::pair<std::u16string_view, NControlValue>> edits;
    std::uint32_t code;
    std::u16string_view quoted;
  };
  const NUnicodeString folder = NUnicodeString::FromUtf8(config.string());
  const Row rows[] = {
      {"auto session without a name", u"Default Session",
       {{GlobalAutoSessionPage::kUseAutoSessionLabel, true}},
       0xE1380005,
       u"\"Use auto session\""},
      {"personal data in the configuration folder", u"Configuration Paths",
       {{GlobalConfigurationPathsPage::kConfigFolderLabel, folder},
        {GlobalConfigurationPathsPage::kSeparateLabel, true},
        {GlobalConfigurationPathsPage::kPersonalFolderLabel, folder + u"/"}},
       0x61380024,
       u"cannot be the same folder"},
      {"a margin the printer cannot print", u"Printing",
       {{GlobalPrintingPage::kMarginLabels[0], NUnicodeString(u"0.1")}},
       kMsgMarginsInvalid,
       u""},
  };
  m_inputs.printerAvailable = true;
  for (const Row& row : rows) {
    NClearShownMessageBoxes();
    Run([&](NPropertyTreeDialog& dialog) {
      for (const auto& [label, value] : row.edits) Control(dialog, row.page, label).SetValue(value);
      EXPECT_FALSE(dialog.PressOk()) << row.name;
      EXPECT_EQ(dialog.CurrentPage(), dialog.FindPage(row.page)) << row.name;
    });
    ASSERT_EQ(Codes(), std::vector<std::uint32_t>{row.code}) << row.name;
    EXPECT_NE(NShownMessageBoxes().front().text.find(row.quoted), NUnicodeString::npos) << row.name;
  }
  EXPECT_FALSE(m_global->m_useAutoSession.Get());
  EXPECT_FALSE(UsePersonalDataPath(u"Skeldon"));
}

TEST_F(GlobalOptionsDialogTest, MarginsAreWrittenRoundedToThePrinterFile) {
  m_inputs.printerAvailable = true;
  Run([](NPropertyTreeDialog& dialog) {
    // The printer cannot print within 0.25" of the left and right edges or
    // 0.2" of the top and bottom.
    const char16_t* margins[] = {u"0.25", u"0.5004", u"0.3335", u"0.2"};
    for (std::size_t i = 0; i < 4; ++i) {
      Control(dialog, u"Printing", GlobalPrintingPage::kMarginLabels[i]).SetValue(NUnicodeString(margins[i]));
    }
    EXPECT_TRUE(dialog.PressOk());
  });
  const std::string file = NReadFileBytes(m_folder.Root() / "PRINTER.CFG");
  EXPECT_NE(file.find("S:\"Right Margin\"=0.5\r\n"), std::string::npos) << file;
  EXPECT_NE(file.find("S:\"Top Margin\"=0.334\r\n"), std::string::npos) << file;
  EXPECT_NE(file.find("S:\"Printer Font\"=100,-13,0,0,0,400,0,0,0,0,0,0,0,0,Courier"), std::string::npos) << file;
}

TEST_F(GlobalOptionsDialogTest, SeparatingPersonalDataMovesItOnAWorkerAndClearsTheFlag) {
  m_folder.Write("Sessions\\lab", {{u"Is Session", 1}, {u"Hostname", u"lab.example"}, {u"Username", u"alice"}});
  const fs::path personal = m_folder.Root().string() + ".personal";
  fs::remove_all(personal);
  Run([&](NPropertyTreeDialog& dialog) {
    Control(dialog, u"Configuration Paths", GlobalConfigurationPathsPage::kSeparateLabel).SetValue(true);
    Control(dialog, u"Configuration Paths", GlobalConfigurationPathsPage::kPersonalFolderLabel)
        .SetValue(NUnicodeString::FromUtf8(personal.string()));
    EXPECT_TRUE(dialog.PressOk());
  });
  EXPECT_EQ(Codes(), (std::vector<std::uint32_t>{0x61380028, 0x61380023}));  // asked for, then takes effect
  EXPECT_TRUE(UsePersonalDataPath(u"Skeldon"));
  EXPECT_FALSE(DoPersonalDataMigration(u"Skeldon"));
  const std::string main = NReadFileBytes(m_folder.Root() / "Sessions" / "lab.ini");
  EXPECT_NE(main.find("lab.example"), std::string::npos);
  EXPECT_EQ(main.find("alice"), std::string::npos) << main;
  EXPECT_NE(NReadFileBytes(personal / "Sessions" / "lab.ini").find("alice"), std::string::npos);
  fs::remove_all(personal);
}

TEST_F(GlobalOptionsDialogTest, TftpPickersAskTheirOwnQuestions) {
  m_inputs.tftpServerAvailable = true;
  const std::pair<std::u16string_view, std::uint32_t> pickers[] = {{GlobalTFTPPage::kUploadLabel, 0x61380041},
                                                                   {GlobalTFTPPage::kDownloadLabel, 0x61380042},
                                                                   {GlobalTFTPPage::kLogFileLabel, 0x61380043}};
  Run([&](NPropertyTreeDialog& dialog) {
    for (const auto& [label, code] : pickers) {
      m_backend.QueuePick(NUnicodeString(u"/srv/tftp"));
      NFormControl& control = Control(dialog, u"TFTP Server", label);
      EXPECT_EQ(control.Browse(nullptr), NEditResult::kDone);
      EXPECT_EQ(m_backend.Log().back(), u"pick " + NMessageText(code));
      EXPECT_EQ(std::get<NUnicodeString>(control.Value()), u"/srv/tftp");
    }
  });
}

TEST_F(GlobalOptionsDialogTest, SampleTabsFollowTheColoursBeingEdited) {
  Run([](NPropertyTreeDialog& dialog) {
    const auto* tabs = static_cast<GlobalTabsPage*>(dialog.FindPage(u"Tabs/Tiling"));
    Control(dialog, u"Tabs/Tiling", u"Connected").SetValue(std::int64_t{0x123456});
    std::vector<NSampleTab> samples = tabs->Form().Find(u"Sample tabs")->SampleTabs();
    ASSERT_EQ(samples.size(), 5u);
    EXPECT_EQ(samples[0].indicator, 0x123456u);
    EXPECT_EQ(samples[1].indicator, 0x0000FFu);  // the saved "Disconnected Color"
    EXPECT_TRUE(samples[0].barIndicator);
    Control(dialog, u"Tabs/Tiling", GlobalTabsPage::kStyleLabel).SetValue(std::int64_t{1});
    EXPECT_FALSE(tabs->Samples().Tabs()[0].barIndicator);
  });
  EXPECT_EQ(m_global->m_connectedColor.Get(), 0x28C828u);  // cancelled: nothing stored
}

TEST_F(GlobalOptionsDialogTest, PagesWithOwnStoresSaveThemOnOk) {
  bool typesChanged = false;
  m_inputs.fileTypesChanged = &typesChanged;
  Run([](NPropertyTreeDialog& dialog) {
    Control(dialog, u"Firewall", u"Type").SetValue(std::int64_t{NFirewallConfig::kSocks5});
    Control(dialog, u"Firewall", u"Hostname").SetValue(NUnicodeString(u"proxy.example"));
    Control(dialog, u"File Types", GlobalFileTypesPage::kTypesLabel)
        .SetValue(NStringArray{u"txt=notepad.exe", u"pdf=reader.exe"});
    EXPECT_TRUE(dialog.PressOk());
  });
  EXPECT_NE(NReadFileBytes(m_folder.Root() / "Firewalls" / "Default.ini").find("proxy.example"), std::string::npos);
  EXPECT_EQ(m_types.lines, (NStringArray{u"txt=notepad.exe", u"pdf=reader.exe"}));
  EXPECT_EQ(m_types.invalidated, u"log pdf txt ");
  EXPECT_TRUE(typesChanged);
}

TEST_F(GlobalOptionsDialogTest, PoliciesLockThePasswordsAndUserNamesThePagesShow) {
  std::unique_ptr<NRegistryKey> policy;
  ASSERT_TRUE(NGetRegistry().OpenKey(NRegistryHive::kCurrentUser, u"Software\\Policies\\Nerrin", true, &policy));
  ASSERT_TRUE(policy->SetDword(u"Save Passwords", 0));
  ASSERT_TRUE(policy->SetDword(u"Save Usernames", 0));
  Run([](NPropertyTreeDialog& dialog) {
    const std::pair<std::u16string_view, std::u16string_view> locked[] = {
        {u"FTP", u"Anonymous password"}, {u"Firewall", u"Password"}, {u"Firewall", u"Username"}};
    for (const auto& [page, label] : locked) {
      EXPECT_TRUE(Control(dialog, page, label).LockReason().has_value()) << NUnicodeString(label).ToUtf8();
    }
    EXPECT_FALSE(Control(dialog, u"Firewall", u"Hostname").LockReason().has_value());
  });
}

TEST_F(GlobalOptionsDialogTest, AReadOnlyConfigurationCannotBeChanged) {
  m_inputs.readOnly = true;
  Run([](NPropertyTreeDialog& dialog) {
    EXPECT_FALSE(dialog.IsOkEnabled());
    EXPECT_EQ(Control(dialog, u"General", u"Show toolbar").SetValue(true), NEditResult::kDisabled);
  });
}

}  // namespace
