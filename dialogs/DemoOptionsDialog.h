#pragma once

#include "config/GlobalConfig.h"
#include "dialogs/DemoFilesPage.h"
#include "dialogs/DemoGeneralPage.h"
#include "dialogs/DemoPasswordsPage.h"
#include "dialogs/DemoTabsPage.h"
#include "location/NPolicy.h"
#include "uicore/NPropertyTreeDialog.h"

// A small dialog over real settings of the global record, to show and test
// the dialog frame: "General" with "Tabs" under it, "Passwords" and
// "Files". OK and Apply store the pages and save the process-wide record.
class DemoOptionsDialog final : public NPropertyTreeDialog {
 public:
  // `global` is the process-wide record; `policy` locks the password
  // controls.
  DemoOptionsDialog(GlobalConfig& global, const NPolicy& policy, void* parent = nullptr);

 protected:
  bool OnApplied(NPageFailure& failure) override;

 private:
  static NPropertyPageStateMap s_pageStateMap;

  DemoGeneralPage m_general;
  DemoTabsPage m_tabs;
  DemoPasswordsPage m_passwords;
  DemoFilesPage m_files;
};
