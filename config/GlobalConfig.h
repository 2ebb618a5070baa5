#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "base/NExport.h"
#include "config/NProfile.h"

// The settings of "QuickSync", the quick synchronisation of a local and a
// remote folder, kept under a key of their own beside "Global".
class NQuickSyncConfig final : public NProfileRecord {
 public:
  NProfileInt m_direction{this, u"Direction"};
  NProfileBool m_includeSubfolders{this, u"Include Subfolders", true};
  NProfileBool m_deleteExtraFiles{this, u"Delete Extra Files"};
  NProfileBool m_compareContents{this, u"Compare Contents"};
  NProfileBool m_preview{this, u"Preview", true};
  NProfileString m_includeFilter{this, u"Include Filter", NUnicodeString(u"*")};
  NProfileString m_excludeFilter{this, u"Exclude Filter"};
  NProfileString m_localFolder{this, u"Local Folder"};
  NProfileString m_remoteFolder{this, u"Remote Folder"};
};

// The one process-wide record of application settings, under the key
// "Global". Hosts read and change its fields directly; the library's entry
// points create, reload, save, merge and release it.
//
// Reference counted: the library holds one reference while the record is
// the process-wide one. Lock and Unlock bracket every whole-record
// operation; the lock is recursive.
class CFGDECK_API GlobalConfig final : public NProfileRecord {
 public:
  // The format identifiers a current configuration folder's "Version"
  // begins with; a save stamps the first on a record without one.
  static constexpr std::u16string_view kFormatIdentifiers[] = {u"0311ABC6-1CDD-46fc-A08A-0D7C00242FCA",
                                                               u"7B2F2717-85C8-4729-8394-3B7697039CEB"};

  // A record for `productId` (6 and 9 bind the " PRW" names), holding the
  // defaults; Load reads a key into it.
  explicit GlobalConfig(int productId);
  ~GlobalConfig() override;

  virtual std::uint32_t AddRef();
  virtual std::uint32_t Release();
  virtual void Lock();
  virtual void Unlock();

  int ProductId() const { return m_productId; }
  std::uint8_t StateFlag() const { return m_stateFlag; }
  void SetStateFlag(std::uint8_t flag) { m_stateFlag = flag; }

  // Reads every field from `global` (versioned fields take a converted
  // older value when their own is absent) and the quick-sync settings from
  // `quickSync` when given.
  void Load(const NProfileKey& global, const NProfileKey* quickSync);
  // Reads every field from `key` as Load does, keeping the passphrase and
  // the state flag: a merge never replaces them.
  void Merge(const NProfileKey& key);
  // The fields written ahead of the others, in their order.
  std::vector<NProfileData*> EarlyFields() const;
  // Writes the record under `global`: the early fields, the quick-sync
  // settings under root's "QuickSync" when they changed, then the rest;
  // `all` also writes unchanged values. Flushes both keys; false, with
  // params saying why, when a value was refused or a flush failed.
  bool Save(NProfileKey& root, NProfileKey& global, bool all, NReportMessageParams& params);

  // The conversions of the older forms of the versioned fields.
  static NUnicodeString ConvertTabState(std::u16string_view old, std::u16string_view defaultV2);

  NQuickSyncConfig m_quickSync;

 private:
  // The name a field is bound to: the " PRW" one for the file-transfer
  // products.
  std::u16string_view Prw(std::u16string_view plain, std::u16string_view prw) const {
    return IsTransferProduct() ? prw : plain;
  }
  bool IsTransferProduct() const { return m_productId == 6 || m_productId == 9; }

  const int m_productId;
  std::uint8_t m_stateFlag = 0;
  std::atomic<std::uint32_t> m_references{1};
  std::recursive_mutex m_lock;

 public:
  // ---- Record and protection
  NProfileString m_version{this, u"Version"};
  NProfileEncrypted m_configPassphrase{this, u"Config Passphrase"};
  NProfileBool m_changeConfigPassphrase{this, u"Change Config Passphrase"};

