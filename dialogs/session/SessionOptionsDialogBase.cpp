#include "dialogs/session/SessionOptionsDialogBase.h"

#include <stdexcept>

#include "config/NConfigEntry.h"
#include "dialogs/NMessageText.h"
#include "dialogs/protocols/NProtocolTable.h"
#include "dialogs/protocols/SessionProtocolPage.h"

namespace {

constexpr std::uint32_t kMsgSessionLocked = 0x61380007;
constexpr std::uint32_t kMsgTitle = 0x6138F0A0;
constexpr std::uint32_t kMsgTitleMultiple = 0x6138F0A1;
constexpr std::uint32_t kMsgReadOnlyMark = 0x6138F0A2;

bool SameName(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && NUnicodeString::CompareIgnoreCase(a, b) == 0;
}

// The protocols that need no remote host: a file-transfer protocol beside
// them has its own page.
bool IsLocalProtocol(std::u16string_view name) {
  return name == u"TAPI" || name == u"Serial" || name == u"Local Shell";
}

// The protocol modules are loaded before the first dialog sizes its slots.
std::size_t LoadedProtocolCount() {
  NProtocolTable::LoadModules();
  return NProtocolTable::Count();
}

ISessionConfig* Checked(ISessionConfig* session) {
  if (!session) throw std::invalid_argument("the session options dialog needs a session");
  return session;
}

}  // namespace

NPropertyPageStateMap SessionOptionsDialogBase::m_pageStateMap;

NUnicodeString SessionOptionsDialogBase::MakeTitle(ISessionConfig* session, int mode) {
  if (mode == kSessionDialogMultiple) return NMessageText(kMsgTitleMultiple);
  const NUnicodeString mark = mode == kSessionDialogLocked ? NMessageText(kMsgReadOnlyMark) : NUnicodeString();
  return NMessageText(kMsgTitle, {Checked(session)->Name(), mark});
}

SessionOptionsDialogBase::SessionOptionsDialogBase(GlobalConfig* global, ISessionConfig* session, int mode,
                                                   bool newSession, bool protocolEditable, int columnLimit,
                                                   bool liveModes, int screenDpi, bool printerAvailable,
                                                   bool& fontsChanged, void* parent)
    : NPropertyTreeDialog(MakeTitle(session, mode), 0, &m_pageStateMap, parent),
      m_global(global),
      m_session(Checked(session)),
      m_mode(mode),
      m_protocolPages(LoadedProtocolCount(), nullptr),
      m_connectPage(*session, NIsReadOnly(mode), newSession, protocolEditable),
      m_logonScriptsPage(*session),
      m_terminalPage(*session),
      m_emulationPage(*session, columnLimit, global->m_maxColumns.Get()),
      m_emulationModesPage(*session, liveModes),
      m_emacsPage(*session),
      m_mappedKeysPage(*session, *global),
      m_emulationAdvancedPage(*session),
      m_appearancePage(*session, *global, screenDpi, fontsChanged),
      m_ansiColorPage(*session, *global),
      m_windowPage(*session),
      m_logFilePage(*session),
      m_printingPage(*session, printerAvailable),
      m_xmodemZmodemPage(*session),
      m_fileTransferAdvancedPage(*session),
      m_fileTransferPage(*session, *global, NIsReadOnly(mode)),
      m_ftpSftpPage(*session, NIsReadOnly(mode)) {
  NProtocolTable::SetCurrentProductId(GetCurrentAppProductID());
  m_session->AddRef();

  m_logonScriptsPage.FollowProtocols(m_connectPage);
  m_ftpSftpPage.FollowProtocols(m_connectPage);
  m_connectPage.SetProtocolHandler([this](bool terminal, const NUnicodeString& oldName, const NUnicodeString& newName) {
    OnProtocolChosen(terminal, oldName, newName);
  });

  AddPage(&m_connectPage);
  m_connectPage.AddPage(&m_logonScriptsPage);
  if (HasTerminalProtocols()) {
    AddPage(&m_terminalPage);
    m_terminalPage.AddPage(&m_emulationPage);
    m_emulationPage.AddPage(&m_emulationModesPage);
    m_emulationPage.AddPage(&m_emacsPage);
    m_emulationPage.AddPage(&m_mappedKeysPage);
    m_emulationPage.AddPage(&m_emulationAdvancedPage);
    m_terminalPage.AddPage(&m_appearancePage);
    m_appearancePage.AddPage(&m_ansiColorPage);
    m_appearancePage.AddPage(&m_windowPage);
    m_terminalPage.AddPage(&m_logFilePage);
    m_terminalPage.AddPage(&m_printingPage);
    m_terminalPage.AddPage(&m_xmodemZmodemPage);
  }
  if (HasTransferProtocols()) {
    AddPage(&m_fileTransferPage);
    m_fileTransferPage.AddPage(&m_ftpSftpPage);
    m_fileTransferPage.AddPage(&m_fileTransferAdvancedPage);
  }
  if (NIsReadOnly(mode)) {
    for (const Row& row : VisibleRows()) row.page->Form().SetReadOnly(true);
  }
}

