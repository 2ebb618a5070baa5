#include "dialogs/session/SessionOptionsDialog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/NUnknownPointer.h"
#include "base/OutOfRange.h"
#include "config/NConfigEntry.h"
#include "config/NConfigTestFolder.h"
#include "config/NLibraryState.h"
#include "dialogs/protocols/SessionProtocolPage.h"
#include "uicore/NHeadlessDialogBackend.h"

namespace {

constexpr std::u16string_view kProtocol = SessionConnectPage::kProtocolLabel;
constexpr std::u16string_view kTransfer = SessionConnectPage::kTransferProtocolLabel;

void SetInstalled(bool skeldon, bool quenn, bool parrow) {
  SetSkeldonInstalled(skeldon);
  SetParrowInstalled(parrow);
  NLibraryState& state = NLibraryState::Get();
  std::lock_guard<std::recursive_mutex> lock(state.mutex);
  state.quennInstalled = quenn;
}

// The Session Options dialog on sessions of a real folder, run headless.
class SessionOptionsDialogTest : public testing::Test {
 protected:
  SessionOptionsDialogTest() {
    SetInstalled(true, false, true);
    GetGlobalConfig(m_global, 3);
    NClearShownMessageBoxes();
    MakeSession("Default", u"SSH2", u"SFTP");
  }
  ~SessionOptionsDialogTest() override {
    FreeGlobalConfig();
    SetInstalled(false, false, false);
  }

  void MakeSession(const std::string& path, std::u16string_view protocol, std::u16string_view transfer) {
    m_folder.Write("Sessions\\" + path,
                   {{u"Is Session", 1}, {u"Protocol Name", protocol}, {u"File Transfer Protocol Name", transfer}});
  }

  NUnknownPointer<ISessionConfig> Open(std::u16string_view path) {
    NReportMessageParams params;
    return NUnknownPointer<ISessionConfig>::Adopt(NOpenSession(path, false, params));
  }

  // The dialog on `path` after its opening, with `script` run in it.
  std::intptr_t Run(std::u16string_view path, int mode, NHeadlessDialogBackend::Script script) {
    auto session = Open(path);
    bool fontsChanged = false;
    SessionOptionsDialog dialog(m_global, session.Get(), mode, false, true, 0, false, 0, false, fontsChanged, nullptr);
    m_backend.SetScript(std::move(script));
    return dialog.DoModal();
  }

  // The tree as "DEPTH TITLE" for every page shown, in order.
  static std::string Shown(const NPropertyTreeDialog& dialog) {
    std::string text;
    for (const NPropertyTreeDialog::Row& row : dialog.VisibleRows()) {
      text += (text.empty() ? "" : ", ") + std::to_string(row.depth) + " " + row.page->Title().ToUtf8();
    }
    return text;
  }

  static void Choose(NPropertyTreeDialog& dialog, std::u16string_view label, std::u16string_view name) {
    NFormControl* control = dialog.FindPage(u"Connection")->Form().Find(label);
    ASSERT_NE(control, nullptr);
    ASSERT_EQ(control->SetValue(NUnicodeString(name)), NEditResult::kDone) << NUnicodeString(name).ToUtf8();
  }

