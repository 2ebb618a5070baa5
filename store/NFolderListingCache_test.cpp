// Listings kept for the search by case, and taken again when their folder
// changes.
#include "store/NFolderListingCache.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "location/NReportMessageParams.h"
#include "platform/NForwardingPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;

// Counts listings, and moves the clock of stamps forward by `later`, as if
// they were taken that much after the folder last changed.
class StampShiftingPlatform final : public NForwardingPlatform {
 public:
  StampShiftingPlatform() : NForwardingPlatform(NPlatform::Default()) {}
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

class NFolderListingCacheTest : public testing::Test {
 protected:
  void SetUp() override {
    m_root = fs::path(testing::TempDir()) /
             ("cfgdeck_listings_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_root);
    fs::create_directories(m_root);
  }
  void TearDown() override { fs::remove_all(m_root); }

  std::u16string Folder(const std::string& relative = {}) const {
    return (relative.empty() ? m_root : m_root / relative).u16string();
  }

  static std::vector<std::u16string> Names(const NFolderListingCache::Entries& entries) {
    std::vector<std::u16string> names;
    for (const NFolderEntry& entry : *entries) names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    return names;
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

  fs::path m_root;
  StampShiftingPlatform m_platform;
};

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
  EXPECT_EQ(Names(second), std::vector<std::u16string>{u"a.ini"});

  if (!ChangeShows([&] { NWriteFileBytes(m_root / "B.ini", ""); })) {
    GTEST_SKIP() << "this file system's times are too coarse to show the change at once";
  }
  EXPECT_FALSE(cache.KnownMissing(m_platform, Folder(), u"b.ini"));
  ASSERT_TRUE(cache.List(m_platform, Folder(), &third));
  EXPECT_EQ(m_platform.listings, 2);
  EXPECT_EQ(Names(third), (std::vector<std::u16string>{u"B.ini", u"a.ini"}));
  EXPECT_EQ(Names(first), std::vector<std::u16string>{u"a.ini"}) << "a listing handed out never changes";
}

TEST_F(NFolderListingCacheTest, FoldersChangedLatelyOrWithoutStampsAreListedEveryTime) {
  NFolderListingCache cache;
  NFolderListingCache::Entries entries;
  m_platform.later = 0;  // the folder was made just now
  ASSERT_TRUE(cache.List(m_platform, Folder(), &entries));
  ASSERT_TRUE(cache.List(m_platform, Folder(), &entries));
  EXPECT_EQ(m_platform.listings, 2);

  m_platform.later = std::chrono::nanoseconds(std::chrono::seconds(3)).count();
  m_platform.stamps = false;
  ASSERT_TRUE(cache.List(m_platform, Folder(), &entries));
  ASSERT_TRUE(cache.List(m_platform, Folder(), &entries));
  EXPECT_EQ(m_platform.listings, 4);

  // A folder that cannot be listed fails each time and keeps nothing.
  m_platform.stamps = true;
  EXPECT_TRUE(cache.List(m_platform, Folder("missing"), &entries).IsNotFound());
  EXPECT_TRUE(cache.List(m_platform, Folder("missing"), &entries).IsNotFound());
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
  NIniFileStoreOptions options;
  options.listings = std::make_shared<NFolderListingCache>();
  fs::create_directories(m_root / "Sessions");
  NIniFileStore store(NUnicodeString(Folder()), NUnicodeString(), m_platform, options);
  auto open = [&store](std::u16string_view name = u"QuickSync") {
    NKeyPath path;
    EXPECT_TRUE(path.Append(name));
    NReportMessageParams params;
    return NIniFileKey::Open(store, path, true, params);
  };
  NUnicodeString value;
  for (const std::u16string_view name : {u"QuickSync", u"Sessions\\Missing"}) {
    ASSERT_TRUE(open(name));
    const int listed = m_platform.listings;
    const int opened = m_platform.opens;
    ASSERT_TRUE(open(name));
    EXPECT_EQ(m_platform.listings, listed);
    EXPECT_EQ(m_platform.opens, opened) << "known to be missing, the file is not even opened";
  }

  if (!ChangeShows([&] { NWriteFileBytes(m_root / "quicksync.ini", "\xEF\xBB\xBFS:\"Local Folder\"=here\r\n"); })) {
    GTEST_SKIP() << "this file system's times are too coarse to show the change at once";
  }
  auto key = open();
  ASSERT_TRUE(key);
  EXPECT_TRUE(key->GetStringValue(u"Local Folder", &value));
  EXPECT_EQ(value, u"here");
}

}  // namespace