SessionOptionsDialogBase::~SessionOptionsDialogBase() {
  Destroy();
  m_session->Release();
}

void SessionOptionsDialogBase::Destroy() {
  for (SessionProtocolPage*& page : m_protocolPages) {
    if (!page) continue;
    RemovePage(page);
    delete page;
    page = nullptr;
  }
}

int SessionOptionsDialogBase::FindProtocol(std::u16string_view name) {
  int found = -1;
  for (std::size_t i = 0; i < NProtocolTable::Count(); ++i) {
    if (SameName(NProtocolTable::Entry(i).name, name)) found = static_cast<int>(i);
  }
  return found;
}

SessionProtocolPage* SessionOptionsDialogBase::ProtocolPage(int index) const {
  return m_protocolPages[static_cast<std::size_t>(index)];
}

void SessionOptionsDialogBase::OnInitDialog() {
  const ConnectConfig& connect = m_session->Config().m_connect;
  const NUnicodeString transferName = connect.m_fileTransferProtocolName.Get();
  const NUnicodeString terminalName = connect.m_protocolName.Get();
  const int transferProduct = GetTransferAppProductID();
  int transferIndex = -1, terminalIndex = -1;
  for (std::size_t i = 0; i < NProtocolTable::Count(); ++i) {
    const NUnicodeString& name = NProtocolTable::Entry(i).name;
    const int index = static_cast<int>(i);
    if (SameName(name, transferName)) transferIndex = index;
    if (SameName(name, terminalName)) terminalIndex = index;
    const int productId = NProtocolTable::ProductIdOf(i);
    if (IsSkeldonInstalled() && productId == NProtocolTable::kTerminalProduct && SameName(name, u"SSH2")) {
      m_ssh2Index = index;
    }
    if (HasTransferProtocols() && productId == transferProduct) {
      if (SameName(name, u"SFTP")) m_sftpIndex = index;
      if (SameName(name, u"SCP")) m_scpIndex = index;
    }
  }
  const auto isNone = [](int index) { return index == -1 || NProtocolTable::Entry(index).name == u"None"; };
  ShowHideTerminalPages(!isNone(terminalIndex));
  ShowHideFileTransferPages(!isNone(transferIndex));

  const bool hasTerminal = terminalIndex != -1, hasTransfer = !isNone(transferIndex);
  if (!hasTransfer) {
    if (hasTerminal) ShowSessionProtocolPages(terminalIndex);
  } else if (hasTerminal) {
    ShowSessionProtocolPages(terminalIndex);
    const bool carriedBySsh2 =
        terminalIndex == m_ssh2Index && (transferIndex == m_sftpIndex || transferIndex == m_scpIndex);
    if (!carriedBySsh2) ShowSessionProtocolPages(transferIndex);
  } else {
    ShowSessionProtocolPages(transferIndex);
  }

  if (m_mode == kSessionDialogLocked) {
    DisableOkButton(true);
    if (!m_global->m_suppressReadOnlySessionOptionsWarning.Get()) ShowReadOnlyPrompt(nullptr);
  }
}

