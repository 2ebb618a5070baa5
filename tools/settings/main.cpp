#include <CLI/CLI.hpp>

#include <string>

#include "config/NConfigEntry.h"
#include "dialogs/DemoOptionsDialog.h"
#include "platform/NConsole.h"
#include "tools/NToolFolder.h"
#include "tools/NToolOutput.h"
#include "tools/NToolStore.h"
#include "uicore/qt/NQtApplication.h"
#include "uicore/qt/NQtScreenshots.h"

// cfgdeck-settings: the options dialogs on a configuration folder, in Qt
// windows. OK saves what the dialog stored; Cancel leaves the folder as it
// was.
int main(int argc, char** argv) {
  CLI::App app("cfgdeck-settings: edit a cfgdeck configuration folder in the options dialogs.", "cfgdeck-settings");
  std::string configFolder, appName = "Skeldon", screenshots, sessionPath;
  app.add_option("--config", configFolder, "The configuration folder (found as cfgdeck finds it when not given)")
      ->option_text("DIR");
  app.add_option("--app", appName, "The application name, which decides the product id")->option_text("NAME");
  app.add_option("--screenshot", screenshots,
                 "Render every page of the dialog, without a display, as DIR/NN-Page-Title.png, and exit")
      ->option_text("DIR");
  app.add_subcommand("global", "The global options");
  CLI::App* session = app.add_subcommand("session", "The options of the session at PATH");
  session->add_option("PATH", sessionPath, "The session's path under Sessions, e.g. Lab/router1")->required();
  CLI::App* defaultSession = app.add_subcommand("default-session", "The options of the default session");
  app.require_subcommand(1);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e);
    NErr(std::string("cfgdeck-settings: ") + e.what() + "\nRun 'cfgdeck-settings --help' for usage.\n");
    return kExitUsage;
  }
  if (session->parsed() || defaultSession->parsed()) {
    NErr("cfgdeck-settings: the session options dialog is not part of this build yet; 'global' opens the options\n");
    return kExitFailure;
  }

  const NToolFolder folder = NResolveToolFolder(configFolder, appName);
  NToolStore store(folder.path, appName);
  NQtApplication qt(argc, argv, !screenshots.empty());
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, -1);
  DemoOptionsDialog dialog(*config, NReadPolicy());
  if (!screenshots.empty()) {
    std::string error;
    if (!NQtSaveScreenshots(dialog, screenshots, &error)) {
      NErr("cfgdeck-settings: " + error + "\n");
      return kExitFailure;
    }
    NOut("Wrote " + std::to_string(dialog.VisibleRows().size()) + " pages to " + screenshots + "\n");
    return kExitSuccess;
  }
  dialog.DoModal();
  return kExitSuccess;
}