  NConfigTestFolder m_folder;
  GlobalConfig* m_global = nullptr;
  NHeadlessDialogBackend m_backend;
  NScopedDialogBackend m_installed{m_backend};
};

constexpr const char* kTerminalTree =
    "0 Terminal, 1 Emulation, 2 Modes, 2 Emacs, 2 Mapped Keys, 2 Advanced, 1 Appearance, 2 ANSI Color, 2 Window, "
    "1 Log File, 1 Printing, 1 X/Y/Zmodem";
constexpr const char* kTransferTree = "0 File Transfer, 1 FTP/SFTP, 1 Advanced";

TEST_F(SessionOptionsDialogTest, PagesFollowTheInstalledApplicationsAndTheSessionsProtocols) {
  const struct {
    const char* name;
    bool skeldon, quenn, parrow;
    std::u16string_view protocol, transfer;
    std::string tree;
  } cases[] = {
      {"everything, SSH2 carries SFTP", true, false, true, u"SSH2", u"SFTP",
       std::string("0 Connection, 1 Logon Actions, 1 SSH2, ") + kTerminalTree + ", " + kTransferTree},
      {"SSH2 beside FTP: two protocol pages", true, false, true, u"SSH2", u"FTP",
       std::string("0 Connection, 1 Logon Actions, 1 SSH2, 1 FTP, ") + kTerminalTree + ", " + kTransferTree},
      {"Telnet beside SCP", true, false, true, u"Telnet", u"SCP",
       std::string("0 Connection, 1 Logon Actions, 1 Telnet, 1 SCP, ") + kTerminalTree + ", " + kTransferTree},
      {"no terminal protocol", true, false, true, u"None", u"FTP",
       std::string("0 Connection, 1 FTP, ") + kTransferTree},
      {"no file-transfer protocol", true, false, true, u"Serial", u"None",
       std::string("0 Connection, 1 Logon Actions, 1 Serial, ") + kTerminalTree},
      // Without the terminal application no SSH2 entry carries SFTP.
      {"only the file-transfer application", false, false, true, u"SSH2", u"SFTP",
       std::string("0 Connection, 1 Logon Actions, 1 SSH2, 1 SFTP, ") + kTransferTree},
      // The stored transfer protocol still names its page.
      {"only the older terminal", false, true, false, u"Telnet", u"SFTP",
       std::string("0 Connection, 1 Logon Actions, 1 Telnet, 1 SFTP, ") + kTerminalTree},
      {"only the older terminal, no transfer protocol", false, true, false, u"Telnet", u"None",
       std::string("0 Connection, 1 Logon Actions, 1 Telnet, ") + kTerminalTree},
      {"without the terminal, SSH2 has no SFTP to carry", false, true, true, u"SSH2", u"SFTP",
       std::string("0 Connection, 1 Logon Actions, 1 SSH2, 1 SFTP, ") + kTerminalTree + ", " + kTransferTree},
  };
  for (const auto& c : cases) {
    SetInstalled(c.skeldon, c.quenn, c.parrow);
    MakeSession("s", c.protocol, c.transfer);
    std::string tree;
    Run(u"s", 0, [&](NPropertyTreeDialog& dialog) { tree = Shown(dialog); });
    EXPECT_EQ(tree, c.tree) << c.name;
  }
}

TEST_F(SessionOptionsDialogTest, ProtocolPagesFollowTheChoicesOnTheConnectionPage) {
  const struct {
    const char* name;
    std::vector<std::pair<std::u16string_view, std::u16string_view>> choices;
    std::string protocolPages;
  } cases[] = {
      {"Serial hides the SFTP page SSH2 carried", {{kProtocol, u"Serial"}}, "Serial"},
      {"Telnet needs SFTP's page", {{kProtocol, u"Telnet"}}, "Telnet, SFTP"},
      {"back to SSH2 hides SFTP again", {{kProtocol, u"Telnet"}, {kProtocol, u"SSH2"}}, "SSH2"},
      {"FTP beside SSH2", {{kTransfer, u"FTP"}}, "SSH2, FTP"},
      {"SCP under SSH2 needs no page", {{kTransfer, u"FTP"}, {kTransfer, u"SCP"}}, "SSH2"},
      {"no terminal protocol", {{kProtocol, u"None"}}, "SFTP"},
  };
  for (const auto& c : cases) {
    MakeSession("s", u"SSH2", u"SFTP");
    std::string pages;
    bool terminalShown = true;
    Run(u"s", 0, [&](NPropertyTreeDialog& dialog) {
      for (const auto& [label, name] : c.choices) Choose(dialog, label, name);
      for (const NPropertyTreeDialog::Row& row : dialog.VisibleRows()) {
        if (dynamic_cast<SessionProtocolPage*>(row.page)) {
          pages += (pages.empty() ? "" : ", ") + row.page->Title().ToUtf8();
        }
      }
      terminalShown =
          dialog.IsPageShown(dialog.FindPage(u"Terminal")) && dialog.IsPageShown(dialog.FindPage(u"Logon Actions"));
    });
    EXPECT_EQ(pages, c.protocolPages) << c.name;
    EXPECT_EQ(terminalShown, c.choices.back().second != u"None") << c.name;
  }
}

TEST_F(SessionOptionsDialogTest, TitlesAndTheLockedSessionsReadOnlyDialog) {
  MakeSession("Lab\\router1", u"SSH2", u"SFTP");
  std::string title;
  Run(u"Lab\\router1", kSessionDialogMultiple, [&](NPropertyTreeDialog& dialog) { title = dialog.Title().ToUtf8(); });
  EXPECT_EQ(title, "Session Options - multiple");
  Run(u"Lab\\router1", 0, [&](NPropertyTreeDialog& dialog) { title = dialog.Title().ToUtf8(); });
  EXPECT_EQ(title, "Session Options - router1 ");
  EXPECT_TRUE(NShownMessageBoxes().empty());

  // Locked: read-only title, OK off, every control off, and the notice
  // until its box is ticked.
  m_backend.SetTickOptional(true);
  bool okEnabled = true, anyEnabled = false;
  const std::intptr_t result = Run(u"Lab\\router1", kSessionDialogLocked, [&](NPropertyTreeDialog& dialog) {
    title = dialog.Title().ToUtf8();
    okEnabled = dialog.IsOkEnabled();
    for (const NPropertyTreeDialog::Row& row : dialog.AllRows()) {
      for (const auto& control : row.page->Form().Controls()) anyEnabled |= control->HasValue() && control->IsEnabled();
    }
    EXPECT_FALSE(dialog.PressOk());
  });
  EXPECT_EQ(title, "Session Options - router1 (Read Only)");
  EXPECT_FALSE(okEnabled);
  EXPECT_FALSE(anyEnabled);
  EXPECT_NE(result, IModalDialog::kOk);
  ASSERT_EQ(NShownMessageBoxes().size(), 1u);
  EXPECT_EQ(NShownMessageBoxes()[0].code, 0x61380007u);
  EXPECT_EQ(NShownMessageBoxes()[0].text.ToUtf8(),
            "The Sessions Options that you are opening are being used by a locked session.  You will not be able to "
            "save changes to the session.");
  EXPECT_EQ(NShownMessageBoxes()[0].style & kMessageBoxButtonsMask, kMessageBoxOk);
  Run(u"Lab\\router1", kSessionDialogLocked, [](NPropertyTreeDialog&) {});
  EXPECT_EQ(NShownMessageBoxes().size(), 1u) << "the ticked box keeps the notice away";
}

TEST_F(SessionOptionsDialogTest, TheLastPageShownIsSelectedAtTheNextOpening) {
  Run(u"Default", 0, [](NPropertyTreeDialog& dialog) {
    ASSERT_TRUE(dialog.SelectPage(dialog.FindPage(u"Window")));
    dialog.PressCancel();
  });
  std::string current;
  Run(u"Default", 0, [&](NPropertyTreeDialog& dialog) { current = dialog.CurrentPage()->Title().ToUtf8(); });
  EXPECT_EQ(current, "Window");
  SessionOptionsDialogBase::PageStateMap().SetLastPage({});
}

TEST_F(SessionOptionsDialogTest, PagesRefuseWhatTheSessionCannotHold) {
  // Both protocols "None", then too many columns: each keeps the dialog open
  // with its message.
  const std::intptr_t result = Run(u"Default", 0, [&](NPropertyTreeDialog& dialog) {
    Choose(dialog, kProtocol, u"None");
    Choose(dialog, kTransfer, u"None");
    EXPECT_FALSE(dialog.PressOk());
    Choose(dialog, kTransfer, u"FTP");
    ASSERT_TRUE(dialog.SelectPage(dialog.FindPage(u"Connection")));
    Choose(dialog, kProtocol, u"SSH2");
    NPropertyTreePage* emulation = dialog.FindPage(u"Emulation");
    ASSERT_TRUE(dialog.SelectPage(emulation));
    NFormControl* columns = emulation->Form().Find(SessionEmulationPage::kColumnsLabel);
    ASSERT_NE(columns, nullptr);
    ASSERT_EQ(columns->SetValue(std::int64_t{5000}), NEditResult::kDone);
    EXPECT_FALSE(dialog.PressOk());
    ASSERT_EQ(columns->SetValue(std::int64_t{132}), NEditResult::kDone);
    EXPECT_TRUE(dialog.PressOk());
  });
  EXPECT_EQ(result, IModalDialog::kOk);
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0].text.ToUtf8(), "Both selected protocols cannot be 'None'.");
  EXPECT_EQ(shown[1].code, 0xE1380004u);
  EXPECT_EQ(shown[1].text.ToUtf8(),
            "Please enter an integer between 1 and 1024.\r\n\r\nThe maximum number of columns can be set up to 1024 "
            "on the Appearance page in the Global Options dialog.");
}

