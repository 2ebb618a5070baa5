// Keys whose files are spelled in another case, as a configuration folder
// copied from Windows has them, and the folder listings kept for that search.
#include "store/NFindIgnoringCase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "location/NReportMessageParams.h"
#include "platform/NForwardingPlatform.h"
#include "platform/testing/NSymbolicLink.h"
#include "store/NFolderListingCache.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyFixture.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

// Whether `path` names the file or folder at `expected`: spelled exactly as
// on disk where the file system tells cases apart; elsewhere every spelling
// names it, and a key keeps its own.
bool NamesOnDisk(std::u16string_view path, fs::path expected, bool ignoresCase) {
  const std::u16string wanted = expected.make_preferred().u16string();
  return ignoresCase ? NUnicodeString(path).EqualsIgnoreCase(wanted) : path == wanted;
}

// Counts folder listings and file opens, the costly parts of a lookup by
// case, and moves folder stamps `later` forward, as if they were taken that
// long after the folder last changed.
class CountingPlatform final : public NForwardingPlatform {
 public:
  CountingPlatform() : NForwardingPlatform(NPlatform::Default()) {}
  NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) override {
    ++listings;
    return NForwardingPlatform::ListFolder(path, entries);
  }
  NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) override {
    ++listings;
    return NForwardingPlatform::ListFolderWithoutLinks(path, entries);
  }
  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override {
    ++opens;
    return NForwardingPlatform::OpenFile(path, options, file);
  }
  bool GetFolderStamp(std::u16string_view path, NFolderStamp* stamp) override {
    if (!stamps || !NForwardingPlatform::GetFolderStamp(path, stamp)) return false;
    stamp->taken += later;
    return true;
  }
  int listings = 0;
  int opens = 0;
  bool stamps = true;
  std::int64_t later = std::chrono::nanoseconds(std::chrono::seconds(3)).count();
};

// The store lists and opens through a counting platform; files are
// written as records after the mark.
class NFindIgnoringCaseTest : public NIniFileKeyFixture {
 protected:
  NPlatform& Platform() override { return m_platform; }
  void Write(const std::string& relative, std::string_view records) const {
    NIniFileKeyFixture::Write(relative, Bom(records));
  }

