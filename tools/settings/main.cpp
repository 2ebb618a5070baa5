#include <CLI/CLI.hpp>

#include <string>

#include "base/NUnknownPointer.h"
#include "config/NConfigEntry.h"
#include "config/NSessionPath.h"
#include "config/NGlobalConfigStore.h"
#include "dialogs/global/GlobalOptionsDialog.h"
#include "dialogs/session/SessionOptionsDialog.h"
#include "platform/NConsole.h"
#include "tools/NToolFolder.h"
#include "tools/NToolInstallation.h"
#include "tools/NToolOutput.h"
#include "tools/NToolStore.h"
#include "uicore/qt/NQtApplication.h"
#include "uicore/qt/NQtScreenshots.h"

namespace {

int Screenshots(NPropertyTreeDialog& dialog, const std::string& folder) {
  std::string error;
  if (!NQtSaveScreenshots(dialog, folder, &error)) {
    NErr("cfgdeck-settings: " + error + "\n");
    return kExitFailure;
  }
  NOut("Wrote " + std::to_string(dialog.VisibleRows().size()) + " pages to " + folder + "\n");
  return kExitSuccess;
}

// The dialog only writes the record: OK saves it here.
int RunAndSave(SessionOptionsDialog& dialog, ISessionConfig& session) {
  if (dialog.DoModal() != IModalDialog::kOk) return kExitSuccess;
  NReportMessageParams params;
  if (session.Save(params)) return kExitSuccess;
  NErr("cfgdeck-settings: the session was not saved: " + params.GetText().ToUtf8());
  return kExitFailure;
}

}  // namespace

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
  std::string installed;
  CLI::Option* installedOption =
      app.add_option("--installed", installed,
                     "The installed applications, a comma-separated subset of skeldon,quenn,parrow (default: as "
                     "detected)")
          ->option_text("LIST");
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
  std::string error;
  if (*installedOption && !NSetToolInstallation(installed, &error)) {
    NErr("cfgdeck-settings: " + error + "\n");
    return kExitUsage;
  }

  const NToolFolder folder = NResolveToolFolder(configFolder, appName);
  NToolStore store(folder.path, appName);
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, -1);
  if (!session->parsed() && !defaultSession->parsed()) {
    NQtApplication qt(argc, argv, !screenshots.empty());
    NGlobalDialogInputs inputs;
    inputs.appName = NUnicodeString::FromUtf8(appName);
    inputs.tftpServerAvailable = true;
    GlobalOptionsDialog dialog(config, inputs, nullptr);
    if (!screenshots.empty()) return Screenshots(dialog, screenshots);
    if (dialog.DoModal() != IModalDialog::kOk) return kExitSuccess;
    NReportMessageParams params;
    if (NGlobalConfigStore::Save(false, params)) return kExitSuccess;
    NErr("cfgdeck-settings: the global options were not saved: " + params.GetText().ToUtf8());
    return kExitFailure;
  }
  // The session is opened before any window: a wrong path is told without one.
  const std::string path = session->parsed() ? sessionPath : "Default";
  NReportMessageParams params;
  const auto opened = NUnknownPointer<ISessionConfig>::Adopt(NOpenSession(NSessionPathFromUtf8(path), false, params));
  if (!opened) {
    NErr("cfgdeck-settings: " + params.GetText().ToUtf8());
    return kExitFailure;
  }
  NQtApplication qt(argc, argv, !screenshots.empty());
  if (defaultSession->parsed() && screenshots.empty()) {
    return EditDefaultSession(config, 0, nullptr) ? kExitSuccess : kExitFailure;
  }
  bool fontsChanged = false;
  const int mode = session->parsed() ? 0 : kSessionDialogDefault;
  SessionOptionsDialog dialog(config, opened.Get(), mode, false, true, 0, false, 0, false, fontsChanged, nullptr);
  return screenshots.empty() ? RunAndSave(dialog, *opened) : Screenshots(dialog, screenshots);
}
