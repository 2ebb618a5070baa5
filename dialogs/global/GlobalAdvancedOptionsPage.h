#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Advanced": under Options: time-outs, retries, buffers, logs, permissions and remote editing.
class GlobalAdvancedOptionsPage final : public NPropertyTreePage {
 public:
  explicit GlobalAdvancedOptionsPage(GlobalConfig& global);
};