void SessionOptionsDialogBase::ShowHideTerminalPages(bool show) {
  if (show) {
    ShowPage(&m_logonScriptsPage);
    ShowPage(&m_terminalPage);
  } else {
    HidePage(&m_logonScriptsPage);
    HidePage(&m_terminalPage);
  }
}

void SessionOptionsDialogBase::ShowHideFileTransferPages(bool show) {
  if (show) {
    ShowPage(&m_fileTransferPage);
  } else {
    HidePage(&m_fileTransferPage);
  }
}

void SessionOptionsDialogBase::ShowSessionProtocolPages(int index) {
  const std::size_t slot = static_cast<std::size_t>(index);
  const NProtocolEntry& entry = NProtocolTable::Entry(slot);
  SessionProtocolPage*& page = m_protocolPages[slot];
  if (!entry.factory) return;
  if (!page) page = entry.factory(*this, m_mode, *m_session, m_connectPage).release();
  if (page) page->ShowInDialog(*this, *m_session);
}

void SessionOptionsDialogBase::UpdateSessionProtocolPages(int oldIndex, int newIndex, int otherIndex) {
  const auto hide = [this](int index) {
    if (index == -1) return;
    if (SessionProtocolPage* page = m_protocolPages[static_cast<std::size_t>(index)]) page->Hide(*this);
  };
  hide(oldIndex);
  SuspendRedraw();
  if (otherIndex == -1) {
    ShowSessionProtocolPages(newIndex);
  } else if (newIndex == m_ssh2Index) {
    ShowSessionProtocolPages(newIndex);
    if (otherIndex == m_sftpIndex || otherIndex == m_scpIndex) hide(otherIndex);
  } else if (newIndex != m_sftpIndex && newIndex != m_scpIndex) {
    ShowSessionProtocolPages(newIndex);
    if (IsLocalProtocol(NProtocolTable::Entry(static_cast<std::size_t>(newIndex)).name)) {
      hide(otherIndex);
    } else {
      ShowSessionProtocolPages(otherIndex);
    }
  } else if (otherIndex != m_ssh2Index) {
    ShowSessionProtocolPages(newIndex);
  }
  ResumeRedraw();
  UpdateSessionLogonScriptsPage();
  if (HasTransferProtocols()) RefreshSessionFtpSftpPage();
}

void SessionOptionsDialogBase::OnProtocolChosen(bool terminal, const NUnicodeString& oldName,
                                                const NUnicodeString& newName) {
  const NUnicodeString otherName = terminal ? m_connectPage.TransferProtocol() : m_connectPage.TerminalProtocol();
  const int newIndex = FindProtocol(newName);
  const int otherIndex = otherName.empty() || otherName == u"None" ? -1 : FindProtocol(otherName);
  if (newIndex != -1) UpdateSessionProtocolPages(FindProtocol(oldName), newIndex, otherIndex);
  const bool shown = newIndex != -1 && newName != u"None";
  if (terminal) {
    ShowHideTerminalPages(shown);
  } else {
    ShowHideFileTransferPages(shown);
  }
}

void SessionOptionsDialogBase::RefreshSessionFtpSftpPage() { m_ftpSftpPage.Refresh(); }

void SessionOptionsDialogBase::UpdateSessionLogonScriptsPage() { m_logonScriptsPage.Refresh(); }

void SessionOptionsDialogBase::ShowReadOnlyPrompt(void* parent) {
  ShowOptionalMessageBox(parent, kMsgSessionLocked, NMessageText(kMsgSessionLocked), {},
                         kMessageBoxOk | kMessageBoxIconInformation, m_global->m_suppressReadOnlySessionOptionsWarning);
}