  // ---- Connect dialog and session manager
  NProfileBool m_showConnectDialog{this, u"Show Connect Dialog"};
  NProfileBool m_showDetailsOnConnectDialog{this, u"Show Details on Connect Dialog"};
  NProfileBool m_showQuickConnectDialog{this, u"Show Quick Connect Dialog"};
  NProfileBool m_showTransferOnlySessions{this, u"Show Transfer Only Sessions"};
  NProfileBool m_showTerminalOnlySessions{this, u"Show Terminal Only Sessions"};
  NProfileBool m_useDockableSessionManager{this, Prw(u"Use Dockable Session Manager", u"Use Dockable Session Manager PRW")};
  NProfileStruct<NRect> m_connectDialogSize{this, u"Connect Dialog Size"};
  NProfileString m_connectExpandPath{this, u"Connect Expand Path"};
  NProfileBool m_isExpanded{this, u"Is Expanded"};
  NProfileBool m_sortAlphabetical{this, u"Sort Alphabetical"};
  NProfileBool m_hideDotSessionFiles{this, u"Hide Dot Session Files"};
  NProfileBool m_saveConnectDialogFolderState{this, u"Save Connect Dialog Folder State"};
  NProfileInt m_sessionFilterDelay{this, u"Session Filter Delay"};
  NProfileInt m_connectDialogSortOrder{this, u"Connect Dialog Sort Order"};
  NProfileStruct<NLogFont> m_connectDialogFont{this, u"Connect Dialog Font", NLogFont::Make(u"Segoe UI", -12)};
  NProfileBool m_showSessionManager{this, Prw(u"Show Session Manager", u"Show Session Manager PRW"), true};
  NProfileString m_sessionManagerWindowState{this, Prw(u"Session Manager Window State", u"Session Manager Window State PRW")};
  NProfileBool m_showConnectBar{this, u"Show Connect Bar", true};
  NProfileBool m_saveNewConnectEntries{this, u"Save New Connect Entries", true};
  NProfileBool m_showSessionsDialog{this, u"Show Sessions Dialog", true};
  NProfileBool m_newSessionUsesWizard{this, u"New Session Uses Wizard", true};

  // ---- Main window
  NProfileBool m_autoSaveOptions{this, u"Auto Save Options"};
  NProfileBool m_showToolbar{this, Prw(u"Show Toolbar", u"Show Toolbar PRW")};
  NProfileStruct<NWindowPlacement> m_windowPlacement{this, u"Window Placement", DefaultPlacement(0)};
  NProfileBool m_disableAeroPeek{this, u"Disable Aero Peek"};
  NProfileBool m_showMenuBar{this, Prw(u"Show Menu Bar", u"Show Menu Bar PRW"), true};
  NProfileBool m_hiddenMenuBarCanBeAccessed{this, u"Hidden Menu Bar Can Be Accessed"};
  NProfileBool m_showStatusBar{this, Prw(u"Show Status Bar", u"Show Status Bar PRW"), true};
  NProfileInt m_xPosition{this, u"X Position"};
  NProfileInt m_yPosition{this, u"Y Position"};
  NProfileBool m_saveSessionWindowState{this, u"Save Session Window State"};
  NProfileBool m_disableClose{this, u"Disable Close"};
  NProfileBool m_singleInstance{this, u"Single Instance"};
  NProfileBool m_minimizeToTray{this, u"Minimize To Tray"};
  NProfileBool m_useOldIcons{this, u"Use Old Icons"};
  NProfileBool m_useLargeTabBar{this, u"Use Large Tab Bar"};
  NProfileBool m_limitTaskbarPreviewThumbnails{this, u"Limit Windows Taskbar Preview Thumbnails", true};
  NProfileBool m_launchNewWindowsInSeparateProcess{this, u"Launch New Windows in a Separate Process"};
  NProfileBool m_exitWhenLastSessionIsDisconnected{this, u"Exit When Last Session Is Disconnected"};
  NProfileString m_menuToolbarFile{this, u"Menu Toolbar File"};
  NProfileBytes m_prwCustomToolbarData{this, u"PRW Custom Toolbar Data"};
  NProfileInt m_parrowToolbarTheme{this, u"Parrow Toolbar Theme"};
  NProfileInt m_skeldonToolbarTheme{this, u"Skeldon Toolbar Theme"};
  NProfileBool m_showWindowToolbar{this, u"Show Window Toolbar", true};
  NProfileString m_globalOptionsTreeState{this, u"Global Options Tree State", NUnicodeString(u"1001000100")};
  NProfileString m_globalOptionsTreeSelected{this, u"Global Options Tree Selected", NUnicodeString(u"Global+")};
  NProfileString m_sessionOptionsTreeState{this, u"Session Options Tree State", NUnicodeString(u"1010000101010010")};
  NProfileString m_sessionOptionsTreeSelected{this, u"Session Options Tree Selected", NUnicodeString(u"Session+")};
  NProfileString m_locale{this, u"Locale"};

