#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// The demonstration dialog's "General" page: windows and the connect dialog.
class DemoGeneralPage final : public NPropertyTreePage {
 public:
  explicit DemoGeneralPage(GlobalConfig& global);
};
