#pragma once

#include <memory>
#include <string>

class NIniFileStoreFactory;

// Registers the configuration folder's INI store as the library's store
// factory, and the application name, for the life of a command; the global
// record is freed at the end.
class NToolStore {
 public:
  NToolStore(const std::string& folder, const std::string& appName);
  ~NToolStore();
  NToolStore(const NToolStore&) = delete;
  NToolStore& operator=(const NToolStore&) = delete;

  NIniFileStoreFactory& Factory();
};
