#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Advanced": under Terminal: the command window, the button bar, the agent, escape sequences and the prompts that may be suppressed.
class GlobalTerminalAdvancedPage final : public NPropertyTreePage {
 public:
  explicit GlobalTerminalAdvancedPage(GlobalConfig& global);
};
