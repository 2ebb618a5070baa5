#pragma once

#include <optional>
#include <string>
#include <utility>
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

  // `cfgdeck dialog session|default-session`: the Session Options dialog's
  // structure after its opening and the protocol choices given.
  struct SessionRequest {
    std::string path;  // empty: the default session
    std::optional<int> mode;  // none: 0, or 3 for the default session
    std::optional<std::string> installed;  // comma-separated; none: detected
    // The protocol choices in the order given: (terminal?, name).
    std::vector<std::pair<bool, std::string>> protocols;
  };

  // `cfgdeck dialog global`: the Global Options dialog's structure.
  struct GlobalRequest {
    std::optional<std::string> installed;  // comma-separated; none: detected
    int productId = 3;
    bool noFileTypes = false;
  };

  NDialogCommands(const std::string& folder, const std::string& appName);

  int Global(const Request& request);
  int Session(const SessionRequest& request);
  int GlobalOptions(const GlobalRequest& request);

 private:
  // Runs the request's edits and button on `dialog`; false, with the
  // reason, when one was refused.
  bool Drive(NPropertyTreeDialog& dialog, const Request& request, std::string* error);

  NToolStore m_store;
};
