#pragma once

#include <string>

#include "tools/NToolStore.h"

// The commands on the sessions tree: list, print, create, rename, copy,
// delete, and the name check. Paths are relative to "Sessions", with "\" or
// "/" between names.
class NSessionCommands {
 public:
  NSessionCommands(const std::string& folder, const std::string& appName);

  int List();
  // Encrypted values are "(encrypted)" unless `showSecrets`.
  int Show(const std::string& path, bool json, bool save, bool showSecrets = false);
  int Create(const std::string& path);
  int Rename(const std::string& path, const std::string& newName);
  int Copy(const std::string& path, const std::string& newPath);
  int Delete(const std::string& path);
  int ValidateName(const std::string& location, const std::string& oldName, const std::string& newName, bool isNew);

 private:
  NToolStore m_store;
  std::string m_folder;
};
