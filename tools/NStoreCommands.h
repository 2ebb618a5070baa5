#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/NIniFileStore.h"
#include "store/NKeyPath.h"

class NIniFileKey;

// The tool's commands on the keys and values of a configuration folder.
// Key paths are relative to the folder, with "\" or "/" between names. Each
// command returns the tool's exit status and prints as its help says.
class NStoreCommands {
 public:
  explicit NStoreCommands(const std::string& folder);

  int Dump(const std::string& key);
  int Keys(const std::string& key);
  int Values(const std::string& key);

  struct NewValue {
    std::optional<std::string> dword;
    std::optional<std::string> string;
    std::optional<std::string> binary;
    std::optional<std::vector<std::string>> multi;
    std::optional<std::string> secret;  // plain: stored encrypted
  };
  int Set(const std::string& key, const std::string& name, const NewValue& value);
  int Delete(const std::string& key, const std::string& name);
  int DeleteKey(const std::string& key);
  int Check(const std::string& key);
  // What the folder holds: its top-level keys and the number of sessions.
  int Overview();

 private:
  // False, with the reason on stderr, for a path the tool refuses: one that
  // is malformed or leaves the folder, or the empty path (the folder itself)
  // where `rootAllowed` is false.
  bool ParsePath(const std::string& key, NKeyPath* path, bool rootAllowed = false);
  std::unique_ptr<NIniFileKey> OpenKey(const NKeyPath& path, bool readOnly);
  int Iterate(const std::string& key, bool values);

  std::string m_folder;
  NIniFileStore m_store;
};
