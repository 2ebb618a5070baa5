#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Filters": the files the lists hide and the synchronisation's default filters. The base holds the form; the
// page the dialog adds is the derived class.
class GlobalFilterPageBase : public NPropertyTreePage {
 public:
  explicit GlobalFilterPageBase(GlobalConfig& global);
};

class GlobalFilterPage final : public GlobalFilterPageBase {
 public:
  using GlobalFilterPageBase::GlobalFilterPageBase;
};
