#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tools/NToolOutput.h"

namespace CLI {
class App;
}

// The tool's "personal" commands: the personal data folder of the
// application (--app) for the configuration folder (--config).
//   status   the four remembered values and the folder personal values live in
//   migrate  moves the sessions' personal values into the personal data folder
//   merge    moves them back into the configuration folder
// --folder DIR names the personal data folder instead of the remembered one
// (or the default beside the configuration folder). A migration or merge
// that completes is remembered as the host's options dialog would have it:
// migrate saves the folder and "Store Personal Data Separately" 1, merge
// saves "Store Personal Data Separately" 0. While one runs with stdout on a
// terminal, a bar shows the sessions done of the total.
class NPersonalCommands {
 public:
  using Output = std::function<void(std::string_view)>;

  // Adds "personal" and its commands to `app`, which must outlive this object.
  explicit NPersonalCommands(CLI::App& app, Output out = NOut, Output err = NErr);

  bool Parsed() const;
  // Runs the parsed command on `configFolder`; returns the tool's exit status.
  int Run(const std::string& configFolder);

 private:
  int Status(const std::string& configFolder);
  int Migrate(const std::string& configFolder);
  int Merge(const std::string& configFolder);
  std::u16string PersonalFolder(const std::string& configFolder) const;

  Output m_out;
  Output m_err;
  CLI::App* m_personal = nullptr;
  CLI::App* m_status = nullptr;
  CLI::App* m_migrate = nullptr;
  CLI::App* m_merge = nullptr;
  std::string m_folder;
};
