#pragma once

#include "config/GlobalConfig.h"
#include "location/NPolicy.h"
#include "uicore/NPropertyTreePage.h"

// The demonstration dialog's "Passwords" page: what the administrator's
// policies may lock.
class DemoPasswordsPage final : public NPropertyTreePage {
 public:
  DemoPasswordsPage(GlobalConfig& global, const NPolicy& policy);
};
