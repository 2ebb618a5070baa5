#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "File Transfer": where transfers start and land, and the transfer queue.
class GlobalFileTransferPage final : public NPropertyTreePage {
 public:
  explicit GlobalFileTransferPage(GlobalConfig& global);
};