  // The names in `folder`, sorted.
  static Names Listed(const fs::path& folder) {
    Names names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  static Names Listed(const NFolderListingCache::Entries& entries) {
    Names names;
    for (const NFolderEntry& entry : *entries) names.push_back(NUnicodeString(entry.name).ToUtf8());
    std::sort(names.begin(), names.end());
    return names;
  }

  std::u16string Folder(const std::string& relative = {}) const {
    return (relative.empty() ? m_root : m_root / relative).u16string();
  }

  // Whether a change to the folder now shows in its stamp: file systems
  // that keep times to a second or two may not show it yet.
  bool ChangeShows(const std::function<void()>& change) {
    NFolderStamp before, after;
    if (!m_platform.GetFolderStamp(Folder(), &before)) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    change();
    return m_platform.GetFolderStamp(Folder(), &after) && !(before == after);
  }

  // Where the platform layer gives no stamps, every call lists.
  bool Stamped() {
    NFolderStamp stamp;
    return m_platform.GetFolderStamp(Folder(), &stamp);
  }

  CountingPlatform m_platform;
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
  EXPECT_EQ(Listed(m_root), Names{"global.ini"});
  EXPECT_EQ(NReadFileBytes(m_root / "global.ini"), Bom("S:\"Version\"=new\r\n"));

  // A new key goes into the folders that exist, and is named as spelled.
  fs::create_directories(m_root / "sessions");
  auto fresh = Open(u"Sessions\\New\\One");
  ASSERT_TRUE(fresh->SetDwordValue(u"Port", 22));
  ASSERT_TRUE(fresh->Flush());
  EXPECT_EQ(Listed(m_root), (Names{"global.ini", "sessions"}));
  EXPECT_TRUE(fs::is_regular_file(m_root / "sessions/New/One.ini"));
}

TEST_F(NFindIgnoringCaseTest, ThePrivateHalfIsFoundByCaseToo) {
  Store(true);
  Write("sessions/s.ini", "S:\"Hostname\"=h\r\n");
  NWriteFileBytes(m_personal / "Sessions/S.ini", Bom("S:\"Password V2\"=secret\r\n"));
  auto key = Open(u"Sessions\\s");
  EXPECT_EQ(String(*key, u"Password V2"), u"secret");
  ASSERT_TRUE(key->SetStringValue(u"Password V2", u"changed"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Listed(m_personal / "Sessions"), Names{"S.ini"});
  EXPECT_EQ(NReadFileBytes(m_personal / "Sessions/S.ini"), Bom("S:\"Password V2\"=changed\r\n"));
  EXPECT_EQ(Listed(m_root / "sessions"), Names{"s.ini"});
}

TEST_F(NFindIgnoringCaseTest, TheExactSpellingWinsThenTheFirstInCodeUnitOrder) {
  if (NFileSystemIgnoresCase(m_root)) GTEST_SKIP() << "this file system holds one file for all three spellings";
  for (const std::string name : {"global", "GLOBAL", "Global"}) Write(name + ".ini", "S:\"From\"=" + name + "\r\n");
  EXPECT_EQ(String(*Open(u"global"), u"From"), u"global");
  EXPECT_EQ(String(*Open(u"Global"), u"From"), u"Global");
  // "GLOBAL.ini" < "Global.ini" < "global.ini" by code units.
  EXPECT_EQ(String(*Open(u"gLoBaL"), u"From"), u"GLOBAL");
}

TEST_F(NFindIgnoringCaseTest, TheExactPathListsNoFolder) {
  Write("Sessions/Lab/router1.ini", "S:\"Hostname\"=r1\r\n");
  Write("Sessions.ini", "");
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
  const fs::path outside = m_folder / "outside";
  NWriteFileBytes(outside / "secret.ini", Bom("S:\"Password\"=outside\r\n"));
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
  EXPECT_EQ(NReadFileBytes(outside / "secret.ini"), Bom("S:\"Password\"=outside\r\n"));
}

TEST_F(NFindIgnoringCaseTest, SubKeysAreListedCheckedAndDeletedInAnyCase) {
  for (const char* file : {"sessions/lab.ini", "sessions/LAB/a.ini", "sessions/Lab/b.ini", "sessions/other.ini"}) {
    Write(file, "");
  }
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
  EXPECT_EQ(Listed(m_root / "sessions"), Names{"other.ini"});
  EXPECT_FALSE(sessions->SubKeyExists(u"lab"));
}

TEST_F(NFindIgnoringCaseTest, FindKeyPathReportsWhatItFoundAndWhereTheRestWouldGo) {
  NWriteFileBytes(m_root / "Sessions/lab/r.ini", "");
  NWriteFileBytes(m_root / "File", "");
  const bool ignoresCase = NFileSystemIgnoresCase(m_root);
  NUnicodeString found;
  auto find = [&](std::u16string_view key, std::u16string_view suffix) {
    NKeyPath path;
    EXPECT_TRUE(path.Append(key));
    return NFindKeyPath(NPlatform::Default(), NUnicodeString(m_root.u16string()), path, suffix, &found);
  };
  const struct {
    std::u16string_view key, suffix;
    std::uint32_t code;
    const char* found;  // where it is, or where it would be made
  } cases[] = {
      {u"SESSIONS\\Lab\\R", u".ini", 0, "Sessions/lab/r.ini"},
      {u"sessions\\LAB", u"", 0, "Sessions/lab"},
      {u"sessions\\New\\Deeper", u".ini", NStatus::kPathNotFound, "Sessions/New/Deeper.ini"},
      {u"sessions\\lab\\Missing", u".ini", NStatus::kFileNotFound, "Sessions/lab/Missing.ini"},
      // A file is no folder to go through; as the key's file it is found.
      {u"File\\x", u".ini", NStatus::kAccessDenied, nullptr},
      {u"File", u"", NStatus::kAccessDenied, nullptr},
      {u"sessions\\lab\\r", u".ini", 0, "Sessions/lab/r.ini"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(NUnicodeString(c.key).ToUtf8());
    EXPECT_EQ(find(c.key, c.suffix).Code(), c.code);
    if (c.found) {
      EXPECT_TRUE(NamesOnDisk(found, m_root / c.found, ignoresCase)) << found.ToUtf8();
    }
  }
}

// ---- The listings kept, and taken again when their folder changes --------

class NFolderListingCacheTest : public NFindIgnoringCaseTest {};

TEST_F(NFolderListingCacheTest, ASettledFolderIsListedAgainOnlyOnceItChanges) {
  if (!Stamped()) GTEST_SKIP() << "this system's layer gives no folder stamps";
  NWriteFileBytes(m_root / "a.ini", "");
  NFolderListingCache cache;
  NFolderListingCache::Entries first, second, third;
  EXPECT_FALSE(cache.KnownMissing(m_platform, Folder(), u"b.ini")) << "never listed";
  ASSERT_TRUE(cache.List(m_platform, Folder(), &first));
  EXPECT_TRUE(cache.KnownMissing(m_platform, Folder(), u"b.ini"));
  EXPECT_FALSE(cache.KnownMissing(m_platform, Folder(), u"A.INI"));
  ASSERT_TRUE(cache.List(m_platform, Folder(), &second));
  EXPECT_EQ(m_platform.listings, 1);
  EXPECT_EQ(Listed(second), Names{"a.ini"});

  if (!ChangeShows([&] { NWriteFileBytes(m_root / "B.ini", ""); })) {
    GTEST_SKIP() << "this file system's times are too coarse to show the change at once";
  }
  EXPECT_FALSE(cache.KnownMissing(m_platform, Folder(), u"b.ini"));
  ASSERT_TRUE(cache.List(m_platform, Folder(), &third));
  EXPECT_EQ(m_platform.listings, 2);
  EXPECT_EQ(Listed(third), (Names{"B.ini", "a.ini"}));
  EXPECT_EQ(Listed(first), Names{"a.ini"}) << "a listing handed out never changes";
}

TEST_F(NFolderListingCacheTest, FoldersChangedLatelyOrWithoutStampsAreListedEveryTime) {
  NFolderListingCache cache;
  NFolderListingCache::Entries entries;
  m_platform.later = 0;  // the folder was made just now
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(cache.List(m_platform, Folder(), &entries));
  EXPECT_EQ(m_platform.listings, 2);

  m_platform.later = std::chrono::nanoseconds(std::chrono::seconds(3)).count();
  m_platform.stamps = false;
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(cache.List(m_platform, Folder(), &entries));
  EXPECT_EQ(m_platform.listings, 4);

  // A folder that cannot be listed fails each time and keeps nothing.
  m_platform.stamps = true;
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(cache.List(m_platform, Folder("missing"), &entries).IsNotFound()) << i;
}

TEST_F(NFolderListingCacheTest, TheLeastRecentlyUsedListingMakesRoom) {
  if (!Stamped()) GTEST_SKIP() << "this system's layer gives no folder stamps";
  for (const char* name : {"a", "b", "c"}) fs::create_directories(m_root / name);
  NFolderListingCache cache(2);
  NFolderListingCache::Entries entries;
  for (const char* name : {"a", "b", "a", "c"}) ASSERT_TRUE(cache.List(m_platform, Folder(name), &entries));
  EXPECT_EQ(m_platform.listings, 3);  // "a" kept, "b" dropped for "c"
  ASSERT_TRUE(cache.List(m_platform, Folder("a"), &entries));
  ASSERT_TRUE(cache.List(m_platform, Folder("c"), &entries));
  EXPECT_EQ(m_platform.listings, 3);
  ASSERT_TRUE(cache.List(m_platform, Folder("b"), &entries));
  EXPECT_EQ(m_platform.listings, 4);
}

TEST_F(NFolderListingCacheTest, AKeyMissingFromAnUnchangedFolderIsNotListedForAgain) {
  if (!Stamped()) GTEST_SKIP() << "this system's layer gives no folder stamps";
  fs::create_directories(m_root / "Sessions");
  NIniFileStoreOptions options;
  options.listings = std::make_shared<NFolderListingCache>();
  Store(false, options);
  for (const std::u16string_view name : {u"QuickSync", u"Sessions\\Missing"}) {
    ASSERT_TRUE(Open(name, true));
    const int listed = m_platform.listings;
    const int opened = m_platform.opens;
    ASSERT_TRUE(Open(name, true));
    EXPECT_EQ(m_platform.listings, listed);
    EXPECT_EQ(m_platform.opens, opened) << "known to be missing, the file is not even opened";
  }

  if (!ChangeShows([&] { Write("quicksync.ini", "S:\"Local Folder\"=here\r\n"); })) {
    GTEST_SKIP() << "this file system's times are too coarse to show the change at once";
  }
  auto key = Open(u"QuickSync", true);
  ASSERT_TRUE(key);
  EXPECT_EQ(String(*key, u"Local Folder"), u"here");
}

}  // namespace
