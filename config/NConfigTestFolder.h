#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"
#include "store/NKeyPath.h"

// A configuration folder of its own for each test, with the store on it
// and the library's factory pointed at it.
class NConfigTestFolder {
 public:
  NConfigTestFolder() {
    m_root = std::filesystem::path(testing::TempDir()) /
             ("cfgdeck_config_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    std::filesystem::remove_all(m_root);
    std::filesystem::create_directories(m_root);
    s_factory = std::make_unique<NIniFileStoreFactory>(NUnicodeString::FromUtf8(m_root.string()), NUnicodeString());
    CfgdeckInitProfileFactory([]() -> NProfileStoreFactory* { return s_factory.get(); });
  }
  ~NConfigTestFolder() {
    CfgdeckInitProfileFactory(nullptr);
    s_factory.reset();
    std::filesystem::remove_all(m_root);
  }

  const std::filesystem::path& Root() const { return m_root; }

  // A key of the folder, writable, with its file read afresh; the root for
  // an empty name.
  std::unique_ptr<NProfileKey> Key(const std::string& name) {
    m_stores.push_back(s_factory->CreateStore());
    NReportMessageParams params;
    std::unique_ptr<NProfileKey> root = m_stores.back()->OpenRootKey(false, params);
    if (!root || name.empty()) return root;
    return root->OpenSubKey(NUnicodeString::FromUtf8(name), params);
  }

 private:
  static inline std::unique_ptr<NIniFileStoreFactory> s_factory;
  std::filesystem::path m_root;
  std::vector<std::unique_ptr<NProfileStore>> m_stores;  // keys must not outlive their store
};
