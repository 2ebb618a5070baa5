#include "tools/NCommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>

#include "base/NUnicodeString.h"
#include "location/NPersonalDataFolder.h"
#include "location/NReportMessageParams.h"
#include "platform/NConsole.h"
#include "tools/NDialogCommands.h"
#include "tools/NGlobalCommands.h"
#include "tools/NKeyPrinterCommands.h"
#include "tools/NPathCommands.h"
#include "tools/NPersonalCommands.h"
#include "tools/NSecretCommands.h"
#include "tools/NSessionCommands.h"
#include "tools/NStoreCommands.h"
#include "tools/NToolFolder.h"
#include "tools/NToolOutput.h"
#include "tools/NToolStore.h"
#include "uicore/NAppName.h"

namespace {

// A message code: 0x followed by hex digits, or decimal; 32 bits.
bool ParseCode(std::string_view text, std::uint32_t* code) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *code, base);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

}  // namespace

int NCommandLine::Run(const std::vector<std::string>& args) {
  CLI::App app(
      "cfgdeck: inspect and change a cfgdeck configuration folder.\n"
      "Without a command, prints an overview of the configuration folder.",
      "cfgdeck");
  app.option_defaults()->always_capture_default();
  app.add_option("--config", m_configFolder,
                 "The configuration folder (default: a Config folder beside the program holding global.ini, then "
                 "the remembered Config Path, then a folder under the user's configuration directory)")
      ->option_text("DIR");
  app.add_option("--app", m_appName, "The application name, which decides the product id")->option_text("NAME");

  std::string code;
  std::vector<std::string> messageArguments;
  CLI::App* message = app.add_subcommand("message", "Print the text of a message code with its arguments");
  message->add_option("CODE", code, "The message code: 0x followed by hex digits, or decimal")->required();
  message->add_option("ARG", messageArguments, "Insertion arguments %1, %2, ...");

  // Key paths are relative to the configuration folder, with \ or / between names.
  std::string key, name;
  NStoreCommands::NewValue value;
  CLI::App* dump = app.add_subcommand("dump", "Print every value of a key as a save writes it (CR LF line ends)");
  dump->add_option("KEY", key, "The key's path, e.g. Sessions/Lab/router1")->required();
  CLI::App* keys = app.add_subcommand("keys", "List the sub-keys of a key: kind (5 folder, 6 file, 7 both), tab, name");
  keys->add_option("KEY", key, "The key's path (empty for the folder itself)")->required();
  CLI::App* values = app.add_subcommand("values",
                                        "List the values of a key: type tag (0 DWORD, 1 string, 2 binary, "
                                        "3 multi-string), tab, name");
  values->add_option("KEY", key, "The key's path")->required();
  CLI::App* set = app.add_subcommand("set", "Set one value of a key and save it (the key is created when missing)");
  set->add_option("KEY", key, "The key's path")->required();
  set->add_option("NAME", name, "The value's name")->required();
  std::string dwordText, stringText, binaryText;
  std::vector<std::string> multiText;
  auto* dwordOption =
      set->add_option("--dword", dwordText, "A DWORD: decimal, or 0x followed by hex digits")->option_text("N");
  auto* stringOption = set->add_option("--string", stringText, "A string")->option_text("TEXT");
  auto* binaryOption = set->add_option("--binary", binaryText, "Bytes as pairs of hex digits")->option_text("HEX");
  auto* multiOption = set->add_option("--multi", multiText, "A multi-string: zero or more strings")
                          ->option_text("[TEXT...]")
                          ->expected(0, -1);
  bool secret = false, fromStdin = false, showSecrets = false;
  auto* secretOption = set->add_flag("--secret", secret,
                                     "An encrypted value (a password): read from the terminal without echo, "
                                     "and stored encrypted");
  set->add_flag("--stdin", fromStdin,
                "With --secret: read the passphrase (when one is set) and then the value from standard input, "
                "one a line")
      ->needs(secretOption);
  dwordOption->excludes(stringOption)->excludes(binaryOption)->excludes(multiOption)->excludes(secretOption);
  stringOption->excludes(binaryOption)->excludes(multiOption)->excludes(secretOption);
  binaryOption->excludes(multiOption)->excludes(secretOption);
  multiOption->excludes(secretOption);
  CLI::App* remove = app.add_subcommand("delete", "Delete one value of a key and save it");
  remove->add_option("KEY", key, "The key's path")->required();
  remove->add_option("NAME", name, "The value's name")->required();
  CLI::App* removeKey = app.add_subcommand("delete-key", "Delete a key with everything under it");
  removeKey->add_option("KEY", key, "The key's path")->required();
  CLI::App* check = app.add_subcommand(
      "check", "Load every key under KEY (default: the whole folder), read every value, and report damaged files");
  check->add_option("KEY", key, "The key's path");

  int productId = -1;
  bool json = false, save = false;
  CLI::App* global = app.add_subcommand("global", "Print every field of the global record, in declaration order");
  global->add_option("--product", productId, "The product id the record is made for (-1: the application's)")
      ->option_text("ID");
  global->add_flag("--json", json, "One JSON object, keyed by the value names as bound for the product");
  global->add_flag("--save", save, "Then save the record, unchanged values included");
  global->add_flag("--show-secrets", showSecrets,
                   "Print encrypted values in clear (asks for the passphrase when one is set)");
  NDialogCommands::Request dialogRequest;
  CLI::App* dialog = app.add_subcommand(
      "dialog", "Run the options dialog without a window: set controls, press OK or Apply, print its pages");
  dialog->add_option("--set", dialogRequest.sets, "Set a control, as PAGE/LABEL=VALUE (repeatable)")
      ->option_text("PAGE/LABEL=VALUE");
  dialog->add_option("--search", dialogRequest.search, "Narrow the page tree to the pages matching TEXT")
      ->option_text("TEXT");
  CLI::Option* dialogOk = dialog->add_flag("--ok", dialogRequest.ok, "Press OK after the edits: they are saved");
  dialog->add_flag("--apply", dialogRequest.apply, "Press Apply after the edits: they are saved")->excludes(dialogOk);
  dialog->add_flag("--json", dialogRequest.json, "Print the pages as one JSON object");
  NDialogCommands::SessionRequest sessionDialog;
  std::string installedList;
  std::vector<std::string> terminalChoices, transferChoices;
  CLI::App* sessionDialogs[2] = {
      dialog->add_subcommand("session",
                             "The Session Options dialog of the session at PATH, opened without a "
                             "window: print its title, OK button, pages and messages"),
      dialog->add_subcommand("default-session", "The same for the default session")};
  sessionDialogs[0]->add_option("PATH", sessionDialog.path, "The session's path, e.g. Lab/router1")->required();
  CLI::Option* protocolOptions[2][2];
  for (int i = 0; i < 2; ++i) {
    CLI::App* command = sessionDialogs[i];
    command
        ->add_option("--mode", sessionDialog.mode,
                     "How the dialog is opened: 0 one session, 2 locked by another user (read-only), 3 the "
                     "default session, 4 several sessions (default: 0, or 3 for default-session)")
        ->option_text("N");
    command
        ->add_option("--installed", installedList,
                     "The installed applications, a comma-separated subset of skeldon,quenn,parrow (default: as "
                     "detected)")
        ->option_text("LIST");
    protocolOptions[i][0] = command
                                ->add_option("--set-protocol", terminalChoices,
                                             "Choose the terminal protocol NAME on the Connection page "
                                             "(repeatable; applied in the order given)")
                                ->option_text("NAME");
    protocolOptions[i][1] = command
                                ->add_option("--set-transfer-protocol", transferChoices,
                                             "Choose the file-transfer protocol NAME (repeatable)")
                                ->option_text("NAME");
  }
  NDialogCommands::GlobalRequest globalDialog;
  std::string globalInstalled;
  CLI::App* globalDialogCommand = dialog->add_subcommand(
      "global",
      "The Global Options dialog, opened without a window: print its title, OK button, pages and messages");
  globalDialogCommand
      ->add_option("--installed", globalInstalled,
                   "The installed applications, a comma-separated subset of skeldon,quenn,parrow (default: as detected)")
      ->option_text("LIST");
  globalDialogCommand->add_option("--product", globalDialog.productId, "The current product id (default: 3)")
      ->option_text("ID");
  globalDialogCommand->add_flag("--no-file-types", globalDialog.noFileTypes,
                                "Pass no file-type and icon managers, as a host without them does");
  CLI::App* product = app.add_subcommand(
      "product", "Print the product ids, the installed companion applications and the shared cache's names");

  // Session paths are relative to "Sessions", with \ or / between names.
  std::string sessionPath, newName, newPath, location, oldName;
  bool isNew = false;
  CLI::App* sessions = app.add_subcommand("sessions", "List the sessions tree depth first; folders end in \\");
  CLI::App* session = app.add_subcommand("session", "Load a session (running its migrations) and print every field");
  session->add_option("PATH", sessionPath, "The session's path, e.g. Lab/router1")->required();
  session->add_flag("--json", json, "One JSON object, keyed by the value names");
  session->add_flag("--save", save, "Then save the session, unchanged values included");
  session->add_flag("--show-secrets", showSecrets,
                    "Print encrypted values in clear (asks for the passphrase when one is set)");
  CLI::App* newSession = app.add_subcommand("new-session", "Create a session from the session Default, and save it");
  newSession->add_option("PATH", sessionPath, "The new session's path")->required();
  CLI::App* renameSession = app.add_subcommand("rename-session", "Give a session a new name in its folder");
  renameSession->add_option("PATH", sessionPath, "The session's path")->required();
  renameSession->add_option("NEWNAME", newName, "The new name")->required();
  CLI::App* copySession = app.add_subcommand("copy-session", "Copy a session to a new path");
  copySession->add_option("PATH", sessionPath, "The session's path")->required();
  copySession->add_option("NEWPATH", newPath, "The copy's path")->required();
  CLI::App* deleteSession = app.add_subcommand("delete-session", "Delete a session");
  deleteSession->add_option("PATH", sessionPath, "The session's path")->required();
  CLI::App* validateName = app.add_subcommand(
      "validate-name", "Check a session name: exit 0 when it may be used, else print its message code and text");
  validateName->add_flag("--new", isNew, "The name is for a new session in the folder LOCATION");
  validateName->add_option("LOCATION", location, "The new session's folder, or the renamed session's path")->required();
  validateName->add_option("OLDNAME", oldName, "The session's current name (any text for a new one)")->required();
  validateName->add_option("NEWNAME", newName, "The name to check")->required();

  NPathCommands paths(app);
  NKeyPrinterCommands keyPrinter(app);
  NPersonalCommands personal(app);
  NSecretCommands secrets(app);

  // CLI11 takes the arguments last first, without the program name.
  std::vector<std::string> reversed(args.rbegin(), args.rend());
  if (!reversed.empty()) reversed.pop_back();
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    NOut(app.help());
    return kExitSuccess;
  } catch (const CLI::CallForAllHelp&) {
    NOut(app.help("", CLI::AppFormatMode::All));
    return kExitSuccess;
  } catch (const CLI::ParseError& e) {
    // A subcommand's --help raises CallForHelp from within the subcommand.
    NErr(std::string("cfgdeck: ") + e.what() + "\nRun 'cfgdeck --help' for usage.\n");
    return kExitUsage;
  }

  NSetAppName(NUnicodeString::FromUtf8(m_appName));
  NToolFolder folder = NResolveToolFolder(m_configFolder, m_appName);
  m_configFolder = std::move(folder.path);
  m_foundBy = std::move(folder.foundBy);
  if (message->parsed()) return Message(code, messageArguments);
  if (paths.Parsed()) return paths.Run();
  if (keyPrinter.Parsed()) return keyPrinter.Run();
  if (personal.Parsed()) return personal.Run(m_configFolder);
  if (secrets.Parsed()) return secrets.Run(m_configFolder, m_appName);
  NStoreCommands store(m_configFolder);
  if (dump->parsed()) return store.Dump(key);
  if (keys->parsed()) return store.Keys(key);
  if (values->parsed()) return store.Values(key);
  if (set->parsed()) {
    // CLI11 reads a bare "--multi" as one empty string; a multi-string with
    // no strings is what it means.
    const auto multiAt = std::find(args.begin(), args.end(), "--multi");
    const bool multiGiven = multiAt != args.end() || *multiOption;
    if (multiAt != args.end() && (multiAt + 1 == args.end() || (multiAt + 1)->rfind("--", 0) == 0)) {
      multiText.clear();
    }
    if (!*dwordOption && !*stringOption && !*binaryOption && !multiGiven && !secret) {
      NErr("cfgdeck set: give the value with one of --dword, --string, --binary, --multi or --secret\n");
      return kExitUsage;
    }
    if (secret) return SetSecret(store, key, name, fromStdin);
    if (*dwordOption) value.dword = dwordText;
    if (*stringOption) value.string = stringText;
    if (*binaryOption) value.binary = binaryText;
    if (multiGiven) value.multi = multiText;
    return store.Set(key, name, value);
  }
  if (remove->parsed()) return store.Delete(key, name);
  if (removeKey->parsed()) return store.DeleteKey(key);
  if (check->parsed()) return store.Check(key);
  if (global->parsed()) {
    return NGlobalCommands(m_configFolder, m_appName).Global(productId, json, save, showSecrets);
  }
  for (int i = 0; i < 2; ++i) {
    CLI::App* command = sessionDialogs[i];
    if (!command->parsed()) continue;
    if (command->get_option("--installed")->count() > 0) sessionDialog.installed = installedList;
    // The two choices interleave as given: the parse order tells which came when.
    std::size_t next[2] = {0, 0};
    for (const CLI::Option* option : command->parse_order()) {
      for (int kind = 0; kind < 2; ++kind) {
        if (option != protocolOptions[i][kind]) continue;
        const std::vector<std::string>& names = kind == 0 ? terminalChoices : transferChoices;
        if (next[kind] < names.size()) sessionDialog.protocols.emplace_back(kind == 0, names[next[kind]++]);
      }
    }
    return NDialogCommands(m_configFolder, m_appName).Session(sessionDialog);
  }
  if (globalDialogCommand->parsed()) {
    if (globalDialogCommand->get_option("--installed")->count() > 0) globalDialog.installed = globalInstalled;
    return NDialogCommands(m_configFolder, m_appName).GlobalOptions(globalDialog);
  }
  if (dialog->parsed()) return NDialogCommands(m_configFolder, m_appName).Global(dialogRequest);
  if (product->parsed()) return NGlobalCommands(m_configFolder, m_appName).Product();
  if (sessions->parsed()) return NSessionCommands(m_configFolder, m_appName).List();
  if (session->parsed()) {
    return NSessionCommands(m_configFolder, m_appName).Show(sessionPath, json, save, showSecrets);
  }
  if (newSession->parsed()) return NSessionCommands(m_configFolder, m_appName).Create(sessionPath);
  if (renameSession->parsed()) return NSessionCommands(m_configFolder, m_appName).Rename(sessionPath, newName);
  if (copySession->parsed()) return NSessionCommands(m_configFolder, m_appName).Copy(sessionPath, newPath);
  if (deleteSession->parsed()) return NSessionCommands(m_configFolder, m_appName).Delete(sessionPath);
  if (validateName->parsed()) {
    return NSessionCommands(m_configFolder, m_appName).ValidateName(location, oldName, newName, isNew);
  }
  return Overview();
}

