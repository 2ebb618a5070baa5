#pragma once

#include <array>

#include "config/GlobalConfig.h"
#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "ANSI Color": the session's 16-colour palette, or the global one.
class SessionAnsiColorPage final : public NPropertyTreePage {
 public:
  SessionAnsiColorPage(ISessionConfig& session, GlobalConfig& global);

 private:
  // Shows the global palette in the colour controls (stored on OK).
  void ShowGlobalColours();

  GlobalConfig& m_global;
  std::array<NFormControl*, 16> m_colours{};
};
