#pragma once

#include <string>
#include <vector>

#include "tools/NToolStore.h"

class NPropertyTreeDialog;

// `cfgdeck dialog`: the options dialog run headless, as a script would
// drive it: set controls by page and label, press OK or Apply, and print
// the pages and their controls. Without OK or Apply the dialog is
// cancelled and nothing is saved.
class NDialogCommands {
 public:
  struct Request {
    std::vector<std::string> sets;  // "PAGE/LABEL=VALUE"
    std::string search;
    bool ok = false;
    bool apply = false;
    bool json = false;
  };

  NDialogCommands(const std::string& folder, const std::string& appName);

  int Global(const Request& request);

 private:
  // Runs the request's edits and button on `dialog`; false, with the
  // reason, when one was refused.
  bool Drive(NPropertyTreeDialog& dialog, const Request& request, std::string* error);

  NToolStore m_store;
};
