#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "TLS": the certificates that TLS connections present.
class GlobalSslPage final : public NPropertyTreePage {
 public:
  explicit GlobalSslPage(GlobalConfig& global);
};
