#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Log File": where and how the session's output is logged.
class SessionLogFilePage final : public NPropertyTreePage {
 public:
  explicit SessionLogFilePage(ISessionConfig& session);
};