  // ---- Tabs and status indicators
  NProfileBool m_reuseDisconnectedTabs{this, u"Reuse Disconnected Tabs"};
  NProfileInt m_minTabWidth{this, u"Min Tab Width", 40};
  NProfileInt m_doubleClickAction{this, u"Double Click Action"};
  NProfileInt m_tabLocation{this, u"Tab Location"};
  NProfileBool m_closeButtonOnTabs{this, u"Close Button On Tabs", true};
  NProfileBool m_confirmCloseMultipleTabs{this, u"Confirm Close Multiple Tabs"};
  NProfileBool m_showMultipleTabsOnly{this, u"Show Multiple Tabs Only"};
  NProfileBool m_enableTabSwitchingHistory{this, u"Enable Tab Switching History"};
  NProfileBool m_showSessionTabs{this, u"Show Session Tabs", true};
  NProfileBool m_openSessionsInTab{this, u"Open Sessions In Tab", true};
  NProfileString m_skeldonTabState{this, u"Skeldon Tab State V2", NUnicodeString(u"1,1,0;")};
  NProfileBool m_showStatusIndicators{this, u"Show Status Indicators", true};
  NProfileInt m_statusIndicatorStyle{this, u"Status Indicator Style"};
  NProfileInt m_statusIndicatorWidth{this, u"Status Indicator Width", 2};
  NProfileColor m_connectedColor{this, u"Connected Color", 0x28C828};
  NProfileColor m_disconnectedColor{this, u"Disconnected Color", 0x0000FF};
  NProfileColor m_newInputColor{this, u"New Input Color", 0xFF0000};
  NProfileColor m_inactivityColor{this, u"Inactivity Color", 0x00FFFF};
  NProfileColor m_lockedColor{this, u"Locked Color", 0xAAAAAA};
  NProfileColor m_backgroundConnectedColor{this, u"Background Connected Color", 0xAAFFAA};
  NProfileColor m_backgroundDisconnectedColor{this, u"Background Disconnected Color", 0xAAAAFF};
  NProfileColor m_backgroundNewInputColor{this, u"Background New Input Color", 0xFFC88C};
  NProfileColor m_backgroundInactivityColor{this, u"Background Inactivity Color", 0xA0FFFF};
  NProfileColor m_backgroundLockedColor{this, u"Background Locked Color", 0xAAAAAA};
  NProfileBool m_showInactivityStatus{this, u"Show Inactivity Status"};
  NProfileInt m_inactivityTimeoutValue{this, u"Inactivity Timeout Value", 5000};

