#pragma once

#include "base/NExport.h"
#include "config/ConnectConfig.h"
#include "config/NProfile.h"
#include "config/ProfileExpectSendList.h"
#include "config/TerminalConfig.h"

// The record of one session, under its key in the "Sessions" tree: its own
// fields, then the connection and terminal sub-records and the logon
// script, all in the one key.
class CFGDECK_API SessionConfig final : public NProfileRecord {
 public:
  // The value a session key is recognised by.
  static constexpr std::u16string_view kIsSessionName = u"Is Session";

  SessionConfig();
  ~SessionConfig() override;

  // Reads every field of every part, running the migrations of older value
  // names. The logon script's conversion is written back at once (when the
  // key is writable), and the older script values emptied, so that it never
  // runs twice; false only when that write failed (params say why).
  bool Load(NProfileKey& key, NReportMessageParams& params);
  // Writes every part with the save flag `all` and flushes the key.
  bool Save(NProfileKey& key, bool all, NReportMessageParams& params);

  // Every field of the session, its parts included, in the order a save
  // writes them.
  std::vector<NProfileData*> AllFields() const;
  bool IsModified() const;
  // Takes `other`'s current value for every field.
  void CopyFrom(const SessionConfig& other);

  // The logon script, read from its stored strings (empty when they are
  // not a script).
  ProfileExpectSendList LoginScript() const;
  void SetLoginScript(const ProfileExpectSendList& script) { m_loginScriptStrings = script.ToStrings(); }

  ConnectConfig m_connect;
  TerminalConfig m_terminal;

  // ---- Identity and window
  NProfileBool m_isSession{this, kIsSessionName, true};
  NProfileBool m_useTitleBar{this, u"Use Title Bar"};
  NProfileString m_titleBar{this, u"Title Bar"};
  NProfileBool m_showWyseLabelLine{this, u"Show Wyse Label Line"};
  NProfileStrings m_description{this, u"Description"};
  NProfileBool m_alwaysOnTop{this, u"AlwaysOnTop"};
  NProfileBool m_disableResize{this, u"Disable Resize"};
  NProfileBool m_autoReconnect{this, u"Auto Reconnect"};
  NProfileBool m_useGlobalPrintSettings{this, u"Use Global Print Settings", true};
  NProfileInt m_ejectPageInterval{this, u"Eject Page Interval"};

  // ---- Logon
  NProfileBool m_sendInitialCarriageReturn{this, u"Send Initial Carriage Return"};
  NProfileBool m_useLoginScript{this, u"Use Login Script"};
  NProfileStrings m_loginScriptStrings{this, u"Login Script V3"};
  NProfileBool m_useScriptFile{this, u"Use Script File"};
  NProfileString m_scriptFilename{this, u"Script Filename"};
  NProfileString m_scriptArguments{this, u"Script Arguments"};
  NProfileBool m_waitForPrompt{this, u"Wait For Prompt"};
  NProfileString m_waitForPromptText{this, u"Wait For Prompt Text"};
  NProfileInt m_waitForPromptTimeout{this, u"Wait For Prompt Timeout", 30};

  // ---- File transfer from the terminal
  NProfileString m_uploadDirectory{this, u"Upload Directory"};
  NProfileString m_downloadDirectory{this, u"Download Directory"};
  NProfileInt m_xmodemSendPacketSize{this, u"XModem Send Packet Size", 1024};
  // "rz" and a carriage return; stored escaped, as a key file holds no line break.
  NProfileEscapedString m_zmodemReceiveCommand{this, u"ZModem Receive Command", NUnicodeString(u"rz\r")};
  NProfileBool m_disableZmodem{this, u"Disable ZModem"};
  NProfileBool m_zmodemUses32BitCrc{this, u"ZModem Uses 32 Bit CRC"};
  NProfileBool m_force1024ForZmodem{this, u"Force 1024 for ZModem"};
  NProfileBool m_zmodemEncodesDel{this, u"ZModem Encodes DEL"};
  NProfileBool m_zmodemLowerCaseUploads{this, u"ZModem Force All Caps Filenames to Lower Case on Upload"};
  NProfileBool m_sendZmodemInitWhenUploadStarts{this, u"Send Zmodem Init When Upload Starts"};

  // ---- Logging
  NProfileString m_logFilename{this, u"Log Filename"};
  NProfileString m_customLogMessageConnect{this, u"Custom Log Message Connect"};
  NProfileString m_customLogMessageDisconnect{this, u"Custom Log Message Disconnect"};
  NProfileString m_customLogMessageEachLine{this, u"Custom Log Message Each Line"};
  NProfileBool m_logOnlyCustom{this, u"Log Only Custom"};
  NProfileBool m_uniqueLogFileNameWhenInUse{this, u"Generate Unique Log File Name When File In Use"};
  NProfileBool m_logPrompt{this, u"Log Prompt"};
  NProfileInt m_logMode{this, u"Log Mode"};
  NProfileBool m_startLogUponConnect{this, u"Start Log Upon Connect"};
  NProfileBool m_rawLog{this, u"Raw Log"};
  NProfileBool m_logMultipleSessions{this, u"Log Multiple Sessions"};
  NProfileBool m_newLogFileAtMidnight{this, u"New Log File At Midnight"};
  NProfileInt m_traceLevel{this, u"Trace Level"};

