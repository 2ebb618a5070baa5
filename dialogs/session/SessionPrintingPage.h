#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Printing": whether the session prints with the global settings, and
// its own when not.
class SessionPrintingPage final : public NPropertyTreePage {
 public:
  // `printerAvailable` false: the page says so, and the interval cannot be
  // edited.
  SessionPrintingPage(ISessionConfig& session, bool printerAvailable);
};
