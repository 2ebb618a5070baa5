#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// The demonstration dialog's "Tabs" page: session tabs and their status
// colours.
class DemoTabsPage final : public NPropertyTreePage {
 public:
  explicit DemoTabsPage(GlobalConfig& global);
};
