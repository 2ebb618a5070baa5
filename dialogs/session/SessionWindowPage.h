#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Window": the terminal window's size, scroll bars, position and bars.
class SessionWindowPage final : public NPropertyTreePage {
 public:
  explicit SessionWindowPage(ISessionConfig& session);
};
