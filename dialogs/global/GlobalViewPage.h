#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "View": what the file-transfer windows show, and the log's colours.
class GlobalViewPage final : public NPropertyTreePage {
 public:
  explicit GlobalViewPage(GlobalConfig& global);
};
