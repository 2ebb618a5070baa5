#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// The demonstration dialog's "Files" page: pickers and lists.
class DemoFilesPage final : public NPropertyTreePage {
 public:
  explicit DemoFilesPage(GlobalConfig& global);
};
