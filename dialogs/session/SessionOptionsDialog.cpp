#include "dialogs/session/SessionOptionsDialog.h"

#include "base/NUnknownPointer.h"
#include "dialogs/NMessageText.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"

namespace {

constexpr std::uint32_t kMsgApplyCaption = 0x6138F0A3;
constexpr std::uint32_t kMsgApplyQuestion = 0x6138F0A4;
constexpr std::uint32_t kMsgApplyWarning = 0x6138F0A5;
constexpr std::uint32_t kMsgApplyDefaultOnly = 0x6138F0A6;
constexpr std::uint32_t kMsgApplyAll = 0x6138F0A7;
constexpr int kApplyToAll = 1;

void ShowFailure(void* parent, const NReportMessageParams& params) {
  NMessageBox(parent, params.GetCode(), params.GetText(), NGetAppName(), kMessageBoxOk | kMessageBoxIconError);
}

// Copies the default session's changes into every saved session; warns of
// those that were read-only.
void ApplyToAllSessions(ISessionConfig& defaults, void* parent) {
  std::uint32_t sessions = 0, updated = 0;
  NReportMessageParams params;
  if (!defaults.ApplyDefaultChanges(&sessions, &updated, params)) ShowFailure(parent, params);
  if (sessions == updated) return;
  NReportMessageParams warning(kMsgSessionsNotUpdated);
  warning.AddSigned(static_cast<std::int32_t>(sessions));
  warning.AddSigned(static_cast<std::int32_t>(sessions - updated));
  NMessageBox(parent, kMsgSessionsNotUpdated, warning.GetText(), NGetAppName(), kMessageBoxOk | kMessageBoxIconWarning);
}

}  // namespace

std::intptr_t ShowSessionOptionsDialog(GlobalConfig* global, ISessionConfig* session, int mode, bool newSession,
                                       bool protocolEditable, int columnLimit, bool liveModes, int screenDpi,
                                       bool printerAvailable, bool& fontsChanged, void* parent) {
  SessionOptionsDialog dialog(global, session, mode, newSession, protocolEditable, columnLimit, liveModes, screenDpi,
                              printerAvailable, fontsChanged, parent);
  dialog.SetNewSession(newSession);
  return dialog.DoModal();
}

bool EditDefaultSession(GlobalConfig* global, unsigned int screenDpi, void* parent) {
  NReportMessageParams params;
  const auto defaults = NUnknownPointer<ISessionConfig>::Adopt(NOpenSession(u"Default", false, params));
  if (!defaults) {
    ShowFailure(parent, params);
    return false;
  }
  bool fontsChanged = false;
  {
    // The columns the global record allows are the default session's limit.
    SessionOptionsDialog dialog(global, defaults.Get(), kSessionDialogDefault, false, true, global->m_maxColumns.Get(),
                                false, static_cast<int>(screenDpi), false, fontsChanged, parent);
    dialog.SetNewSession(false);
    defaults->PreEdit();
    if (dialog.DoModal() == IModalDialog::kOk && defaults->IsModified()) {
      const int choice = NDialogBackend().Choose(parent, NMessageText(kMsgApplyCaption),
                                                 NMessageText(kMsgApplyQuestion), NMessageText(kMsgApplyWarning),
                                                 {NMessageText(kMsgApplyDefaultOnly), NMessageText(kMsgApplyAll)});
      if (choice == kApplyToAll) ApplyToAllSessions(*defaults, parent);
    }
  }
  if (defaults->Save(params)) return true;
  ShowFailure(parent, params);
  return false;
}
