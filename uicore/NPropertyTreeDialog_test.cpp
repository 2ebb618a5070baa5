#include "uicore/NPropertyTreeDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "uicore/NHeadlessDialogBackend.h"
#include "uicore/testing/NTestField.h"

namespace {

using testing::ElementsAre;

// A page that records the frame's calls into a shared journal and can be
// told to refuse validation.
class JournalPage final : public NPropertyTreePage {
 public:
  JournalPage(NUnicodeString title, std::vector<std::string>* journal)
      : NPropertyTreePage(title), m_journal(journal), m_name(title.ToUtf8()) {
    Form().CheckBox(title + u" option", m_option);
  }
  bool OnValidate(NPageFailure& failure) override {
    m_journal->push_back("validate " + m_name);
    if (refuse) failure.text = u"bad " + Title();
    return !refuse;
  }
  bool OnOK() override {
    m_journal->push_back("ok " + m_name);
    return NPropertyTreePage::OnOK();
  }
  void OnCancel() override {
    m_journal->push_back("cancel " + m_name);
    NPropertyTreePage::OnCancel();
  }
  bool OnKillActive() override { return !keepActive; }

  NTestField<bool> m_option;
  bool refuse = false;
  bool keepActive = false;

 private:
  std::vector<std::string>* m_journal;
  std::string m_name;
};

class CountingView final : public IPropertyTreeView {
 public:
  void EndDialog(int result) override { ended.push_back(result); }
  void TreeChanged() override { ++trees; }
  void CurrentPageChanged() override {}
  void ButtonsChanged() override {}
  int trees = 0;
  std::vector<int> ended;
};

class NPropertyTreeDialogTest : public testing::Test {
 protected:
  NPropertyTreeDialogTest() {
    m_dialog.AddPage(&m_connection);
    m_dialog.AddPage(&m_terminal);
    m_connection.AddPage(&m_logon);
    m_terminal.AddPage(&m_emulation);
    m_emulation.AddPage(&m_modes);
    m_dialog.AddPage(&m_transfer);
    NClearShownMessageBoxes();
  }

  std::vector<std::string> Drawn() const {
    std::vector<std::string> rows;
    for (const auto& row : m_dialog.VisibleRows()) {
      rows.push_back(std::string(static_cast<std::size_t>(row.depth) * 2, ' ') + row.page->Title().ToUtf8());
    }
    return rows;
  }

