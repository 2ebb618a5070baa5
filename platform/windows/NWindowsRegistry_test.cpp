// The system's registry behind NRegistry: what the library's remembered
// folders and personal-data settings are written to on Windows.

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/NRegistry.h"

namespace {

class NWindowsRegistryTest : public testing::Test {
 protected:
  void SetUp() override {
    m_path = u"Software\\cfgdeck-test-" + std::u16string(reinterpret_cast<const char16_t*>(
                                                std::to_wstring(GetCurrentProcessId()).c_str()));
    ASSERT_NE(NNativeRegistry(), nullptr);
  }
  void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, reinterpret_cast<LPCWSTR>(m_path.c_str())); }

  std::u16string m_path;
};

TEST_F(NWindowsRegistryTest, ValuesRoundTripThroughTheSystemRegistry) {
  NRegistry& registry = *NNativeRegistry();
  std::unique_ptr<NRegistryKey> key;
  ASSERT_TRUE(registry.OpenKey(NRegistryHive::kCurrentUser, m_path + u"\\Skeldon", true, &key));
  ASSERT_TRUE(key->SetString(u"Config Path", u"C:\\cfg \u00e9t\u00e9"));
  ASSERT_TRUE(key->SetDword(u"Store Personal Data Separately", 1));
  std::unique_ptr<NRegistryKey> reopened;
  ASSERT_TRUE(registry.OpenKey(NRegistryHive::kCurrentUser, m_path + u"\\Skeldon", false, &reopened));
  std::u16string text;
  ASSERT_TRUE(reopened->QueryString(u"Config Path", &text));
  EXPECT_EQ(text, u"C:\\cfg \u00e9t\u00e9");
  std::uint32_t dword = 0;
  ASSERT_TRUE(reopened->QueryDword(u"Store Personal Data Separately", &dword));
  EXPECT_EQ(dword, 1u);
  EXPECT_TRUE(reopened->QueryString(u"Missing", &text).IsNotFound());
  EXPECT_EQ(reopened->QueryDword(u"Config Path", &dword).Code(), NRegistryKey::kWrongType);
  EXPECT_EQ(dword, 1u) << "a failed read leaves the output alone";
}

TEST_F(NWindowsRegistryTest, AMissingKeyIsNotFoundUnlessCreated) {
  std::unique_ptr<NRegistryKey> key;
  EXPECT_TRUE(NNativeRegistry()->OpenKey(NRegistryHive::kCurrentUser, m_path + u"\\Nowhere", false, &key).IsNotFound());
  EXPECT_FALSE(key);
}

}  // namespace
