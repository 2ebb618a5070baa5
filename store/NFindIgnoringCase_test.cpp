// Keys whose files are spelled in another case, as a configuration folder
// copied from Windows has them.
#include "store/NFindIgnoringCase.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>

#include "location/NReportMessageParams.h"
#include "platform/NForwardingPlatform.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;
constexpr std::string_view kBom = "\xEF\xBB\xBF";

// Whether `path` names the file or folder at `expected`: spelled exactly as
// on disk where the file system tells cases apart; elsewhere every spelling
// names it, and a key keeps its own.
bool NamesOnDisk(std::u16string_view path, fs::path expected, bool ignoresCase) {
  const std::u16string wanted = expected.make_preferred().u16string();
  return ignoresCase ? NUnicodeString(path).EqualsIgnoreCase(wanted) : path == wanted;
}

// Counts the folder listings, the costly part of a lookup by case.
class ListCountingPlatform final : public NForwardingPlatform {
 public:
  ListCountingPlatform() : NForwardingPlatform(NPlatform::Default()) {}
  NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) override {
    ++listings;
    return NForwardingPlatform::ListFolder(path, entries);
  }
  NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) override {
    ++listings;
    return NForwardingPlatform::ListFolderWithoutLinks(path, entries);
  }
  std::atomic<int> listings{0};
};

