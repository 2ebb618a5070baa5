#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Web Browser": the browser that opens the links a terminal shows.
class GlobalWebBrowserPage final : public NPropertyTreePage {
 public:
  explicit GlobalWebBrowserPage(GlobalConfig& global);
};