  // ---- Terminal behaviour
  NProfileBool m_copyOnSelect{this, u"Copy On Select"};
  NProfileBool m_pasteOnMiddleButton{this, u"Paste On Middle Button"};
  NProfileBool m_pasteOnRightButton{this, u"Paste On Right Button"};
  NProfileBool m_hideMousePointerOnKeypress{this, u"Hide Mouse Pointer On Keypress"};
  NProfileBool m_openUrlWithCtrlClick{this, u"Open URL with CTRL+click"};
  NProfileBool m_showConnectionClosedDialog{this, u"Show Connection Closed Dialog"};
  NProfileBool m_showConfirmDisconnectDialog{this, u"Show Confirm Disconnect Dialog"};
  NProfileBool m_disableResize{this, u"Disable Resize"};
  NProfileBool m_clipOnResize{this, u"Clip On Resize"};
  NProfileBool m_showCursorPositionIndicator{this, u"Show Cursor Position Indicator"};
  NProfileBool m_showWindowSizeIndicator{this, u"Show Window Size Indicator"};
  NProfileBool m_useSystemCaret{this, u"Use System Caret"};
  NProfileBool m_focusDoesNotAffectBlink{this, u"Focus Does Not Affect Blink"};
  NProfileBool m_executeEscapeSequence{this, u"Execute Escape Sequence"};
  NProfileBool m_suppressExecuteEscapeSequenceExitCodes{this, u"Suppress Execute Escape Sequence Exit Codes"};
  NProfileInt m_altSelectsMenu{this, u"Alt Selects Menu", 1};
  NProfileInt m_checkShellTelnetCommand{this, u"Check Shell Telnet Command", 1};
  NProfileString m_terminalLogFile{this, u"Terminal Log File"};
  NProfileBool m_showElapsedTime{this, u"Show Elapsed Time"};
  NProfileBool m_neverShowSeconds{this, u"Never Show Seconds"};
  NProfileBool m_alphaTransparency{this, u"Alpha Transparency"};
  NProfile<std::uint16_t> m_activeWindowAlpha{this, u"Active Window Alpha Transparency", 255};
  NProfile<std::uint16_t> m_inactiveWindowAlpha{this, u"Inactive Window Alpha Transparency", 255};
  NProfileBool m_autoReconnect{this, u"Auto Reconnect"};
  NProfileInt m_autoReconnectInterval{this, u"Auto Reconnect Interval", 5};
  NProfileBool m_hideAutoReconnectDialog{this, u"Hide Auto Reconnect Dialog"};
  NProfileInt m_maxScrollbackBufferSize{this, u"Max Scrollback Buffer Size", 128000};
  NProfileBool m_horizontalScrollbar{this, u"Horizontal Scrollbar"};
  NProfileBool m_verticalScrollbar{this, u"Vertical Scrollbar", true};
  NProfileInt m_viewLeftMargin{this, u"View Left Margin", 3};
  NProfileInt m_maxColumns{this, u"Max Columns", 1024};
  NProfileBool m_allowProportionalFonts{this, u"Allow Proportional Fonts"};
  NProfileBool m_enableFontSmoothing{this, u"Enable Font Smoothing"};
  NProfileInt m_clipboardDataFormat{this, u"Clipboard Data Format"};
  NProfileInt m_lineSendDelay{this, u"Line Send Delay", 5};
  NProfileInt m_characterSendDelay{this, u"Character Send Delay"};
  NProfileBool m_treatCjkAmbiguousCharsAsWide{this, u"Treat CJK Ambiguous Chars As Wide"};
  NProfileBool m_zoomOnCtrlScrollwheel{this, u"Zoom on Ctrl Scrollwheel", true};
  NProfileBool m_zoomOnKeyboardShortcut{this, u"Zoom on Keyboard Shortcut"};
  NProfileInt m_hexViewBuffer{this, u"Hex View Buffer", 100};
  NProfileString m_hexViewFont{this, u"Hex View Font", NUnicodeString(u"Courier New")};
  NProfileBool m_useDefaultSessionColorOnStartup{this, u"Use Default Session Color On Startup"};
  NProfileStruct<NColorTable> m_customColors{this, u"Custom Colors", DefaultCustomColors()};
  NProfileStruct<NColorTable> m_ansiColorRgb{this, u"ANSI Color RGB", NDefaultAnsiColors()};
  NProfileBytes m_colorSchemes{this, u"Color Schemes", DefaultColorSchemes()};

  // ---- Keyboard
  NProfileBool m_showDefaultKeyMappings{this, u"Show Default Key Mappings"};
  NProfileBool m_suppressMappedKeyIsDefaultWarning{this, u"Suppress Mapped Key Is Default Warning"};
  NProfileBool m_swapEnterAndCtrlEnterInCommandWindow{this, u"Swap Enter and Ctrl+Enter in Command Window"};

  // ---- Chat (command) window and button bar
  NProfileBool m_showChatWindow{this, u"Show Chat Window"};
  NProfileInt m_chatWindow{this, u"Chat Window"};
  NProfileString m_userButtonBar{this, u"User Button Bar"};
  NProfileInt m_buttonBarLocation{this, u"Button Bar Location"};
  NProfileInt m_maxChatWindowHistory{this, u"Max Chat Window History", 200};
  NProfileInt m_chatWindowHeight{this, u"Chat Window Height", 100};
  NProfileBool m_enableSendChatToAllTabsOnStartup{this, u"Enable Send Chat To All Tabs On Startup"};

  // ---- Sessions at start-up
  NProfileBool m_useAutoSession{this, Prw(u"Use Auto Session", u"Use Auto Session PRW")};
  NProfileString m_autoSessionName{this, Prw(u"Auto Session Name", u"Auto Session Name PRW")};
  NProfileBool m_useRememberedSessions{this, Prw(u"Use Remembered Sessions", u"Use Remembered Sessions PRW")};
  NProfileStrings m_rememberedSessions{
      this, IsTransferProduct() ? u"Remembered Sessions List PRW" : u"Remembered Sessions List V2"};
  NProfileInt m_mruCount{this, u"MRU Count", 4};
  NProfileInt m_scriptMruCount{this, u"Script MRU Count", 10};
  NProfileString m_lastScriptRun{this, u"Last Script Run"};
  NProfileBool m_disableAllScripting{this, u"Disable All Scripting"};
  NProfileBool m_useKeychain{this, u"Use Keychain"};
  NProfileBool m_keepSharedMemoryAgentOpen{this, u"Keep Shared Memory Agent Open", true};
  NProfileString m_kindlerAgentKeysListViewState{this, u"Kindler Agent Keys ListView State"};
  NProfileString m_certificatePath{this, u"Certificate Path"};

