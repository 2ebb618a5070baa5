#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Emacs": the Alt key as a meta key.
class SessionEmacsPage final : public NPropertyTreePage {
 public:
  explicit SessionEmacsPage(ISessionConfig& session);
};
