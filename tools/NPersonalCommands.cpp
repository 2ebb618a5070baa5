#include "tools/NPersonalCommands.h"

#include <CLI/CLI.hpp>

#include <cstdio>

#include "base/NUnicodeString.h"
#include "location/NPersonalDataFolder.h"
#include "location/NReportMessageParams.h"
#include "platform/NConsole.h"
#include "platform/NPlatform.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "uicore/NProgressDialog.h"

namespace {

std::string Coded(std::uint32_t code, const std::string& text) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "cfgdeck: 0x%08x: ", code);
  std::string line = prefix + text;
  if (line.empty() || line.back() != '\n') line += '\n';
  return line;
}

// What the progress dialog of a run shows, drawn on the terminal.
struct NProgressBar {
  const NPersonalCommands::Output* out = nullptr;
  bool draw = false;
  std::uint64_t total = 0;
};

void ShowProgress(void* context, NProgressEvent event, const char16_t* text, std::uint64_t done, std::uint64_t total) {
  auto& bar = *static_cast<NProgressBar*>(context);
  bar.total = total;
  if (!bar.draw) return;
  if (event == NProgressEvent::kShown) {
    (*bar.out)(NUnicodeString(text).ToUtf8());
    return;
  }
  if (event == NProgressEvent::kClosed) {
    (*bar.out)("\n");
    return;
  }
  constexpr std::uint64_t kWidth = 30;
  const std::uint64_t filled = total ? done * kWidth / total : kWidth;
  const std::string line = "\r[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "] " +
                           std::to_string(done) + "/" + std::to_string(total) + " sessions";
  (*bar.out)(line);
}

// Message boxes go to stderr; their default button answers.
int PrintMessageBox(void* context, const char16_t* text, const char16_t*, unsigned) {
  (*static_cast<const NPersonalCommands::Output*>(context))(NUnicodeString(text).ToUtf8());
  return kMessageBoxIdOk;
}

const char* Flag(bool value) { return value ? "true" : "false"; }

}  // namespace

NPersonalCommands::NPersonalCommands(CLI::App& app, Output out, Output err)
    : m_out(std::move(out)), m_err(std::move(err)) {
  m_personal = app.add_subcommand("personal",
                                  "The personal data folder, which keeps the sessions' personal values "
                                  "apart from the configuration folder");
  m_personal->require_subcommand(1);
  m_status = m_personal->add_subcommand(
      "status", "Print the remembered personal data values and the folder personal values live in");
  m_migrate = m_personal->add_subcommand(
      "migrate", "Move the sessions' personal values into the personal data folder and remember it");
  m_merge =
      m_personal->add_subcommand("merge", "Move the sessions' personal values back into the configuration folder");
  for (CLI::App* command : {m_status, m_migrate, m_merge}) {
    command
        ->add_option("--folder", m_folder,
                     "The personal data folder (default: the remembered one, else the "
                     "configuration folder's path with .personal appended)")
        ->option_text("DIR");
  }
}

bool NPersonalCommands::Parsed() const { return m_personal->parsed(); }

int NPersonalCommands::Run(const std::string& configFolder) {
  NSetMessageBoxHandler(&PrintMessageBox, &m_err);
  int status;
  if (m_status->parsed()) {
    status = Status(configFolder);
  } else if (m_migrate->parsed()) {
    status = Migrate(configFolder);
  } else {
    status = Merge(configFolder);
  }
  NSetMessageBoxHandler(nullptr, nullptr);
  return status;
}

std::u16string NPersonalCommands::PersonalFolder(const std::string& configFolder) const {
  if (!m_folder.empty()) return NUnicodeString::FromUtf8(m_folder);
  return GetAppPersonalDataPath(NGetAppName().c_str(), NUnicodeString::FromUtf8(configFolder).c_str());
}

int NPersonalCommands::Status(const std::string& configFolder) {
  const NUnicodeString app = NGetAppName();
  const bool separate = UsePersonalDataPath(app.c_str());
  std::string text = "Personal Data Path=" + GetAppPersonalDataPathStored(app.c_str()).ToUtf8() + "\n";
  text += std::string("Store Personal Data Separately=") + Flag(separate) + "\n";
  text += std::string("Do Personal Data Migration=") + Flag(DoPersonalDataMigration(app.c_str())) + "\n";
  text += std::string("Do Personal Data Merge=") + Flag(DoPersonalDataMerge(app.c_str())) + "\n";
  // Without a folder of their own, personal values live in the configuration folder.
  text += "Folder in use=" + (separate ? NUnicodeString(PersonalFolder(configFolder)).ToUtf8() : configFolder) + "\n";
  m_out(text);
  return kExitSuccess;
}

int NPersonalCommands::Migrate(const std::string& configFolder) {
  NPersonalDataRunOptions options;
  options.configFolder = NUnicodeString::FromUtf8(configFolder);
  options.personalFolder = PersonalFolder(configFolder);
  NProgressBar bar{&m_out, NIsTerminal(NStandardStream::kOutput)};
  NSetProgressObserver(&ShowProgress, &bar);
  NReportMessageParams params;
  const bool moved = NMigrateToPersonalDataLocation(params, options);
  NSetProgressObserver(nullptr, nullptr);
  if (!moved) {
    m_err(Coded(params.GetCode(), params.GetText().ToUtf8()));
    return kExitFailure;
  }
  // Remembered as an absolute path: the folder exists now.
  std::u16string folder = options.personalFolder;
  std::u16string canonical;
  if (NPlatform::Default().CanonicalPath(folder, &canonical)) folder = std::move(canonical);
  if (!NSaveAppPersonalDataPath(folder, false, params) || !NSaveUsePersonalDataPath(true, false, params)) {
    m_err(Coded(params.GetCode(), params.GetText().ToUtf8()));
    return kExitFailure;
  }
  m_out("Moved the personal values of " + std::to_string(bar.total) + " sessions into " +
        NUnicodeString(folder).ToUtf8() + "\n");
  return kExitSuccess;
}

int NPersonalCommands::Merge(const std::string& configFolder) {
  NPersonalDataRunOptions options;
  options.configFolder = NUnicodeString::FromUtf8(configFolder);
  options.personalFolder = PersonalFolder(configFolder);
  NProgressBar bar{&m_out, NIsTerminal(NStandardStream::kOutput)};
  NSetProgressObserver(&ShowProgress, &bar);
  NReportMessageParams params;
  const bool merged = NMergeFromPersonalDataLocation(NGetAppName(), params, options);
  NSetProgressObserver(nullptr, nullptr);
  if (!merged || !NSaveUsePersonalDataPath(false, false, params)) {
    m_err(Coded(params.GetCode(), params.GetText().ToUtf8()));
    return kExitFailure;
  }
  m_out("Merged the personal values of " + std::to_string(bar.total) + " sessions from " +
        NUnicodeString(options.personalFolder).ToUtf8() + " into " + configFolder + "\n");
  return kExitSuccess;
}