  // ---- Prompts that may be suppressed
  NProfileBool m_suppressDifferentGeometryDialog{this, u"Suppress Different Geometry Dialog"};
  NProfileBool m_suppressMultipleSessionsWarning{this, u"Suppress Multiple Sessions Warning"};
  NProfileBool m_suppressDisconnectSelectedPrompt{this, u"Suppress Disconnect Selected Prompt"};
  NProfileBool m_suppressDisconnectAllPrompt{this, u"Suppress Disconnect All Prompt"};
  NProfileBool m_suppressEditMultipleSessionsDialog{this, u"Suppress Edit Multiple Sessions Dialog"};
  NProfileBool m_suppressReadOnlySessionOptionsWarning{this, u"Suppress Read Only Session Options Warning"};
  NProfileInt m_offerHelp{this, u"Offer Help"};
  NProfileInt m_offerHelpX{this, u"Offer HelpX"};
  NProfileInt m_oeex{this, u"OEEX"};
  NProfileInt m_offerHelpV{this, u"Offer HelpV"};
  NProfileInt m_oeev{this, u"OEEV"};

  // ---- Printing
  NProfileInt m_ejectPageInterval{this, u"Eject Page Interval"};
  NProfileBool m_enablePrintScreenKey{this, u"Enable Print Screen Key"};

  // ---- Web browser
  NProfileInt m_httpUseRegistryEntry{this, u"HTTP Use Registry Entry", 1};
  NProfileString m_httpBrowserApplication{this, u"HTTP Browser Application"};
  NProfileBool m_httpUseDde{this, u"HTTP Use DDE"};

  // ---- Legacy transfer protocols
  NProfileBool m_zmodemUploadAscii{this, u"ZModem Upload ASCII"};
  NProfileBool m_kermitUploadAscii{this, u"Kermit Upload ASCII"};

  // ---- TFTP server
  NProfileString m_tftpLogFile{this, u"Tftp Log File"};
  NProfileInt m_tftpServerPort{this, u"Tftp Server Port"};
  NProfileInt m_tftpServerStartOption{this, u"TFTP Server Start Option"};
  NProfileString m_tftpServerUploadDirectory{this, u"TFTP Server Upload Directory"};
  NProfileString m_tftpServerDownloadDirectory{this, u"TFTP Server Download Directory"};
  NProfileBool m_restrictConnectionsToTftpServer{this, u"Restrict Connections To TFTP Server"};

  // ---- Update checks
  NProfileBool m_prwNeverCheckForUpdates{this, u"PRW Never Check For Updates"};
  NProfileBool m_quennNeverCheckForUpdates{this, u"Quenn Never Check For Updates"};
  NProfileTime m_prwUpdatePromptDate{this, u"PRW Update Prompt Date"};
  NProfileTime m_quennUpdatePromptDate{this, u"Quenn Update Prompt Date", NFileTime::Now()};

