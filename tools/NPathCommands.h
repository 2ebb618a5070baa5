#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tools/NToolOutput.h"

namespace CLI {
class App;
}

// The tool's "path" commands: the steps with which a host finds its
// configuration folder, one command each. A command prints the resulting
// path on stdout and exits 0; when the step fails it prints the message
// code and text ("cfgdeck: 0xe1380009: The folder ...") or the reason on
// stderr and exits 1. A notice a step passes on (a redirect) goes to stderr
// in the same form, and the command still succeeds.
class NPathCommands {
 public:
  using Output = std::function<void(std::string_view)>;

  // Adds "path" and its commands to `app`, which must outlive this object.
  explicit NPathCommands(CLI::App& app, Output out = NOut, Output err = NErr);

  // Whether the parsed command line named one of the commands.
  bool Parsed() const;
  // Runs that command; returns the tool's exit status.
  int Run();

 private:
  int UnderExe();
  int CommandLine();
  int Redirect();
  int Remembered();
  int Save();
  int Failed(std::uint32_t code, const std::string& text);
  int Refused(const std::string& why);
  int Print(const std::u16string& path);

  Output m_out;
  Output m_err;
  CLI::App* m_path = nullptr;
  CLI::App* m_underExe = nullptr;
  CLI::App* m_commandLine = nullptr;
  CLI::App* m_redirect = nullptr;
  CLI::App* m_remembered = nullptr;
  CLI::App* m_save = nullptr;
  std::string m_argument;
  bool m_saveFlag = false;
  bool m_force = false;
};