  std::vector<std::string> m_journal;
  JournalPage m_connection{u"Connection", &m_journal};
  JournalPage m_logon{u"Logon Actions", &m_journal};
  JournalPage m_terminal{u"Terminal", &m_journal};
  JournalPage m_emulation{u"Emulation", &m_journal};
  JournalPage m_modes{u"Modes", &m_journal};
  JournalPage m_transfer{u"File Transfer", &m_journal};
  NPropertyPageStateMap m_stateMap;
  NPropertyTreeDialog m_dialog{u"Session Options", 0, &m_stateMap, nullptr};
  NHeadlessDialogBackend m_backend;
  NScopedDialogBackend m_installed{m_backend};
};

TEST_F(NPropertyTreeDialogTest, ChildrenFollowTheirParentsInTheOrderAdded) {
  EXPECT_THAT(Drawn(),
              ElementsAre("Connection", "  Logon Actions", "Terminal", "  Emulation", "    Modes", "File Transfer"));
  m_dialog.AddPage(&m_modes);  // already in the tree
  JournalPage orphan(u"Orphan", &m_journal), stray(u"Stray", &m_journal);
  m_dialog.AddPage(&stray, &orphan);  // under a page not in the tree
  EXPECT_EQ(m_dialog.VisibleRows().size(), 6u);
}

TEST_F(NPropertyTreeDialogTest, HidingASubtreeKeepsEachPagesOwnFlagAndMovesTheSelection) {
  ASSERT_TRUE(m_dialog.SelectPage(&m_modes));
  m_dialog.HidePage(&m_emulation);
  m_dialog.HidePage(&m_terminal);
  EXPECT_THAT(Drawn(), ElementsAre("Connection", "  Logon Actions", "File Transfer"));
  EXPECT_FALSE(m_dialog.IsPageShown(&m_modes));
  EXPECT_EQ(m_dialog.CurrentPage(), &m_connection) << "the current page left the tree and stayed current";
  EXPECT_FALSE(m_dialog.SelectPage(&m_modes));

  m_dialog.ShowPage(&m_terminal);
  EXPECT_THAT(Drawn(), ElementsAre("Connection", "  Logon Actions", "Terminal", "File Transfer"));

  m_dialog.RemovePage(&m_terminal);
  m_dialog.ShowPage(&m_emulation);  // no longer in the tree
  EXPECT_THAT(Drawn(), ElementsAre("Connection", "  Logon Actions", "File Transfer"));
  EXPECT_EQ(m_emulation.Dialog(), nullptr);
}

TEST_F(NPropertyTreeDialogTest, APageDestroyedFirstLeavesTheTreeWithItsChildren) {
  {
    JournalPage child(u"Child", &m_journal), gone(u"Gone", &m_journal);  // the parent goes first
    m_dialog.AddPage(&gone);
    gone.AddPage(&child);
    ASSERT_TRUE(m_dialog.SelectPage(&child));
  }
  EXPECT_EQ(m_dialog.VisibleRows().size(), 6u);
  EXPECT_EQ(m_dialog.CurrentPage(), nullptr);
}

TEST_F(NPropertyTreeDialogTest, RedrawIsHeldWhileSuspended) {
  CountingView view;
  m_dialog.SetView(&view);
  m_dialog.SuspendRedraw();
  m_dialog.HidePage(&m_terminal);
  m_dialog.HidePage(&m_transfer);
  EXPECT_EQ(view.trees, 0);
  m_dialog.ResumeRedraw();
  EXPECT_EQ(view.trees, 1);
  m_dialog.SetView(nullptr);
}

TEST_F(NPropertyTreeDialogTest, OkValidatesShownPagesInTreeOrderAndStopsAtTheFirstRefusal) {
  m_dialog.HidePage(&m_transfer);
  m_transfer.refuse = true;  // hidden: never asked
  m_emulation.refuse = true;
  m_modes.refuse = true;
  ASSERT_TRUE(m_dialog.SelectPage(&m_connection));
  m_connection.Form().Controls()[0]->SetValue(true);

  EXPECT_FALSE(m_dialog.PressOk());
  EXPECT_THAT(m_journal,
              ElementsAre("validate Connection", "validate Logon Actions", "validate Terminal", "validate Emulation"));
  EXPECT_EQ(m_dialog.CurrentPage(), &m_emulation) << "the refusing page was not selected";
  EXPECT_EQ(m_dialog.Result(), 0) << "a refused OK ended the dialog";
  EXPECT_FALSE(m_connection.m_option.value) << "a page was stored although another refused";
  const auto shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].text, u"bad Emulation");
  EXPECT_EQ(shown[0].caption, u"Session Options");

  m_emulation.refuse = m_modes.refuse = false;
  m_journal.clear();
  EXPECT_TRUE(m_dialog.PressOk());
  EXPECT_EQ(m_dialog.Result(), IModalDialog::kOk);
  EXPECT_EQ(m_journal.back(), "ok Modes");
  EXPECT_TRUE(m_connection.m_option.value);
}

TEST_F(NPropertyTreeDialogTest, ApplyStoresAndStaysOpenCancelDropsEdits) {
  ASSERT_TRUE(m_dialog.SelectPage(&m_terminal));
  EXPECT_FALSE(m_dialog.IsApplyEnabled());
  m_terminal.Form().Controls()[0]->SetValue(true);
  EXPECT_TRUE(m_dialog.IsApplyEnabled());
  EXPECT_TRUE(m_dialog.PressApply());
  EXPECT_TRUE(m_terminal.m_option.value);
  EXPECT_FALSE(m_dialog.IsApplyEnabled());
  EXPECT_EQ(m_dialog.Result(), 0);

  m_terminal.Form().Controls()[0]->SetValue(false);
  m_dialog.PressCancel();
  EXPECT_TRUE(m_terminal.m_option.value) << "Cancel wrote an edit";
  EXPECT_EQ(m_terminal.m_option.sets, 1);
  EXPECT_EQ(m_dialog.Result(), IModalDialog::kCancel);
  EXPECT_FALSE(m_dialog.PressOk()) << "an ended dialog took OK";
}

