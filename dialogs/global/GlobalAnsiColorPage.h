#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "ANSI Color": the global 16-colour palette, which sessions use unless they have their own.
class GlobalAnsiColorPage final : public NPropertyTreePage {
 public:
  explicit GlobalAnsiColorPage(GlobalConfig& global);
};