  // ---- File transfer
  NProfileInt m_transferType{this, u"Transfer Type"};
  NProfileInt m_overwriteAction{this, u"Overwrite Action"};
  NProfileString m_anonymousPassword{this, u"Anonymous Password"};
  NProfileBool m_enableLogFile{this, u"Enable Log File"};
  NProfileString m_logFile{this, u"Log File"};
  NProfileBool m_enableSynchronizeAppLogFile{this, u"Enable Synchronize App Log File"};
  NProfileString m_synchronizeAppLogFile{this, u"Synchronize App Log File"};
  NProfileBool m_logUsesGenericWriteFlag{this, u"Log Uses Generic Write Flag"};
  NProfileInt m_filePermissions{this, u"File Permissions"};
  NProfileInt m_directoryPermissions{this, u"Directory Permissions"};
  NProfileInt m_timeout{this, u"Timeout"};
  NProfileInt m_logBufferSize{this, u"Log Buffer Size"};
  NProfileString m_initialLocalFolder{this, u"Initial Local Folder"};
  NProfileString m_lastLocalDirectory{this, u"Last Local Directory"};
  NProfileString m_cacheDirectory{this, u"Cache Directory"};
  NProfileString m_defaultDownloadDirectory{this, u"Default Download Directory"};
  NProfileString m_downloadDirectory{this, u"Download Directory"};
  NProfileInt m_receiveBufferSize{this, u"Receive Buffer Size"};
  NProfileInt m_sendBufferSize{this, u"Send Buffer Size"};
  NProfileBool m_moveFilesToRecycleBin{this, u"Move Files To Recycle Bin"};
  NProfileInt m_remoteEditUploadAction{this, u"Remote Edit Upload Action"};
  NProfileBool m_remoteEditUploadOnModify{this, u"Remote Edit Upload On Modify V2", true};
  NProfileBool m_keepAlive{this, u"Keep Alive"};
  NProfileInt m_dataConnectionType{this, u"Data Connection Type"};
  NProfileBool m_disableServerToServerTransfers{this, u"Disable Server To Server Transfers"};
  NProfileBool m_disableDirectoryTreeDetection{this, u"Disable Directory Tree Detection"};
  NProfileBool m_verifyRetrieveFileStatus{this, u"Verify Retrieve File Status", true};
  NProfileBool m_resolveSymbolicLinks{this, u"Resolve Symbolic Links"};
  NProfileBool m_closeOnDisconnect{this, u"Close on Disconnect"};
  NProfileBool m_disconnectAfterResumeTimeout{this, u"Disconnect After Resume Timeout"};
  NProfileString m_notepad{this, u"Notepad"};
  NProfileString m_openWithProgramTitle{this, u"Open With Program Title"};
  NProfileInt m_openWithTransferType{this, u"Open With Transfer Type"};
  NProfileBool m_restoreSessionDirectory{this, u"Restore Session Directory"};
  NProfileInt m_retryAttempts{this, u"Retry Attempts", 20};
  NProfileInt m_retryDelay{this, u"Retry Delay", 10};
  NProfileInt m_hideDotFiles{this, u"Hide Dot Files", 1};
  NProfileBool m_displayLocalTimeForRemoteFiles{this, u"Display Local Time for Remote Files"};
  NProfileBool m_hideHiddenFiles{this, u"Hide Hidden Files"};
  NProfileBool m_displayExplorerFilenames{this, u"Display Explorer Filenames"};
  NProfileBool m_displayAttributesColumn{this, u"Display Attributes Column"};
  NProfileInt m_listViewNumberStyle{this, u"List View Number Style"};
  NProfileInt m_transferViewNumberStyle{this, u"Transfer View Number Style", 2};
  NProfileInt m_displayFolderTree{this, u"Display Folder Tree", 1};
  NProfileInt m_displayLog{this, u"Display Log", 1};
  NProfileBool m_displaySeconds{this, u"Display Seconds"};
  NProfileBool m_retainFileVersionNumber{this, u"Retain File Version Number"};
  NProfileInt m_promptToResumeOnConnect{this, u"Prompt to Resume on Connect", 1};
  NProfileBool m_alwaysPromptForAuthInfo{this, u"Always Prompt For Auth Info"};
  NProfileBool m_refreshAfterAllTransfersComplete{this, u"Refresh After All Transfers Complete"};
  NProfileBool m_showTransferQueueWindow{this, u"Show Transfer Queue Window", true};
  NProfileBool m_suspendQueuedTransfers{this, u"Suspend Queued Transfers"};
  NProfileString m_transferQueueState{this, u"Transfer Queue State"};
  NProfileInt m_transferQueueHeight{this, u"Transfer Queue Height", 150};
  NProfileBool m_ftpEnablePortRange{this, u"FTP Enable Port Range"};
  NProfileInt m_ftpPortRangeMinimum{this, u"FTP Port Range Minimum", 49152};
  NProfileInt m_ftpPortRangeMaximum{this, u"FTP Port Range Maximum", 65535};
  NProfileBool m_prwclBackslashesAlwaysPathSeparators{this, u"PRWCL Backslashes Always Path Separators"};
  NProfileStrings m_installedFtpSites{this, u"Installed FTP Sites"};
  NProfileBool m_serializeConnections{this, u"Serialize Connections"};
  NProfileBool m_neverUseCachedFileForRemoteEditing{this, u"Never Use Cached File for Remote Editing"};
  NProfileBool m_usePreviousQuickSyncSettings{this, u"Use Previous QuickSync Settings"};
  NProfileInt m_bandwidthLimit{this, u"Bandwidth Limit"};
  NProfileInt m_maximumParallelTransfers{this, u"Maximum Parallel Transfers", 1};
  NProfileInt m_refreshDelay{this, u"Refresh Delay", 900};
  NProfileStrings m_parrowBookmarks{this, u"Parrow Bookmarks"};
  NProfileBool m_useDefaultTransferTypeForAllFiles{this, u"Use Default Transfer Type For All Files"};
  // 0xFFFFFFFF is no colour: the topic keeps its standard one.
  NProfileColor m_logTopicRequestTextColor{this, u"Log Topic Request Text Color", 0xFFFFFFFF};
  NProfileColor m_logTopicResponseTextColor{this, u"Log Topic Response Text Color", 0xFFFFFFFF};
  NProfileColor m_logTopicInformationTextColor{this, u"Log Topic Information Text Color", 0xFFFFFFFF};
  NProfileColor m_logTopicWarningTextColor{this, u"Log Topic Warning Text Color", 0xFFFFFFFF};
  NProfileColor m_logTopicErrorTextColor{this, u"Log Topic Error Text Color", 0xFFFFFFFF};

