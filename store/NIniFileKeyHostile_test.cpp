// Folders a user, a crash or an attacker could leave behind: each gives a
// defined result or a clear error, never a crash, an escape or unbounded
// memory.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/NUnicode.h"
#include "platform/testing/NSymbolicLink.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;
constexpr std::string_view kBom = "\xEF\xBB\xBF";

class NIniFileKeyHostileTest : public testing::Test {
 protected:
  void SetUp() override {
    m_base = fs::path(testing::TempDir()) /
             ("cfgdeck_hostile_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_base);
    m_root = m_base / "root";
    m_outside = m_base / "outside";
    fs::create_directories(m_root);
    fs::create_directories(m_outside);
    std::ofstream(m_outside / "secret.ini", std::ios::binary) << kBom << "S:\"Password\"=outside\r\n";
    m_store = std::make_unique<NIniFileStore>(NUnicodeString::FromUtf8(m_root.string()), NUnicodeString());
  }
  void TearDown() override { fs::remove_all(m_base); }

  void Write(const std::string& relative, std::string_view bytes) {
    fs::create_directories((m_root / relative).parent_path());
    std::ofstream(m_root / relative, std::ios::binary) << bytes;
  }

  std::unique_ptr<NIniFileKey> Open(std::u16string_view path, NReportMessageParams& params, bool readOnly = true) {
    NKeyPath keyPath;
    if (!path.empty() && !keyPath.Append(path)) return nullptr;
    return NIniFileKey::Open(*m_store, keyPath, readOnly, params);
  }

  fs::path m_base, m_root, m_outside;
  std::unique_ptr<NIniFileStore> m_store;
};

TEST_F(NIniFileKeyHostileTest, LinksInsideTheStoreNeverLeadOut) {
  if (!NMakeSymbolicLink(m_outside, m_root / "Sessions", true)) {
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  NReportMessageParams params;
  // Reading through the link is refused with a clear error.
  EXPECT_FALSE(Open(u"Sessions\\secret", params));
  EXPECT_NE(params.GetText().ToUtf8().find("secret.ini"), std::string::npos) << params.GetText().ToUtf8();
  // So is writing through it, and deleting through it leaves the target.
  NKeyPath planted;
  ASSERT_TRUE(planted.Append(u"Sessions\\planted"));
  auto key = NIniFileKey::Open(*m_store, planted, false, params);
  if (key) {
    ASSERT_TRUE(key->SetDwordValue(u"x", 1));
    EXPECT_FALSE(key->Flush(params));
  }
  EXPECT_FALSE(fs::exists(m_outside / "planted.ini"));
  auto root = Open(u"", params, false);
  ASSERT_TRUE(root);
  EXPECT_FALSE(root->DeleteSubKey(u"Sessions\\secret", params));
  EXPECT_NE(params.GetText().ToUtf8().find("not a folder"), std::string::npos) << params.GetText().ToUtf8();
  EXPECT_TRUE(fs::exists(m_outside / "secret.ini"));
  // Deleting the linked key removes the link, not what it names.
  EXPECT_TRUE(root->DeleteSubKey(u"Sessions", params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(fs::exists(fs::symlink_status(m_root / "Sessions")));
  EXPECT_TRUE(fs::exists(m_outside / "secret.ini"));
}

TEST_F(NIniFileKeyHostileTest, AKeyFileThatIsAFolderIsAnErrorAndAFolderSubKey) {
  fs::create_directories(m_root / "odd.ini");
  NReportMessageParams params;
  EXPECT_FALSE(Open(u"odd", params));
  EXPECT_NE(params.GetText().ToUtf8().find("odd.ini"), std::string::npos);
  auto root = Open(u"", params);
  auto iterator = root->CreateIterator(false);
  NUnicodeString name;
  std::uint32_t kind = 0;
  ASSERT_TRUE(iterator->Next(&name, &kind));
  EXPECT_EQ(name.ToUtf8(), "odd.ini");
  EXPECT_EQ(kind, kSubKeyFolder);
}

TEST_F(NIniFileKeyHostileTest, HugeLinesAndManyRecordsLoadCompletely) {
  std::string text(kBom);
  text += "S:\"long\"=" + std::string(10 << 20, 'x') + "\r\n";
  for (int i = 0; i < 200000; ++i) text += "D:\"v" + std::to_string(i) + "\"=0000000a\r\n";
  Write("big.ini", text);
  NReportMessageParams params;
  auto key = Open(u"big", params);
  ASSERT_TRUE(key) << params.GetText().ToUtf8();
  NUnicodeString value;
  ASSERT_TRUE(key->GetStringValue(u"long", &value));
  EXPECT_EQ(value.size(), std::size_t{10} << 20);
  std::uint32_t number = 0;
  ASSERT_TRUE(key->GetDwordValue(u"v199999", &number));
  EXPECT_EQ(number, 10u);
  EXPECT_EQ(key->Values().ValueCount(), 200001u);
}

TEST_F(NIniFileKeyHostileTest, BadEncodingsBecomeReplacementCharacters) {
  struct Case {
    const char* file;
    std::string bytes;
    std::u16string expected;  // the value of "s"
  };
  const Case cases[] = {
      {"overlong.ini", std::string(kBom) + "S:\"s\"=a\xC0\xAF" "b\r\n", u"a\uFFFD\uFFFDb"},
      {"surrogate.ini", std::string(kBom) + "S:\"s\"=\xED\xA0\x80!\r\n", u"\uFFFD\uFFFD\uFFFD!"},
      {"lone.ini", std::string("\xFF\xFE" "S\0:\0\"\0s\0\"\0=\0\x00\xD8" "x\0", 18), u"\uFFFDx"},
      // Without a mark: the system's ANSI text.
      {"latin.ini", "S:\"s\"=caf\xE9\r\n", NAnsiToUtf16("caf\xE9")},
  };
  for (const Case& c : cases) {
    Write(c.file, c.bytes);
    NReportMessageParams params;
    auto key = Open(NUnicodeString::FromUtf8(std::string(c.file, std::strlen(c.file) - 4)), params);
    ASSERT_TRUE(key) << c.file;
    NUnicodeString value;
    ASSERT_TRUE(key->GetStringValue(u"s", &value)) << c.file;
    EXPECT_EQ(value, c.expected) << c.file;
  }
  Write("bomonly.ini", kBom);
  NReportMessageParams params;
  auto empty = Open(u"bomonly", params);
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->Values().ValueCount(), 0u);
  EXPECT_FALSE(empty->LoadReport().emptyFile);
}

}  // namespace
