#pragma once

#include <cstdint>

#include "base/NExport.h"
#include "dialogs/session/SessionOptionsDialogBase.h"

// The Session Options dialog as the entry points open it.
class SessionOptionsDialog final : public SessionOptionsDialogBase {
 public:
  using SessionOptionsDialogBase::SessionOptionsDialogBase;
};

inline constexpr std::uint32_t kMsgSessionsNotUpdated = 0xA1380001;

// Opens the Session Options dialog on `session` modally to `parent` (a
// window of the backend's toolkit, or null) and returns its result, 1 for
// OK. The arguments after `mode` are SessionOptionsDialogBase's. The pages
// write the session's record on OK; the caller saves it.
CFGDECK_API std::intptr_t ShowSessionOptionsDialog(GlobalConfig* global, ISessionConfig* session, int mode,
                                                   bool newSession, bool protocolEditable, int columnLimit,
                                                   bool liveModes, int screenDpi, bool printerAvailable,
                                                   bool& fontsChanged, void* parent);

// Edits the session "Default"; on OK with changes, offers to copy them into
// every saved session, then saves "Default". `screenDpi` is the host
// screen's (0: 96). False when "Default" could not be opened or saved (the
// reason was shown).
CFGDECK_API bool EditDefaultSession(GlobalConfig* global, unsigned int screenDpi, void* parent);
