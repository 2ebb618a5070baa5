#include "dialogs/DemoOptionsDialog.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "config/NConfigEntry.h"
#include "config/NConfigTestFolder.h"
#include "platform/testing/NTestFiles.h"
#include "uicore/NHeadlessDialogBackend.h"

namespace {

// The demonstration dialog on a real folder, driven as a person would.
class DemoOptionsDialogTest : public testing::Test {
 protected:
  DemoOptionsDialogTest() {
    GetGlobalConfig(m_global, 3);
    NClearShownMessageBoxes();
  }
  ~DemoOptionsDialogTest() override { FreeGlobalConfig(); }

  std::string GlobalFile() const { return NReadFileBytes(m_folder.Root() / "global.ini"); }

  // Runs the dialog with `script`; its result.
  std::intptr_t Run(NHeadlessDialogBackend::Script script, const NPolicy& policy = {}) {
    DemoOptionsDialog dialog(*m_global, policy);
    m_backend.SetScript(std::move(script));
    return dialog.DoModal();
  }

  // Selects `page` and finds `label` on it, as a person looks for it.
  static NFormControl* Open(NPropertyTreeDialog& dialog, std::u16string_view page, std::u16string_view label) {
    NPropertyTreePage* found = dialog.FindPage(page);
    if (!found || !dialog.SelectPage(found)) return nullptr;
    return found->Form().Find(label);
  }

  NConfigTestFolder m_folder;
  GlobalConfig* m_global = nullptr;
  NHeadlessDialogBackend m_backend;
  NScopedDialogBackend m_installed{m_backend};
};

TEST_F(DemoOptionsDialogTest, OkWritesTheChangedSettingsAndOnlyThoseToTheKeyFile) {
  const std::intptr_t result = Run([](NPropertyTreeDialog& dialog) {
    NFormControl* tabs = Open(dialog, u"Tabs", u"Show session tabs");
    ASSERT_NE(tabs, nullptr);
    EXPECT_EQ(tabs->SetValue(false), NEditResult::kDone);
    EXPECT_EQ(dialog.FindPage(u"Tabs")->Form().Find(u"Minimum tab width")->SetValue(std::int64_t{60}),
              NEditResult::kDisabled);
    NFormControl* delay = Open(dialog, u"General", u"Session filter delay (ms)");
    ASSERT_NE(delay, nullptr);
    EXPECT_EQ(delay->SetValue(std::int64_t{250}), NEditResult::kDisabled);
    dialog.CurrentPage()->Form().Find(u"Show connect dialog on start")->SetValue(true);
    EXPECT_EQ(delay->SetValue(std::int64_t{250}), NEditResult::kDone);
    EXPECT_TRUE(dialog.PressOk());
  });
  EXPECT_EQ(result, IModalDialog::kOk);
  EXPECT_EQ(m_folder.Dword("Global", u"Show Session Tabs"), 0u);
  EXPECT_EQ(m_folder.Dword("Global", u"Session Filter Delay"), 250u);
  EXPECT_EQ(m_folder.Dword("Global", u"Min Tab Width"), std::nullopt);
  EXPECT_EQ(m_folder.Dword("Global", u"Show Toolbar"), std::nullopt) << "an untouched setting was written";
}

TEST_F(DemoOptionsDialogTest, CancelChangesNeitherTheRecordNorTheFile) {
  Run([](NPropertyTreeDialog& dialog) {
    Open(dialog, u"General", u"Show toolbar")->SetValue(true);
    dialog.PressOk();
  });
  const std::string before = GlobalFile();
  ASSERT_FALSE(before.empty());
  EXPECT_EQ(Run([](NPropertyTreeDialog& dialog) {
              Open(dialog, u"General", u"Show toolbar")->SetValue(false);
              Open(dialog, u"Files", u"Connect sound")->SetValue(NUnicodeString(u"ring.wav"));
              dialog.PressCancel();
            }),
            IModalDialog::kCancel);
  EXPECT_EQ(GlobalFile(), before);
  EXPECT_TRUE(m_global->m_showToolbar.Get());
  EXPECT_EQ(m_global->m_connectSoundFile.Get(), u"");
}

TEST_F(DemoOptionsDialogTest, APolicyLocksThePasswordsWithItsReason) {
  NPolicy policy;
  policy.disablePasswords = true;
  Run(
      [](NPropertyTreeDialog& dialog) {
        NFormControl* password = Open(dialog, u"Passwords", u"Anonymous FTP password");
        ASSERT_NE(password, nullptr);
        EXPECT_EQ(password->SetValue(NUnicodeString(u"secret")), NEditResult::kLocked);
        EXPECT_NE(password->LockReason().value_or(u"").find(u"Disable Passwords"), NUnicodeString::npos);
        dialog.FindPage(u"Passwords")->Form().ResetToDefaults();
        EXPECT_TRUE(dialog.PressOk());
      },
      policy);
  EXPECT_EQ(GlobalFile().find("Anonymous Password"), std::string::npos);

  Run([](NPropertyTreeDialog& dialog) {
    EXPECT_EQ(Open(dialog, u"Passwords", u"Anonymous FTP password")->SetValue(NUnicodeString(u"guest")),
              NEditResult::kDone);
    dialog.PressOk();
  });
  EXPECT_EQ(m_global->m_anonymousPassword.Get(), u"guest");
}

TEST_F(DemoOptionsDialogTest, ARefusedValueKeepsTheDialogOpenOnItsPageWithNothingSaved) {
  Run([this](NPropertyTreeDialog& dialog) {
    Open(dialog, u"Files", u"Connect sound")->SetValue(NUnicodeString(u"ring.mp3"));
    Open(dialog, u"General", u"Show toolbar")->SetValue(true);
    EXPECT_FALSE(dialog.PressOk());
    EXPECT_EQ(dialog.CurrentPage()->Title(), u"Files");
    ASSERT_EQ(NShownMessageBoxes().size(), 1u);
    EXPECT_EQ(NShownMessageBoxes()[0].text, u"The connect sound must be a .wav file.");
    EXPECT_FALSE(std::filesystem::exists(m_folder.Root() / "global.ini"));

    Open(dialog, u"Files", u"Connect sound")->SetValue(NUnicodeString(u"RING.WAV"));
    EXPECT_TRUE(dialog.PressOk());
  });
  EXPECT_EQ(m_global->m_connectSoundFile.Get(), u"RING.WAV");
}

TEST_F(DemoOptionsDialogTest, AFailedSaveIsReportedAndTheDialogStaysOpen) {
  std::filesystem::create_directory(m_folder.Root() / "global.ini");  // no file can be written there
  Run([](NPropertyTreeDialog& dialog) {
    Open(dialog, u"General", u"Show toolbar")->SetValue(true);
    EXPECT_FALSE(dialog.PressOk());
    EXPECT_EQ(dialog.Result(), 0);
    ASSERT_FALSE(NShownMessageBoxes().empty());
    EXPECT_EQ(NShownMessageBoxes().back().text.rfind(u"The options were not saved: ", 0), 0u);
  });
}

}  // namespace