class NFindIgnoringCaseTest : public testing::Test {
 protected:
  void SetUp() override {
    m_base = fs::path(testing::TempDir()) /
             ("cfgdeck_case_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_base);
    m_root = m_base / "root";
    fs::create_directories(m_root);
  }
  void TearDown() override { fs::remove_all(m_base); }

  NIniFileStore& Store(bool withPrivate = false) {
    if (!m_store) {
      NIniFileStoreOptions options;
      options.syncOnSave = false;
      m_store = std::make_unique<NIniFileStore>(
          NUnicodeString::FromUtf8(m_root.string()),
          withPrivate ? NUnicodeString::FromUtf8((m_base / "personal").string()) : NUnicodeString(), m_platform,
          options);
    }
    return *m_store;
  }

  std::unique_ptr<NIniFileKey> Open(std::u16string_view path, bool readOnly = false) {
    NKeyPath keyPath;
    EXPECT_TRUE(path.empty() || keyPath.Append(path));
    NReportMessageParams params;
    auto key = NIniFileKey::Open(Store(), keyPath, readOnly, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    return key;
  }

  void Write(const std::string& relative, std::string_view records) {
    NWriteFileBytes(m_root / relative, std::string(kBom) + std::string(records));
  }

  static NUnicodeString String(const NProfileKey& key, std::u16string_view name) {
    NUnicodeString value = u"<missing>";
    key.GetStringValue(name, &value);
    return value;
  }

  // The names in `folder`, sorted.
  static std::vector<std::string> Names(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  fs::path m_base, m_root;
  ListCountingPlatform m_platform;
  std::unique_ptr<NIniFileStore> m_store;
};

TEST_F(NFindIgnoringCaseTest, KeysFindTheirFilesInAnyCase) {
  Write("global.ini", "S:\"Version\"=lower\r\n");
  Write("sessions/lab/Router1.ini", "S:\"Hostname\"=r1\r\n");
  EXPECT_EQ(String(*Open(u"Global"), u"Version"), u"lower");
  EXPECT_EQ(String(*Open(u"GLOBAL"), u"Version"), u"lower");
  auto router = Open(u"Sessions\\Lab\\router1");
  EXPECT_EQ(String(*router, u"Hostname"), u"r1");
  const NUnicodeString& read = router->LoadReport().file;
  EXPECT_TRUE(NamesOnDisk(read, m_root / "sessions/lab/Router1.ini", NFileSystemIgnoresCase(m_root))) << read.ToUtf8();
}

TEST_F(NFindIgnoringCaseTest, SavesRewriteTheExistingFileAndNewFilesTakeTheKeysSpelling) {
  Write("global.ini", "S:\"Version\"=old\r\n");
  auto global = Open(u"Global");
  ASSERT_TRUE(global->SetStringValue(u"Version", u"new"));
  ASSERT_TRUE(global->Flush());
  EXPECT_EQ(Names(m_root), std::vector<std::string>{"global.ini"});
  EXPECT_EQ(NReadFileBytes(m_root / "global.ini"), std::string(kBom) + "S:\"Version\"=new\r\n");

  // A new key goes into the folders that exist, and is named as spelled.
  fs::create_directories(m_root / "sessions");
  auto fresh = Open(u"Sessions\\New\\One");
  ASSERT_TRUE(fresh->SetDwordValue(u"Port", 22));
  ASSERT_TRUE(fresh->Flush());
  EXPECT_EQ(Names(m_root), (std::vector<std::string>{"global.ini", "sessions"}));
  EXPECT_TRUE(fs::is_regular_file(m_root / "sessions/New/One.ini"));
}

TEST_F(NFindIgnoringCaseTest, ThePrivateHalfIsFoundByCaseToo) {
  Store(true);
  Write("sessions/s.ini", "S:\"Hostname\"=h\r\n");
  NWriteFileBytes(m_base / "personal/Sessions/S.ini", std::string(kBom) + "S:\"Password V2\"=secret\r\n");
  auto key = Open(u"Sessions\\s");
  EXPECT_EQ(String(*key, u"Password V2"), u"secret");
  ASSERT_TRUE(key->SetStringValue(u"Password V2", u"changed"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Names(m_base / "personal/Sessions"), std::vector<std::string>{"S.ini"});
  EXPECT_EQ(NReadFileBytes(m_base / "personal/Sessions/S.ini"), std::string(kBom) + "S:\"Password V2\"=changed\r\n");
  EXPECT_EQ(Names(m_root / "sessions"), std::vector<std::string>{"s.ini"});
}

TEST_F(NFindIgnoringCaseTest, TheExactSpellingWinsThenTheFirstInCodeUnitOrder) {
  if (NFileSystemIgnoresCase(m_root)) GTEST_SKIP() << "this file system holds one file for all three spellings";
  Write("global.ini", "S:\"From\"=global\r\n");
  Write("GLOBAL.ini", "S:\"From\"=GLOBAL\r\n");
  Write("Global.ini", "S:\"From\"=Global\r\n");
  EXPECT_EQ(String(*Open(u"global"), u"From"), u"global");
  EXPECT_EQ(String(*Open(u"Global"), u"From"), u"Global");
  // "GLOBAL.ini" < "Global.ini" < "global.ini" by code units.
  EXPECT_EQ(String(*Open(u"gLoBaL"), u"From"), u"GLOBAL");
}

TEST_F(NFindIgnoringCaseTest, TheExactPathListsNoFolder) {
  Write("Sessions/Lab/router1.ini", "S:\"Hostname\"=r1\r\n");
  Write("Sessions.ini", "");
  m_platform.listings = 0;
  auto key = Open(u"Sessions\\Lab\\router1");
  EXPECT_EQ(String(*key, u"Hostname"), u"r1");
  ASSERT_TRUE(key->SetStringValue(u"Hostname", u"r2"));
  ASSERT_TRUE(key->Flush());
  EXPECT_TRUE(Open(u"Sessions")->SubKeyExists(u"Lab"));
  EXPECT_EQ(m_platform.listings, 0);
  // Only a missing file is looked for by case, and its folder is listed
  // once when it is there as spelled.
  Open(u"Sessions\\Lab\\router2");
  EXPECT_EQ(m_platform.listings, 1);
}

TEST_F(NFindIgnoringCaseTest, SymbolicLinksAreNeverChosenByCase) {
  const fs::path outside = m_base / "outside";
  NWriteFileBytes(outside / "secret.ini", std::string(kBom) + "S:\"Password\"=outside\r\n");
  if (!NMakeSymbolicLink(outside, m_root / "SESSIONS", true) ||
      !NMakeSymbolicLink(outside / "secret.ini", m_root / "GLOBAL.ini", false)) {
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  EXPECT_EQ(String(*Open(u"Sessions\\secret"), u"Password"), u"<missing>");
  EXPECT_EQ(String(*Open(u"Global"), u"Password"), u"<missing>");
  EXPECT_FALSE(Open(u"")->SubKeyExists(u"sessions"));

  // A save makes a file of its own rather than write through the link.
  auto global = Open(u"Global");
  ASSERT_TRUE(global->SetStringValue(u"Password", u"mine"));
  ASSERT_TRUE(global->Flush());
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(m_root / "Global.ini")));
  EXPECT_EQ(NReadFileBytes(outside / "secret.ini"), std::string(kBom) + "S:\"Password\"=outside\r\n");
}

TEST_F(NFindIgnoringCaseTest, SubKeysAreListedCheckedAndDeletedInAnyCase) {
  Write("sessions/lab.ini", "");
  Write("sessions/LAB/a.ini", "");
  Write("sessions/Lab/b.ini", "");
  Write("sessions/other.ini", "");
  auto sessions = Open(u"Sessions");
  auto iterator = sessions->CreateIterator(false);
  NUnicodeString name;
  std::uint32_t kind = 0;
  ASSERT_TRUE(iterator->Next(&name, &kind));
  EXPECT_EQ(NIniFileKey::Iterator::Compare(name, u"lab"), 0);
  EXPECT_EQ(kind, kSubKeyFolderAndFile);
  ASSERT_TRUE(iterator->Next(&name, &kind));
  EXPECT_EQ(name, u"other");
  EXPECT_FALSE(iterator->Next(&name, &kind));

  EXPECT_TRUE(sessions->SubKeyExists(u"OTHER"));
  EXPECT_TRUE(sessions->SubKeyExists(u"lAb"));
  EXPECT_FALSE(sessions->SubKeyExists(u"nothing"));
  // Every spelling goes, so that no other one is left to stand for the key.
  NReportMessageParams params;
  ASSERT_TRUE(sessions->DeleteSubKey(u"Lab", params)) << params.GetText().ToUtf8();
  EXPECT_EQ(Names(m_root / "sessions"), std::vector<std::string>{"other.ini"});
  EXPECT_FALSE(sessions->SubKeyExists(u"lab"));
}

TEST(NFindKeyPathTest, ReportsWhatItFoundAndWhereTheRestWouldGo) {
  const fs::path root = fs::path(testing::TempDir()) / "cfgdeck_find_key_path";
  fs::remove_all(root);
  NWriteFileBytes(root / "Sessions/lab/r.ini", "");
  NWriteFileBytes(root / "File", "");
  NPlatform& platform = NPlatform::Default();
  const NUnicodeString root16 = NUnicodeString::FromUtf8(root.string());
  auto find = [&](std::u16string_view key, std::u16string_view suffix, NUnicodeString* found) {
    NKeyPath path;
    EXPECT_TRUE(path.Append(key));
    return NFindKeyPath(platform, root16, path, suffix, found);
  };
  const bool ignoresCase = NFileSystemIgnoresCase(root);
  NUnicodeString found;

  EXPECT_TRUE(find(u"SESSIONS\\Lab\\R", u".ini", &found).IsOk());
  EXPECT_TRUE(NamesOnDisk(found, root / "Sessions/lab/r.ini", ignoresCase)) << found.ToUtf8();
  EXPECT_TRUE(find(u"sessions\\LAB", u"", &found).IsOk());
  EXPECT_TRUE(NamesOnDisk(found, root / "Sessions/lab", ignoresCase)) << found.ToUtf8();

  NStatus status = find(u"sessions\\New\\Deeper", u".ini", &found);
  EXPECT_EQ(status.Code(), NStatus::kPathNotFound);
  EXPECT_TRUE(NamesOnDisk(found, root / "Sessions/New/Deeper.ini", ignoresCase)) << found.ToUtf8();
  status = find(u"sessions\\lab\\Missing", u".ini", &found);
  EXPECT_EQ(status.Code(), NStatus::kFileNotFound);
  EXPECT_TRUE(NamesOnDisk(found, root / "Sessions/lab/Missing.ini", ignoresCase)) << found.ToUtf8();

  // A file is no folder to go through; as the key's file it is found.
  EXPECT_EQ(find(u"File\\x", u".ini", &found).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(find(u"File", u"", &found).Code(), NStatus::kAccessDenied);
  EXPECT_TRUE(find(u"sessions\\lab\\r", u".ini", &found).IsOk());
  fs::remove_all(root);
}

}  // namespace
