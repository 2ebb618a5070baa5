#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
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

  using Value = std::variant<std::int64_t, std::u16string_view, NStringArray>;
  using Values = std::initializer_list<std::pair<std::u16string_view, Value>>;
  // Writes `values` to key `name`, each as its kind (DWORD, string, list),
  // and saves the key.
  void Write(const std::string& name, Values values) {
    const std::unique_ptr<NProfileKey> key = Key(name);
    ASSERT_TRUE(key) << name;
    for (const auto& [value, data] : values) {
      if (data.index() == 0) key->SetDwordValue(value, static_cast<std::uint32_t>(std::get<0>(data)));
      if (data.index() == 1) key->SetStringValue(value, std::get<1>(data));
      if (data.index() == 2) key->SetMultiStringValue(value, std::get<2>(data));
    }
    ASSERT_TRUE(key->Flush()) << name;
  }

  // A value of key `name` as its file holds it: the text or "(absent)", the
  // number or nothing.
  NUnicodeString String(const std::string& name, std::u16string_view value) {
    NUnicodeString text;
    const std::unique_ptr<NProfileKey> key = Key(name);
    return key && key->GetStringValue(value, &text) ? text : NUnicodeString(u"(absent)");
  }
  std::optional<std::uint32_t> Dword(const std::string& name, std::u16string_view value) {
    std::uint32_t number = 0;
    const std::unique_ptr<NProfileKey> key = Key(name);
    if (!key || !key->GetDwordValue(value, &number)) return std::nullopt;
    return number;
  }

 private:
  static inline std::unique_ptr<NIniFileStoreFactory> s_factory;
  std::filesystem::path m_root;
  std::vector<std::unique_ptr<NProfileStore>> m_stores;  // keys must not outlive their store
};
