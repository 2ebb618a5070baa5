#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Terminal": how every terminal window behaves: mouse and clipboard, disconnection, reconnection, scrollback and sending.
class GlobalTerminalEmulationPage final : public NPropertyTreePage {
 public:
  explicit GlobalTerminalEmulationPage(GlobalConfig& global);
};