  // ---- File-transfer window layout
  NProfileStruct<NRect> m_mainFrameWindowSize{this, u"MainFrame Window Size"};
  NProfileStruct<NRect> m_localFrameWindowSize{this, u"LocalFrame Window Size"};
  NProfileStruct<NRect> m_remoteFrameWindowSize{this, u"RemoteFrame Window Size"};
  NProfileStruct<NWindowPlacement> m_transferWindowPlacement{this, u"Transfer Window Placement", DefaultPlacement(1)};
  NProfileBool m_saveSessionWindowAttributes{this, u"Save Session Window Attributes"};
  NProfileString m_localListViewState{this, u"Local ListView State"};
  NProfileString m_remoteListViewState{this, u"Remote ListView State"};
  NProfileString m_syncDbDialogListViewState{this, u"SyncDBDialog ListView State"};
  NProfileString m_localExplorerFrameState{this, u"Local ExplorerFrame State", NUnicodeString(u"1,-1,200")};
  NProfileString m_remoteExplorerFrameState{this, u"Remote ExplorerFrame State", NUnicodeString(u"1,1000,200")};
  NProfileString m_parrowTabState{this, u"Parrow Tab State V2", NUnicodeString(u"1,1,0;0")};
  NProfileString m_parrowLocalTabState{this, u"Parrow Local Tab State", NUnicodeString(u"1,-1,200")};
  NProfileString m_parrowRemoteTabState{this, u"Parrow Remote Tab State", NUnicodeString(u"1,1000,200")};
  NProfileBool m_localWindowOnBottomOrRight{this, u"Local Window on Bottom or Right"};
  NProfileStruct<NWindowPlacement> m_synchronizeWindowPlacement{this, u"Synchronize Window Placement",
                                                                DefaultPlacement(2)};
  NProfileString m_synchronizeExplorerFrameState{this, u"Synchronize ExplorerFrame State", NUnicodeString(u"1,0,-1")};
  NProfileString m_synchronizeListViewState{this, u"Synchronize ListView State"};

  // ---- Sounds
  NProfileString m_connectSoundFile{this, u"Connect Sound File"};
  NProfileString m_disconnectSoundFile{this, u"Disconnect Sound File"};
  NProfileString m_transferCompleteSoundFile{this, u"Transfer Complete Sound File"};
  NProfileString m_errorSoundFile{this, u"Error Sound File"};

  // ---- One-time migrations that have run
  NProfileBool m_skldFirewallMigrated{this, u"SKLD Firewall Migrated"};
  NProfileBool m_quennXmlFileFixed{this, u"Quenn XML File Fixed"};
  NProfileBool m_skeldonXmlFileFixed{this, u"Skeldon XML File Fixed"};
  NProfileBool m_parrowXmlFileFixed{this, u"Parrow XML File Fixed"};
  NProfileBool m_rightClickPopupShown{this, u"Right Click Popup Shown"};

  // Computed defaults.
  static NWindowPlacement DefaultPlacement(int window);
  static NColorTable DefaultCustomColors();
  static NBytes DefaultColorSchemes();
};