TEST_F(NPropertyTreeDialogTest, DisabledOkAndAPageThatKeepsTheFocusRefuse) {
  m_dialog.DisableOkButton(true);
  EXPECT_FALSE(m_dialog.PressOk());
  m_dialog.DisableOkButton(false);
  ASSERT_TRUE(m_dialog.SelectPage(&m_logon));
  m_logon.keepActive = true;
  EXPECT_FALSE(m_dialog.SelectPage(&m_terminal));
  EXPECT_FALSE(m_dialog.PressOk());
  EXPECT_TRUE(m_journal.empty());
}

TEST_F(NPropertyTreeDialogTest, ModalRunReturnsTheResultAndTheStateMapReopensThePage) {
  m_backend.SetScript([&](NPropertyTreeDialog& dialog) {
    EXPECT_EQ(dialog.CurrentPage(), &m_connection) << "a first opening starts on the first page";
    ASSERT_TRUE(dialog.SelectPage(dialog.FindPage(u"Modes")));
    dialog.PressOk();
  });
  EXPECT_EQ(m_dialog.DoModal(), IModalDialog::kOk);
  EXPECT_EQ(m_stateMap.LastPage(), u"Modes");

  // The next dialog of the kind opens on that page; a script that leaves
  // it open has it cancelled.
  NPropertyTreeDialog next(u"Session Options", 0, &m_stateMap, nullptr);
  JournalPage terminal(u"Terminal", &m_journal), modes(u"Modes", &m_journal);
  next.AddPage(&terminal);
  terminal.AddPage(&modes);
  m_backend.SetScript([&](NPropertyTreeDialog& dialog) { EXPECT_EQ(dialog.CurrentPage(), &modes); });
  m_journal.clear();
  EXPECT_EQ(next.DoModal(), IModalDialog::kCancel);
  EXPECT_THAT(m_journal, ElementsAre("cancel Terminal", "cancel Modes"));

  next.SetClearSelected(true);
  m_backend.SetScript([&](NPropertyTreeDialog& dialog) { EXPECT_EQ(dialog.CurrentPage(), &terminal); });
  next.DoModal();
  EXPECT_THAT(m_backend.Log(), testing::Contains(NUnicodeString(u"page 1 Modes")));
}

TEST_F(NPropertyTreeDialogTest, SearchKeepsMatchingPagesWithTheirAncestors) {
  ASSERT_TRUE(m_dialog.SelectPage(&m_transfer));
  m_dialog.SetSearch(u"MODES OPT");
  EXPECT_THAT(Drawn(), ElementsAre("Terminal", "  Emulation", "    Modes"));
  EXPECT_EQ(m_dialog.CurrentPage(), &m_terminal) << "the current page no longer drawn stayed current";
  EXPECT_TRUE(m_modes.Form().Controls()[0]->IsHighlighted());
  EXPECT_FALSE(m_terminal.Form().Controls()[0]->IsHighlighted());

  m_dialog.SetSearch(u"logon");
  EXPECT_THAT(Drawn(), ElementsAre("Connection", "  Logon Actions")) << "a title matches too";
  m_dialog.SetSearch(u"");
  EXPECT_EQ(m_dialog.VisibleRows().size(), 6u);
  EXPECT_FALSE(m_modes.Form().Controls()[0]->IsHighlighted());
}

TEST(NIsReadOnlyTest, OnlyALockedSessionIsReadOnly) {
  for (int mode : {0, 1, 3, 4, -1}) EXPECT_FALSE(NIsReadOnly(mode)) << mode;
  EXPECT_TRUE(NIsReadOnly(2));
}

}  // namespace
