#pragma once

#include <string>
#include <string_view>
#include <vector>

class NStoreCommands;

// The cfgdeck command-line tool: parses the arguments and runs one command.
// Exit status: 0 success, 1 a refused or failed operation (reason on
// stderr), 2 bad usage.
class NCommandLine {
 public:
  // `args` are UTF-8 and include the program name.
  int Run(const std::vector<std::string>& args);

 private:
  int Overview();
  int Message(const std::string& code, const std::vector<std::string>& arguments);
  // `cfgdeck set KEY NAME --secret`: the value read like a passphrase.
  int SetSecret(NStoreCommands& store, const std::string& key, const std::string& name, bool fromStdin);

  std::string m_configFolder;
  std::string m_appName = "Skeldon";
  std::string m_foundBy;  // how the configuration folder was found
};