TEST_F(SessionOptionsDialogTest, AProtocolPageIsMadeOnceAndAnIndexPastTheTableThrows) {
  MakeSession("s", u"Telnet", u"FTP");
  Run(u"s", 0, [](NPropertyTreeDialog& dialog) {
    auto& session = static_cast<SessionOptionsDialogBase&>(dialog);
    const int telnet = SessionOptionsDialogBase::FindProtocol(u"telnet");
    SessionProtocolPage* page = session.ProtocolPage(telnet);
    ASSERT_NE(page, nullptr);
    session.UpdateSessionProtocolPages(telnet, SessionOptionsDialogBase::FindProtocol(u"Serial"),
                                       SessionOptionsDialogBase::FindProtocol(u"FTP"));
    session.UpdateSessionProtocolPages(SessionOptionsDialogBase::FindProtocol(u"Serial"), telnet, -1);
    EXPECT_EQ(session.ProtocolPage(telnet), page);
    EXPECT_TRUE(dialog.IsPageShown(page));
    EXPECT_THROW(session.ShowSessionProtocolPages(static_cast<int>(NProtocolTable::Count())), OutOfRange);
  });
}

TEST_F(SessionOptionsDialogTest, EditingTheDefaultSessionAppliesToAllButTheReadOnlyOnes) {
  MakeSession("one", u"SSH2", u"SFTP");
  MakeSession("Lab\\two", u"SSH2", u"SFTP");
  MakeSession("Lab\\three", u"Telnet", u"FTP");
  NSetSessionLocked(u"Lab\\two", true);
  m_backend.QueueChoice(1);  // "Change ALL sessions"
  m_backend.SetScript([](NPropertyTreeDialog& dialog) {
    NPropertyTreePage* emulation = dialog.FindPage(u"Emulation");
    ASSERT_TRUE(dialog.SelectPage(emulation));
    ASSERT_EQ(emulation->Form().Find(u"Rows")->SetValue(std::int64_t{50}), NEditResult::kDone);
    EXPECT_TRUE(dialog.PressOk());
  });
  EXPECT_TRUE(EditDefaultSession(m_global, 0, nullptr));
  NSetSessionLocked(u"Lab\\two", false);

  EXPECT_EQ(m_backend.Log().back().ToUtf8(), "choose Apply default session changes");
  ASSERT_EQ(NShownMessageBoxes().size(), 1u);
  EXPECT_EQ(NShownMessageBoxes()[0].code, kMsgSessionsNotUpdated);
  EXPECT_EQ(NShownMessageBoxes()[0].text.ToUtf8(),
            "Of your 3 sessions, 1 could not be updated because they are currently read-only.\r\n");
  for (const auto& [path, rows] : {std::pair{u"Default", 50}, {u"one", 50}, {u"Lab\\three", 50}, {u"Lab\\two", 24}}) {
    EXPECT_EQ(Open(path)->Config().m_terminal.m_rows.Get(), rows) << NUnicodeString(path).ToUtf8();
  }
}

}  // namespace
