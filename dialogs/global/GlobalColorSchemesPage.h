#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Advanced": under Appearance: the custom colours that every colour picker offers.
class GlobalColorSchemesPage final : public NPropertyTreePage {
 public:
  explicit GlobalColorSchemesPage(GlobalConfig& global);
};
