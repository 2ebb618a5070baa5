#pragma once

#include <cstdint>
#include <string>

namespace CLI {
class App;
}

// The tool's "passphrase" commands on the configuration folder's secrets:
//   status   what protects the encrypted values, and whether a change of
//            the passphrase waits to be finished
//   set      sets a passphrase where there is none
//   change   replaces the passphrase
//   clear    removes it; the values go back to the key the system keeps
// set, change and clear encrypt every encrypted value anew. Passphrases are
// read from the terminal without echo, or with --stdin one a line from
// standard input: the current one first (change, clear), then the new one
// (set, change).
class NSecretCommands {
 public:
  // Adds "passphrase" and its commands to `app`, which must outlive this.
  explicit NSecretCommands(CLI::App& app);

  bool Parsed() const;
  // Runs the parsed command on `configFolder`; returns the tool's exit status.
  int Run(const std::string& configFolder, const std::string& appName);

  // Opens the secrets of `configFolder` for a command that reads or writes
  // encrypted values, asking for the passphrase when one is set (from
  // standard input, a line, with `fromStdin`). The folder's store must be
  // registered. False, with the reason on stderr, when it does not open.
  static bool OpenSecrets(const std::string& configFolder, bool fromStdin);

 private:
  int Status(const std::string& configFolder);
  int Change(const std::string& configFolder, bool needsCurrent, bool setsNew);

  CLI::App* m_passphrase = nullptr;
  CLI::App* m_status = nullptr;
  CLI::App* m_set = nullptr;
  CLI::App* m_change = nullptr;
  CLI::App* m_clear = nullptr;
  bool m_stdin = false;
  std::uint32_t m_workFactor = 0;
};
