#pragma once

#include <cstdint>

#include "base/NArray.h"
#include "config/GlobalConfig.h"
#include "config/ISessionConfig.h"
#include "dialogs/session/SessionAnsiColorPage.h"
#include "dialogs/session/SessionAppearancePage.h"
#include "dialogs/session/SessionConnectPage.h"
#include "dialogs/session/SessionEmacsPage.h"
#include "dialogs/session/SessionEmulationAdvancedPage.h"
#include "dialogs/session/SessionEmulationModesPage.h"
#include "dialogs/session/SessionEmulationPage.h"
#include "dialogs/session/SessionFileTransferAdvancedPage.h"
#include "dialogs/session/SessionFileTransferPage.h"
#include "dialogs/session/SessionFtpSftpPage.h"
#include "dialogs/session/SessionLogFilePage.h"
#include "dialogs/session/SessionLogonScriptsPage.h"
#include "dialogs/session/SessionMappedKeysPage.h"
#include "dialogs/session/SessionPrintingPage.h"
#include "dialogs/session/SessionTerminalPage.h"
#include "dialogs/session/SessionWindowPage.h"
#include "dialogs/session/SessionXModemZModemPage.h"
#include "uicore/NPropertyTreeDialog.h"

class SessionProtocolPage;

// The modes a session dialog is opened in; any other value is one session.
inline constexpr int kSessionDialogLocked = 2;    // used by a locked session: read-only
inline constexpr int kSessionDialogDefault = 3;   // the session "Default"
inline constexpr int kSessionDialogMultiple = 4;  // several sessions at once

// The Session Options dialog: the fixed pages (Connection, the Terminal and
// File Transfer subtrees) and one options page per protocol, made when the
// protocol is first chosen. The pages write the session's record on OK; the
// caller saves it. UI thread only.
//
// The flags and integers after the mode, in the entry point's order:
//   newSession        the session is being made (nothing saved yet);
//   protocolEditable  the protocol choices may change (false for a session
//                     that is connected now);
//   columnLimit       the most columns the host's window allows (0: only the
//                     global "Max Columns");
//   liveModes         the Modes page edits a connected session, whose modes
//                     change at once on OK;
//   screenDpi         the host screen's dots per inch, for font sizes in
//                     points (0: 96);
//   printerAvailable  the host has started the printing back end.
// `fontsChanged` is set when OK stored a change of font or colours, which
// the host redraws.
class SessionOptionsDialogBase : public NPropertyTreeDialog {
 public:
  SessionOptionsDialogBase(GlobalConfig* global, ISessionConfig* session, int mode, bool newSession,
                           bool protocolEditable, int columnLimit, bool liveModes, int screenDpi, bool printerAvailable,
                           bool& fontsChanged, void* parent);
  ~SessionOptionsDialogBase() override;

  // Shows or hides "Logon Actions" and the "Terminal" subtree.
  void ShowHideTerminalPages(bool show);
  void ShowHideFileTransferPages(bool show);
  // Makes the options page of protocol `index` present and shown. Throws
  // OutOfRange past the end of the protocol table.
  void ShowSessionProtocolPages(int index);
  // The Connection page changed a protocol choice from `oldIndex` to
  // `newIndex`; `otherIndex` is the other choice's (-1 for none).
  void UpdateSessionProtocolPages(int oldIndex, int newIndex, int otherIndex);
  void RefreshSessionFtpSftpPage();
  void UpdateSessionLogonScriptsPage();
  // The notice that a locked session's options cannot be saved.
  void ShowReadOnlyPrompt(void* parent);
  // Releases the protocol pages.
  void Destroy();

  int Mode() const { return m_mode; }
  int Ssh2Index() const { return m_ssh2Index; }
  int SftpIndex() const { return m_sftpIndex; }
  int ScpIndex() const { return m_scpIndex; }
  // The protocol page made for entry `index`, or null.
  SessionProtocolPage* ProtocolPage(int index) const;
  // The index of the protocol called `name` (without case, the last such
  // entry), or -1.
  static int FindProtocol(std::u16string_view name);
  static NPropertyPageStateMap& PageStateMap() { return m_pageStateMap; }

 protected:
  void OnInitDialog() override;

 private:
  static NUnicodeString MakeTitle(ISessionConfig* session, int mode);
  void OnProtocolChosen(bool terminal, const NUnicodeString& oldName, const NUnicodeString& newName);

  GlobalConfig* m_global;
  ISessionConfig* m_session;
  std::int32_t m_mode;
  std::int32_t m_ssh2Index = -1;
  std::int32_t m_sftpIndex = -1;
  std::int32_t m_scpIndex = -1;
  NArray<SessionProtocolPage*> m_protocolPages;

  SessionConnectPage m_connectPage;
  SessionLogonScriptsPage m_logonScriptsPage;
  SessionTerminalPage m_terminalPage;
  SessionEmulationPage m_emulationPage;
  SessionEmulationModesPage m_emulationModesPage;
  SessionEmacsPage m_emacsPage;
  SessionMappedKeysPage m_mappedKeysPage;
  SessionEmulationAdvancedPage m_emulationAdvancedPage;
  SessionAppearancePage m_appearancePage;
  SessionAnsiColorPage m_ansiColorPage;
  SessionWindowPage m_windowPage;
  SessionLogFilePage m_logFilePage;
  SessionPrintingPage m_printingPage;
  SessionXModemZModemPage m_xmodemZmodemPage;
  SessionFileTransferAdvancedPage m_fileTransferAdvancedPage;
  SessionFileTransferPage m_fileTransferPage;
  SessionFtpSftpPage m_ftpSftpPage;

  static NPropertyPageStateMap m_pageStateMap;
};
