#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Advanced" under "File Transfer": keyword highlighting and the session
// monitor.
class SessionFileTransferAdvancedPage final : public NPropertyTreePage {
 public:
  explicit SessionFileTransferAdvancedPage(ISessionConfig& session);
};