int NCommandLine::SetSecret(NStoreCommands& store, const std::string& key, const std::string& name, bool fromStdin) {
  // The folder's store is registered for the keyring, which reads "Global".
  NToolStore registered(m_configFolder, m_appName);
  if (!NSecretCommands::OpenSecrets(m_configFolder, fromStdin)) return kExitFailure;
  if (!fromStdin) NErr("Value of " + name + ": ");
  std::string line;
  if (!NReadStandardLine(&line, false)) {
    NErr("cfgdeck set: no value was given\n");
    return kExitFailure;
  }
  NStoreCommands::NewValue value;
  value.secret = std::move(line);
  const int status = store.Set(key, name, value);
  std::fill(value.secret->begin(), value.secret->end(), '\0');
  return status;
}

int NCommandLine::Message(const std::string& code, const std::vector<std::string>& arguments) {
  std::uint32_t value = 0;
  if (!ParseCode(code, &value)) {
    NErr("cfgdeck message: '" + code + "' is not a 32-bit message code (0x followed by hex digits, or decimal)\n");
    return kExitUsage;
  }
  NReportMessageParams params(value);
  for (const std::string& argument : arguments) params.AddArgument(NUnicodeString::FromUtf8(argument));
  NOut(params.GetText().ToUtf8());
  return kExitSuccess;
}

int NCommandLine::Overview() {
  NOut("Configuration folder: " + m_configFolder + " (" + m_foundBy + ")\n");
  const int status = NStoreCommands(m_configFolder).Overview();
  if (status != kExitSuccess) return status;
  const NUnicodeString app = NUnicodeString::FromUtf8(m_appName);
  if (UsePersonalDataPath(app.c_str())) {
    const NUnicodeString folder = NUnicodeString::FromUtf8(m_configFolder);
    NOut("Personal data: kept apart, in " + GetAppPersonalDataPath(app.c_str(), folder.c_str()).ToUtf8() + "\n");
  } else {
    NOut("Personal data: kept with the configuration\n");
  }
  return NGlobalCommands(m_configFolder, m_appName).Summary();
}
