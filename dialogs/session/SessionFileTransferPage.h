#pragma once

#include "config/GlobalConfig.h"
#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "File Transfer": the session's local folders, transfer buffers and what
// it knows of the remote system.
class SessionFileTransferPage final : public NPropertyTreePage {
 public:
  // `global` is read once, for what an empty download folder falls back to.
  SessionFileTransferPage(ISessionConfig& session, GlobalConfig& global, bool readOnly);
};
