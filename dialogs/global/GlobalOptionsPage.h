#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Options": how files are transferred and what happens when one exists. The base holds the form; the
// page the dialog adds is the derived class.
class GlobalOptionsPageBase : public NPropertyTreePage {
 public:
  explicit GlobalOptionsPageBase(GlobalConfig& global);
};

class GlobalOptionsPage final : public GlobalOptionsPageBase {
 public:
  using GlobalOptionsPageBase::GlobalOptionsPageBase;
};
