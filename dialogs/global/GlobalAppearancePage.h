#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Appearance": fonts, scroll bars, cursor, transparency and the indicators
// every terminal window shows.
class GlobalAppearancePage final : public NPropertyTreePage {
 public:
  // `screenDpi`: the host screen's dots per inch, for font sizes in points
  // (0: 96).
  GlobalAppearancePage(GlobalConfig& global, unsigned screenDpi);
};
