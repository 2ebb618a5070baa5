#pragma once

#include <vector>

#include "config/GlobalConfig.h"
#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Appearance": the terminal's colours, fonts and cursor. OK sets
// `fontsChanged` (which must outlive the page) when it stored a change the
// host has to redraw.
class SessionAppearancePage final : public NPropertyTreePage {
 public:
  // `screenDpi`: the host screen's dots per inch, for sizes in points (0: 96).
  SessionAppearancePage(ISessionConfig& session, GlobalConfig& global, int screenDpi, bool& fontsChanged);

  bool OnOK() override;

 private:
  bool& m_fontsChanged;
  // The controls whose change the host redraws.
  std::vector<const NFormControl*> m_redrawn;
};
