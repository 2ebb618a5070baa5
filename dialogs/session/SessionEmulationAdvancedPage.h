#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Advanced" under "Emulation": the terminal's finer behaviour, the
// character mappings, and typing, mouse and clipboard.
class SessionEmulationAdvancedPage final : public NPropertyTreePage {
 public:
  explicit SessionEmulationAdvancedPage(ISessionConfig& session);
};
