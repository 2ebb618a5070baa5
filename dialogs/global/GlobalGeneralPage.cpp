#include "dialogs/global/GlobalGeneralPage.h"

namespace {

constexpr std::uint32_t kMsgLanguageChanged = 0x6138002E;

}  // namespace

GlobalGeneralPage::GlobalGeneralPage(GlobalConfig& global, NUnicodeString appName, bool showLanguage,
                                     bool scriptingAvailable)
    : NAnnouncingPage(u"General", std::move(appName)) {
  NForm& form = Form();
  form.Group(u"Session manager");
  NFormControl& manager = form.CheckBox(u"Show session manager", global.m_showSessionManager);
  form.CheckBox(u"Dockable session manager", global.m_useDockableSessionManager).EnabledWhenChecked(manager);
  form.CheckBox(u"Show connect dialog on startup", global.m_showConnectDialog);
  form.CheckBox(u"Show quick connect dialog on startup", global.m_showQuickConnectDialog);
  form.CheckBox(u"Show details in the connect dialog", global.m_showDetailsOnConnectDialog);
  form.CheckBox(u"Show sessions dialog", global.m_showSessionsDialog);
  form.CheckBox(u"New sessions use the wizard", global.m_newSessionUsesWizard);
  form.CheckBox(u"Sort sessions alphabetically", global.m_sortAlphabetical);
  form.CheckBox(u"Hide sessions whose names begin with a dot", global.m_hideDotSessionFiles);
  form.CheckBox(u"Remember which folders are expanded", global.m_saveConnectDialogFolderState);
  form.Number(u"Session filter delay (ms)", global.m_sessionFilterDelay, 0, 10000);
  form.Choice(u"Sort sessions by", global.m_connectDialogSortOrder,
              {{u"Name", std::int64_t{0}}, {u"Protocol", std::int64_t{1}}, {u"Host", std::int64_t{2}}});
  form.CheckBox(u"List sessions with file transfer only", global.m_showTransferOnlySessions);
  form.CheckBox(u"List sessions with a terminal only", global.m_showTerminalOnlySessions);
  form.CheckBox(u"Show connect bar", global.m_showConnectBar);
  form.CheckBox(u"Save new connect bar entries", global.m_saveNewConnectEntries);

  form.Group(u"Main window");
  form.CheckBox(u"Show toolbar", global.m_showToolbar);
  NFormControl& menuBar = form.CheckBox(u"Show menu bar", global.m_showMenuBar);
  form.CheckBox(u"Alt shows a hidden menu bar", global.m_hiddenMenuBarCanBeAccessed).EnabledWhenUnchecked(menuBar);
  form.CheckBox(u"Show status bar", global.m_showStatusBar);
  form.CheckBox(u"Show window toolbar", global.m_showWindowToolbar);
  const std::vector<NChoiceItem> themes = {
      {u"Standard", std::int64_t{0}}, {u"Large icons", std::int64_t{1}}, {u"Flat", std::int64_t{2}}};
  form.Choice(u"Toolbar theme", global.ProductId() == 6 || global.ProductId() == 9 ? global.m_parrowToolbarTheme
                                                                                    : global.m_skeldonToolbarTheme,
              themes);
  form.CheckBox(u"Save options on exit", global.m_autoSaveOptions);
  form.CheckBox(u"Remember the session windows' state", global.m_saveSessionWindowState);
  form.CheckBox(u"Single instance", global.m_singleInstance);
  form.CheckBox(u"Launch new windows in a separate process", global.m_launchNewWindowsInSeparateProcess);
  form.CheckBox(u"Minimize to the notification area", global.m_minimizeToTray);
  form.CheckBox(u"Disable the close button", global.m_disableClose);
  form.CheckBox(u"Exit when the last session disconnects", global.m_exitWhenLastSessionIsDisconnected);
  form.CheckBox(u"Use the old icons", global.m_useOldIcons);
  form.CheckBox(u"Limit the taskbar's preview thumbnails", global.m_limitTaskbarPreviewThumbnails);
  form.CheckBox(u"Disable desktop peek", global.m_disableAeroPeek);
  form.File(u"Menu and toolbar file", global.m_menuToolbarFile, u"Menu files (*.mnu)");
  form.Number(u"Recently used sessions", global.m_mruCount, 0, 16);
  form.Number(u"Recently used scripts", global.m_scriptMruCount, 0, 16);
  if (scriptingAvailable) form.CheckBox(u"Disable all scripting", global.m_disableAllScripting);

  form.Group(u"Language and updates");
  if (showLanguage) {
    std::vector<NChoiceItem> languages = {{u"As the system", NUnicodeString()},
                                          {u"English", NUnicodeString(u"en-US")},
                                          {u"Deutsch", NUnicodeString(u"de-DE")},
                                          {u"Français", NUnicodeString(u"fr-FR")},
                                          {u"日本語", NUnicodeString(u"ja-JP")}};
    NOfferStoredChoice(languages, global.m_locale.Get());
    Announce(form.Choice(NUnicodeString(kLanguageLabel), global.m_locale, std::move(languages)), kMsgLanguageChanged);
  }
  if (global.ProductId() == 6 || global.ProductId() == 9) {
    form.CheckBox(u"Never check for updates", global.m_prwNeverCheckForUpdates);
  } else {
    form.CheckBox(u"Never check for updates", global.m_quennNeverCheckForUpdates);
  }
  form.EndGroup();
}
