#pragma once

#include <string>

#include "tools/NToolStore.h"

// The commands on the global record and the product: `global` and
// `product`. The configuration folder's store is registered as the
// library's store factory for the command's duration.
class NGlobalCommands {
 public:
  NGlobalCommands(std::string folder, std::string appName);
  ~NGlobalCommands();

  // Prints every field of the global record for `productId`, as
  // "name=value" lines or one JSON object; then saves it with the save flag
  // set when `save`.
  // Encrypted values are "(encrypted)" unless `showSecrets`.
  int Global(int productId, bool json, bool save, bool showSecrets = false);
  int Product();
  // The folder's format version and the global record's counts, for the
  // overview.
  int Summary();

 private:
  NToolStore m_store;
  std::string m_folder;
};
