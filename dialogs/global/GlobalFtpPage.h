#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "FTP": data connections, the port range and the anonymous password. The base holds the form; the
// page the dialog adds is the derived class.
class GlobalFtpPageBase : public NPropertyTreePage {
 public:
  explicit GlobalFtpPageBase(GlobalConfig& global);
};

class GlobalFtpPage final : public GlobalFtpPageBase {
 public:
  using GlobalFtpPageBase::GlobalFtpPageBase;
};
