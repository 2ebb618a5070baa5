#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Modes": the terminal modes a session starts in, and which of them the
// host may switch.
class SessionEmulationModesPage final : public NPropertyTreePage {
 public:
  // `liveModes`: the session is connected, and OK changes its modes at once.
  SessionEmulationModesPage(ISessionConfig& session, bool liveModes);
};