  // ---- Typing and selection
  NProfileInt m_keyboardCharSendDelay{this, u"Keyboard Char Send Delay"};
  NProfileInt m_lineSendDelay{this, u"Line Send Delay"};
  NProfileInt m_characterSendDelay{this, u"Character Send Delay"};
  NProfileBool m_useWordDelimiterChars{this, u"Use Word Delimiter Chars"};
  NProfileString m_wordDelimiterChars{this, u"Word Delimiter Chars", NUnicodeString(u" <>()[]{},;:'\"|")};
  NProfileBool m_sendScrollWheelEventsToRemote{this, u"Send Scroll Wheel Events To Remote"};
  NProfileBool m_positionCursorOnLeftClick{this, u"Position Cursor on Left Click"};
  NProfileBool m_rawEolMode{this, u"Raw EOL Mode"};
  NProfileString m_identString{this, u"Ident String"};

  // ---- Idle handling
  NProfileInt m_idleTimeout{this, u"Idle Timeout", 60};
  NProfileBool m_idleCheck{this, u"Idle Check"};
  NProfileString m_idleString{this, u"Idle String"};
  NProfileBool m_idleNoOpCheck{this, u"Idle NO-OP Check"};
  NProfileInt m_idleNoOpTimeout{this, u"Idle NO-OP Timeout", 60};

  // ---- Highlighting
  NProfileInt m_highlightingStyle{this, u"Highlighting Style"};
  NProfileBool m_highlightReverseVideo{this, u"Highlight Reverse Video"};
  NProfileBool m_highlightBold{this, u"Highlight Bold"};
  NProfileBool m_highlightColor{this, u"Highlight Color"};
  NProfileString m_keywordSet{this, u"Keyword Set"};

  // ---- Session monitor
  NProfileString m_monitorListenAddress{this, u"Monitor Listen Address", NUnicodeString(u"0.0.0.0:22")};
  NProfileString m_monitorUsername{this, u"Monitor Username"};
  NProfileEncrypted m_monitorPassword{this, u"Monitor Password V2"};
  NProfileBool m_monitorAllowRemoteInput{this, u"Monitor Allow Remote Input"};

  // ---- Remote system
  NProfileString m_operatingSystem{this, u"Operating System", NUnicodeString(u"AUTO")};
  NProfileInt m_timeZone{this, u"Time Zone"};
  NProfileInt m_fileSystemCase{this, u"File System Case"};
  NProfileInt m_fileCreationMask{this, u"File Creation Mask", 022};

  // ---- File-transfer session
  NProfileString m_lastDirectory{this, u"Last Directory"};
  NProfileString m_initialLocalDirectory{this, u"Initial Local Directory"};
  NProfileString m_defaultDownloadDirectory{this, u"Default Download Directory"};
  NProfileBool m_disableDirectoryTreeDetection{this, u"Disable Directory Tree Detection"};
  NProfileBool m_verifyRetrieveFileStatus{this, u"Verify Retrieve File Status", true};
  NProfileBool m_resolveSymbolicLinks{this, u"Resolve Symbolic Links"};
  NProfileInt m_restartDataSize{this, u"Restart Data Size"};
  NProfileString m_restartDatafilePath{this, u"Restart Datafile Path"};
  NProfileInt m_maxTransferBuffers{this, u"Max Transfer Buffers", 4};
  NProfileBool m_filenamesAlwaysUseUtf8{this, u"Filenames Always Use UTF8"};
  NProfileBool m_useMultipleSftpChannels{this, u"Use Multiple SFTP Channels"};
  NProfileBool m_disableStatForSftpDirectoryValidation{this, u"Disable STAT For SFTP Directory Validation"};
  NProfileBool m_disableMlsx{this, u"Disable MLSX"};
  NProfileStruct<NWindowPlacement> m_remoteFrameWindowPlacement{this, u"RemoteFrame Window Placement"};
  NProfileString m_remoteExplorerFrameState{this, u"Remote ExplorerFrame State", NUnicodeString(u"1,1000,200")};
  NProfileString m_remoteListViewState{this, u"Remote ListView State"};
  NProfileString m_parrowRemoteTabState{this, u"Parrow Remote Tab State", NUnicodeString(u"1,1000,200")};
  NProfileStrings m_parrowPostLoginUserCommands{this, u"Parrow Post Login User Commands"};
  NProfileStrings m_parrowBookmarks{this, u"Parrow Bookmarks"};
  NProfileInt m_parrowTraceLevel{this, u"Parrow Trace Level"};
  NProfileBool m_parrowUseControlAddressForData{this, u"Parrow Use Control Address For Data Connections"};
  NProfileStrings m_scpShellPrompts{this, u"SCP Shell Prompts", DefaultScpShellPrompts()};
  NProfileEncrypted m_scpShellPassword{this, u"SCP Shell Password V2"};
  NProfileBool m_usePgpForAllTransfers{this, u"Use PGP For All Transfers"};
  NProfileString m_pgpUploadCommand{this, u"PGP Upload Command V2"};
  NProfileString m_pgpDownloadCommand{this, u"PGP Download Command V2"};
  NProfileBool m_disableRemoteFileSystemWatches{this, u"Disable Remote File System Watches"};

 private:
  static NStringArray DefaultScpShellPrompts();
  // Converts "Login Script" and "Login Script V2" into "Login Script V3"
  // when it is absent; true when the key was changed.
  bool MigrateLoginScript(NProfileKey& key);
  void CarryForwardOlderNames(const NProfileKey& key);
};
