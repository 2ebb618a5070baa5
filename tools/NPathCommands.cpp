#include "tools/NPathCommands.h"

#include <CLI/CLI.hpp>

#include <cstdio>

#include "base/NUnicodeString.h"
#include "location/NConfigFolder.h"
#include "location/NReportMessageParams.h"
#include "store/NIniFileStoreFactory.h"
#include "uicore/NAppName.h"

namespace {

// Where the notices of a redirect go: the step's callback is a plain
// function.
std::function<void(const NReportMessageParams&)> g_notice;
void Notice(const NReportMessageParams& params) {
  if (g_notice) g_notice(params);
}

// The folder being checked stands for the application's folder, which the
// step moves the old global file of.
NIniFileStoreFactory* g_factory = nullptr;
NProfileStoreFactory* Factory() { return g_factory; }

std::string Coded(std::uint32_t code, const std::string& text) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "cfgdeck: 0x%08x: ", code);
  std::string line = prefix + text;
  if (line.empty() || line.back() != '\n') line += '\n';
  return line;
}

}  // namespace

NPathCommands::NPathCommands(CLI::App& app, Output out, Output err) : m_out(std::move(out)), m_err(std::move(err)) {
  m_path = app.add_subcommand("path", "Find a configuration folder the ways a host does");
  m_path->require_subcommand(1);
  // The arguments are paths, and a path may start with "/" on Windows too,
  // where CLI11 would take it for an option. Set before the subcommands are
  // added, which copy it.
  m_path->allow_windows_style_options(false);
  m_underExe = m_path->add_subcommand(
      "under-exe", "Print DIR's folder \"Config\" when it holds \"global.ini\" (the portable layout)");
  m_underExe->add_option("DIR", m_argument, "The executable's folder")->required();
  m_commandLine = m_path->add_subcommand("command-line", "Check a folder given with /F; print it as resolved");
  m_commandLine->add_option("PATH", m_argument, "The folder")->required();
  m_redirect = m_path->add_subcommand(
      "redirect",
      "Follow an old folder's migration redirect; print the folder to use (an old folder without one has its "
      "global file moved aside)");
  m_redirect->add_flag("--save", m_saveFlag, "Remember a redirected folder for the application");
  m_redirect->add_option("PATH", m_argument, "The folder")->required();
  m_remembered = m_path->add_subcommand("remembered", "Print the folder remembered for a product");
  m_remembered->add_option("KEY", m_argument, "The product's key (default: the application's name)");
  m_save = m_path->add_subcommand("save", "Remember PATH as the application's folder; print it");
  m_save->add_flag("--force", m_force, "Write the value even when it already holds PATH");
  m_save->add_option("PATH", m_argument, "The folder")->required();
}

bool NPathCommands::Parsed() const { return m_path->parsed(); }

int NPathCommands::Run() {
  if (m_underExe->parsed()) return UnderExe();
  if (m_commandLine->parsed()) return CommandLine();
  if (m_redirect->parsed()) return Redirect();
  if (m_remembered->parsed()) return Remembered();
  return Save();
}

int NPathCommands::Print(const std::u16string& path) {
  m_out(NUnicodeString(path).ToUtf8() + "\n");
  return kExitSuccess;
}

int NPathCommands::Failed(std::uint32_t code, const std::string& text) {
  m_err(Coded(code, text));
  return kExitFailure;
}

int NPathCommands::Refused(const std::string& why) {
  m_err("cfgdeck: " + why + "\n");
  return kExitFailure;
}

int NPathCommands::UnderExe() {
  const NUnicodeString folder = GetAppConfigPathUnderExe(NUnicodeString::FromUtf8(m_argument).c_str());
  if (folder.empty()) return Refused("no folder \"Config\" holding \"global.ini\" under '" + m_argument + "'");
  return Print(folder);
}

int NPathCommands::CommandLine() {
  NUnicodeString result;
  NReportMessageParams params;
  if (!CheckAppConfigPathCommandLine(NUnicodeString::FromUtf8(m_argument).c_str(), result, params)) {
    return Failed(params.GetCode(), params.GetText().ToUtf8());
  }
  return Print(result);
}

int NPathCommands::Redirect() {
  NUnicodeString path = NUnicodeString::FromUtf8(m_argument);
  NIniFileStoreFactory factory(path, NUnicodeString());
  g_factory = &factory;
  g_notice = [this](const NReportMessageParams& params) { m_err(Coded(params.GetCode(), params.GetText().ToUtf8())); };
  CfgdeckInitProfileFactory(&Factory);
  const bool accepted = CheckAppConfigPathRedirect(m_saveFlag, &Notice, path);
  CfgdeckInitProfileFactory(nullptr);
  g_notice = nullptr;
  g_factory = nullptr;
  if (!accepted) return Refused("the old global file of '" + m_argument + "' could not be moved aside");
  return Print(path);
}

int NPathCommands::Remembered() {
  const NUnicodeString key = m_argument.empty() ? NGetAppName() : NUnicodeString::FromUtf8(m_argument);
  const NUnicodeString folder = GetAppConfigPath(key.c_str());
  if (folder.empty()) return Refused("no \"Config Path\" is remembered for '" + key.ToUtf8() + "'");
  return Print(folder);
}

int NPathCommands::Save() {
  const NUnicodeString path = NUnicodeString::FromUtf8(m_argument);
  NReportMessageParams params;
  if (!NSaveAppConfigPath(path, m_force, params)) return Failed(params.GetCode(), params.GetText().ToUtf8());
  return Print(path);
}
