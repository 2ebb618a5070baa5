#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Terminal": the terminal window's behaviour apart from its emulation:
// idle handling, disconnection, send delays and the window's title.
class SessionTerminalPage final : public NPropertyTreePage {
 public:
  explicit SessionTerminalPage(ISessionConfig& session);
};
