#pragma once

#include "config/GlobalConfig.h"
#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Mapped Keys": the session's keymap and the Delete and Backspace keys.
class SessionMappedKeysPage final : public NPropertyTreePage {
 public:
  SessionMappedKeysPage(ISessionConfig& session, GlobalConfig& global);
};
