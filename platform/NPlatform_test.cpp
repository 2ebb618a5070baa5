// The platform's files, locks and folders as every system provides them.
// What only one system has lives in posix/ and windows/.
#include "platform/NPlatform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/NUnicode.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kShortWait{20};

NPlatform& Platform() { return NPlatform::Default(); }

std::string Describe(const NStatus& status) {
  return "code " + std::to_string(status.Code()) + " from '" + status.Operation() + "' on '" +
         NUtf16ToUtf8(status.Path()) + "'";
}

std::unique_ptr<NFile> Open(const std::u16string& path, NOpenMode mode = NOpenMode::kCreateIfMissing,
                            NFileAccess access = NFileAccess::kReadWrite) {
  std::unique_ptr<NFile> file;
  const NStatus status = Platform().OpenFile(path, {.mode = mode, .access = access}, &file);
  EXPECT_TRUE(status.IsOk()) << Describe(status);
  return file;
}

std::string ReadAll(NFile& file) {
  std::string content(4096, '\0');
  std::size_t read = 0;
  const NStatus status = file.Read(0, content.data(), content.size(), &read);
  EXPECT_TRUE(status.IsOk()) << Describe(status);
  content.resize(read);
  return content;
}

class NPlatformTest : public testing::Test {
 protected:
  void SetUp() override {
    std::random_device device;
    for (int attempt = 0; attempt < 100 && m_folder.empty(); ++attempt) {
      const fs::path candidate = fs::path(testing::TempDir()) / ("cfgdeck_platform_" + std::to_string(device()));
      if (fs::create_directory(candidate)) m_folder = candidate;
    }
    ASSERT_FALSE(m_folder.empty());
  }
  void TearDown() override {
    std::error_code ignored;
    if (!m_folder.empty()) fs::remove_all(m_folder, ignored);
  }

  // Names may hold "/", which every system takes for a separator.
  fs::path Native(const std::string& name) const { return m_folder / name; }
  std::u16string Path(const std::string& name) const { return Native(name).u16string(); }

  void WriteText(const std::string& name, const std::string& text) const { NWriteFileBytes(Native(name), text); }
  std::string ReadText(const std::string& name) const { return NReadFileBytes(Native(name)); }
  bool Exists(const std::string& name) const {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(Native(name), ignored));
  }

  fs::path m_folder;
};

// ---- Byte-range locks within one process --------------------------------

TEST_F(NPlatformTest, LockHeldByOneHandleExcludesAnotherHandleInTheSameProcess) {
  auto first = Open(Path("data"));
  auto second = Open(Path("data"));
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(first->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());

  const auto start = Clock::now();
  const NStatus status = second->Lock(0, 4, NLockKind::kExclusive, 50ms);
  const auto waited = Clock::now() - start;
  EXPECT_EQ(status.Code(), NStatus::kWaitTimeout) << Describe(status);
  EXPECT_EQ(status.Path(), Path("data"));
  EXPECT_GE(waited, 45ms) << "a finite wait gave up early";
  EXPECT_LT(waited, 2s);

  EXPECT_EQ(second->Lock(3, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout) << "overlapping range";
  EXPECT_TRUE(second->Lock(4, 4, NLockKind::kExclusive, 0ms).IsOk()) << "disjoint range";
}

TEST_F(NPlatformTest, SharedLocksCoexistAndConflictWithExclusiveOnesBothWays) {
  const struct {
    const char* name;
    NLockKind held;
    NLockKind wanted;
    bool granted;
  } cases[] = {
      {"shared_shared", NLockKind::kShared, NLockKind::kShared, true},
      {"shared_exclusive", NLockKind::kShared, NLockKind::kExclusive, false},
      {"exclusive_shared", NLockKind::kExclusive, NLockKind::kShared, false},
      {"exclusive_exclusive", NLockKind::kExclusive, NLockKind::kExclusive, false},
  };
  for (const auto& c : cases) {
    auto holder = Open(Path(c.name));
    auto other = Open(Path(c.name));
    ASSERT_TRUE(holder && other);
    ASSERT_TRUE(holder->Lock(0, 8, c.held, 0ms).IsOk()) << c.name;
    const NStatus status = other->Lock(0, 8, c.wanted, kShortWait);
    if (c.granted) {
      EXPECT_TRUE(status.IsOk()) << c.name << ": " << Describe(status);
    } else {
      EXPECT_EQ(status.Code(), NStatus::kWaitTimeout) << c.name << ": " << Describe(status);
    }
  }
}

TEST_F(NPlatformTest, UnlockHandsTheRangeToAnotherHandle) {
  auto first = Open(Path("data"));
  auto second = Open(Path("data"));
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(first->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  ASSERT_EQ(second->Lock(0, 4, NLockKind::kExclusive, 0ms).Code(), NStatus::kWaitTimeout);

  ASSERT_TRUE(first->Unlock(0, 4).IsOk());
  EXPECT_TRUE(second->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  EXPECT_EQ(first->Lock(0, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout);
}

TEST_F(NPlatformTest, ClosingAnUnrelatedHandleOfTheSameFileKeepsTheLock) {
  auto holder = Open(Path("data"));
  auto other = Open(Path("data"));
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  {
    auto third = Open(Path("data"), NOpenMode::kExistingOnly, NFileAccess::kRead);
    ASSERT_TRUE(third);
    NFileInfo info;
    EXPECT_TRUE(third->GetInfo(&info).IsOk());
  }  // closes a descriptor of the file, which drops classic process-wide POSIX locks
  EXPECT_EQ(other->Lock(0, 4, NLockKind::kExclusive, kShortWait).Code(), NStatus::kWaitTimeout);
}

TEST_F(NPlatformTest, DestroyingTheLockingHandleReleasesItsLock) {
  auto holder = Open(Path("data"));
  auto other = Open(Path("data"));
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  holder.reset();
  EXPECT_TRUE(other->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
}

TEST_F(NPlatformTest, BlockingLockInAnotherThreadIsGrantedOnceTheHolderUnlocks) {
  auto holder = Open(Path("data"));
  std::shared_ptr<NFile> waiter = Open(Path("data"));
  ASSERT_TRUE(holder && waiter);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());

  struct Outcome {
    std::atomic<bool> done{false};
    NStatus status;
  };
  auto outcome = std::make_shared<Outcome>();
  std::thread thread([outcome, waiter] {
    outcome->status = waiter->Lock(0, 4, NLockKind::kExclusive, NFile::kWaitForever);
    outcome->done = true;
  });
  std::this_thread::sleep_for(30ms);
  EXPECT_FALSE(outcome->done) << "granted while another handle held the range";

  ASSERT_TRUE(holder->Unlock(0, 4).IsOk());
  const auto deadline = Clock::now() + 10s;
  while (!outcome->done && Clock::now() < deadline) std::this_thread::sleep_for(1ms);
  if (!outcome->done) {
    ADD_FAILURE() << "the blocking lock was never granted";
    thread.detach();  // it owns what it uses; a hung wait must not hang the run
    return;
  }
  thread.join();
  EXPECT_TRUE(outcome->status.IsOk()) << Describe(outcome->status);
  EXPECT_EQ(holder->Lock(0, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout) << "the waiter holds it now";
}

// ---- Error codes ---------------------------------------------------------

TEST_F(NPlatformTest, FailedCallsReportWin32CodesWithTheOperationAndThePath) {
  WriteText("file", "source");
  WriteText("target", "target");
  fs::create_directory(Native("folder"));
  WriteText("full/inner", "");
  const std::u16string withNul = Path("a") + u'\0' + u"b";

  std::unique_ptr<NFile> file;
  auto open = [&](const std::u16string& path, NOpenMode mode, NFileAccess access) {
    return Platform().OpenFile(path, {.mode = mode, .access = access}, &file);
  };
  using enum NOpenMode;
  using enum NFileAccess;
  const struct {
    const char* what;
    NStatus status;
    std::uint32_t code;
    std::u16string path;
  } cases[] = {
      {"open a missing file", open(Path("missing"), kExistingOnly, kRead), 2, Path("missing")},
      {"open in a missing folder", open(Path("nowhere/file"), kExistingOnly, kRead), 3, Path("nowhere/file")},
      {"create in a missing folder", open(Path("nowhere/file"), kCreateIfMissing, kReadWrite), 3,
       Path("nowhere/file")},
      {"open under a file", open(Path("file/inner"), kExistingOnly, kRead), 3, Path("file/inner")},
      {"create under a file", open(Path("file/inner"), kCreateAlways, kReadWrite), 3, Path("file/inner")},
      {"open a folder to read", open(Path("folder"), kExistingOnly, kRead), 5, Path("folder")},
      {"open a folder to write", open(Path("folder"), kExistingOnly, kReadWrite), 5, Path("folder")},
      {"create over a folder", open(Path("folder"), kCreateAlways, kReadWrite), 5, Path("folder")},
      {"open a name with NUL", open(withNul, kCreateIfMissing, kReadWrite), 87, withNul},
      {"delete a folder", Platform().DeleteFile(Path("folder")), 5, Path("folder")},
      {"delete a missing file", Platform().DeleteFile(Path("missing")), 2, Path("missing")},
      {"delete in a missing folder", Platform().DeleteFile(Path("nowhere/file")), 3, Path("nowhere/file")},
      {"delete a name with NUL", Platform().DeleteFile(withNul), 87, withNul},
      {"create an existing folder", Platform().CreateFolder(Path("folder")), 183, Path("folder")},
      {"create a folder over a file", Platform().CreateFolder(Path("file")), 183, Path("file")},
      {"create a folder in a missing one", Platform().CreateFolder(Path("nowhere/sub")), 3, Path("nowhere/sub")},
      {"create a folder named with NUL", Platform().CreateFolder(withNul), 87, withNul},
      {"move onto an existing file", Platform().MoveFile(Path("file"), Path("target")), 183, Path("target")},
      {"move a missing file", Platform().MoveFile(Path("missing"), Path("moved")), 2, Path("missing")},
      {"move into a missing folder", Platform().MoveFile(Path("file"), Path("nowhere/file")), 3, Path("nowhere/file")},
      {"move from a missing folder", Platform().MoveFile(Path("nowhere/file"), Path("moved")), 3,
       Path("nowhere/file")},
      {"move a name with NUL", Platform().MoveFile(withNul, Path("moved")), 87, withNul},
      {"remove a folder that is not empty", Platform().RemoveFolder(Path("full")), 145, Path("full")},
      {"remove a file as a folder", Platform().RemoveFolder(Path("file")), 267, Path("file")},
      {"remove a missing folder", Platform().RemoveFolder(Path("missing")), 2, Path("missing")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.status.Code(), c.code) << c.what << ": " << Describe(c.status);
    EXPECT_EQ(c.status.Path(), c.path) << c.what;
    EXPECT_FALSE(c.status.Operation().empty()) << c.what;
  }
  EXPECT_TRUE(cases[0].status.IsNotFound());
  EXPECT_EQ(file, nullptr);

  // None of the failures changed anything.
  EXPECT_EQ(ReadText("file"), "source");
  EXPECT_EQ(ReadText("target"), "target");
  EXPECT_FALSE(Exists("missing"));
  EXPECT_FALSE(Exists("moved"));
  EXPECT_FALSE(Exists("nowhere"));
  EXPECT_FALSE(Exists("a"));
  EXPECT_TRUE(fs::is_directory(Native("folder")));
  EXPECT_TRUE(Exists("full/inner"));
}

TEST_F(NPlatformTest, WritingThroughAReadOnlyHandleFailsAndChangesNothing) {
  WriteText("data", "abc");
  auto file = Open(Path("data"), NOpenMode::kExistingOnly, NFileAccess::kRead);
  ASSERT_TRUE(file);
  // Windows says access denied; so must every system.
  EXPECT_EQ(file->Write(0, "xyz", 3).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(file->Truncate(0).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(file->Reserve(4096).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(ReadText("data"), "abc");
}

// ---- Opening -------------------------------------------------------------

TEST_F(NPlatformTest, OpenModesKeepCutOrRefuseToCreateTheFile) {
  const struct {
    NOpenMode mode;
    bool exists;
    bool opens;
    const char* content;  // afterwards
  } cases[] = {
      {NOpenMode::kExistingOnly, true, true, "kept"},    {NOpenMode::kExistingOnly, false, false, nullptr},
      {NOpenMode::kCreateIfMissing, true, true, "kept"}, {NOpenMode::kCreateIfMissing, false, true, ""},
      {NOpenMode::kCreateAlways, true, true, ""},        {NOpenMode::kCreateAlways, false, true, ""},
  };
  int index = 0;
  for (const auto& c : cases) {
    const std::string name = "case" + std::to_string(index++);
    if (c.exists) WriteText(name, "kept");
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(Path(name), {.mode = c.mode, .access = NFileAccess::kReadWrite}, &file);
    SCOPED_TRACE(name);
    EXPECT_EQ(status.IsOk(), c.opens) << Describe(status);
    EXPECT_EQ(file != nullptr, c.opens);
    if (c.content == nullptr) {
      EXPECT_FALSE(Exists(name));
    } else {
      EXPECT_EQ(ReadText(name), c.content);
      if (file) {
        EXPECT_EQ(ReadAll(*file), c.content);
      }
    }
  }
}

TEST_F(NPlatformTest, NoFollowRefusesASymbolicLinkOnlyAtTheLastComponent) {
  WriteText("target", "keep");
  WriteText("real/inside", "inside");
  if (!NMakeSymbolicLink("target", Native("link"), false) || !NMakeSymbolicLink("absent", Native("dangling"), false) ||
      !NMakeSymbolicLink("real", Native("linked"), true)) {
    GTEST_SKIP() << "this system makes no symbolic links here";
  }

  for (NOpenMode mode : {NOpenMode::kExistingOnly, NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
    for (const char* name : {"link", "dangling"}) {
      std::unique_ptr<NFile> file;
      const NStatus status =
          Platform().OpenFile(Path(name), {.mode = mode, .access = NFileAccess::kReadWrite, .noFollow = true}, &file);
      EXPECT_EQ(status.Code(), NStatus::kAccessDenied) << name << " mode " << static_cast<int>(mode);
      EXPECT_EQ(file, nullptr);
    }
  }
  EXPECT_EQ(ReadText("target"), "keep") << "cut through a refused link";
  EXPECT_FALSE(Exists("absent")) << "created through a refused link";

  // A link earlier in the path is the caller's business.
  std::unique_ptr<NFile> file;
  NStatus status = Platform().OpenFile(Path("linked/inside"), {.noFollow = true}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(ReadAll(*file), "inside");
  // Without noFollow the link is followed.
  status = Platform().OpenFile(Path("link"), {}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(ReadAll(*file), "keep");
  // noLinks refuses a link anywhere on the way, also when creating.
  std::u16string canonical;
  ASSERT_TRUE(Platform().CanonicalPath(Path("real"), &canonical));
  for (const char* name : {"linked/inside", "linked/new"}) {
    file.reset();
    status = Platform().OpenFile(Path(name), {.mode = NOpenMode::kCreateIfMissing, .noLinks = true}, &file);
    EXPECT_EQ(status.Code(), NStatus::kAccessDenied) << name;
  }
  EXPECT_FALSE(Exists("real/new"));
  status = Platform().OpenFile(canonical + Platform().PathSeparator() + u"inside", {.noLinks = true}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(ReadAll(*file), "inside");
}

TEST_F(NPlatformTest, NoLinksOpensAndCreatesWhereNoLinkIs) {
  std::u16string canonical;
  ASSERT_TRUE(Platform().CanonicalPath(m_folder.u16string(), &canonical));
  const std::u16string folder = canonical + Platform().PathSeparator();
  WriteText("sub/old", "old");
  for (NOpenMode mode : {NOpenMode::kExistingOnly, NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
    SCOPED_TRACE(static_cast<int>(mode));
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(
        folder + u"sub" + Platform().PathSeparator() + u"old",
        {.mode = mode, .access = NFileAccess::kReadWrite, .noFollow = true, .noLinks = true}, &file);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    EXPECT_EQ(ReadAll(*file), mode == NOpenMode::kCreateAlways ? "" : "old");
  }
  const NOpenOptions create{.mode = NOpenMode::kCreateIfMissing, .access = NFileAccess::kReadWrite, .noLinks = true};
  std::unique_ptr<NFile> file;
  NStatus status = Platform().OpenFile(folder + u"sub" + Platform().PathSeparator() + u"new", create, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_TRUE(file->Write(0, "made", 4).IsOk());
  file.reset();
  EXPECT_EQ(ReadText("sub/new"), "made");
  // A missing folder is reported as one, so that the caller can make it.
  status = Platform().OpenFile(folder + u"missing" + Platform().PathSeparator() + u"new",
                               {.mode = NOpenMode::kCreateIfMissing, .noLinks = true}, &file);
  EXPECT_EQ(status.Code(), NStatus::kPathNotFound) << Describe(status);
  EXPECT_FALSE(Exists("missing"));
}

// ---- Reading, writing and information ------------------------------------

TEST_F(NPlatformTest, PositionalWritesExtendTheFileAndReadsStopAtItsEnd) {
  auto file = Open(Path("data"), NOpenMode::kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file->Write(0, "hello", 5).IsOk());
  ASSERT_TRUE(file->Write(10, "XY", 2).IsOk());
  ASSERT_TRUE(file->Write(1, "EL", 2).IsOk());
  NFileInfo info;
  ASSERT_TRUE(file->GetInfo(&info).IsOk());
  EXPECT_EQ(info.size, 12u);
  EXPECT_EQ(ReadText("data"), std::string("hELlo\0\0\0\0\0XY", 12));

  char buffer[32];
  const struct {
    std::uint64_t offset;
    std::size_t size;
    std::string expected;
  } reads[] = {
      {0, sizeof buffer, std::string("hELlo\0\0\0\0\0XY", 12)},
      {3, 4, std::string("lo\0\0", 4)},
      {11, 4, "Y"},
      {12, 4, ""},
      {1000, 4, ""},
  };
  for (const auto& r : reads) {
    std::size_t read = 99;
    const NStatus status = file->Read(r.offset, buffer, r.size, &read);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    EXPECT_EQ(std::string(buffer, read), r.expected) << "at " << r.offset;
  }

  ASSERT_TRUE(file->Truncate(3).IsOk());
  EXPECT_EQ(ReadAll(*file), "hEL");
  ASSERT_TRUE(file->Truncate(5).IsOk());
  EXPECT_EQ(ReadAll(*file), std::string("hEL\0\0", 5));
  EXPECT_TRUE(file->Sync().IsOk());
  EXPECT_EQ(ReadText("data"), std::string("hEL\0\0", 5));
}

TEST_F(NPlatformTest, ReserveKeepsTheVisibleLength) {
  auto file = Open(Path("data"), NOpenMode::kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file->Write(0, "abc", 3).IsOk());
  ASSERT_TRUE(file->Reserve(1 << 20).IsOk());
  ASSERT_TRUE(file->Reserve(0).IsOk());
  ASSERT_TRUE(file->Reserve(2).IsOk()) << "less than the file holds";
  NFileInfo info;
  ASSERT_TRUE(file->GetInfo(&info).IsOk());
  EXPECT_EQ(info.size, 3u);
  EXPECT_EQ(ReadAll(*file), "abc");
  EXPECT_EQ(ReadText("data"), "abc");
}

TEST_F(NPlatformTest, InfoIdentifiesTheFileAndNoticesAWrite) {
  auto a = Open(Path("a"));
  auto sameA = Open(Path("a"), NOpenMode::kExistingOnly, NFileAccess::kRead);
  auto b = Open(Path("b"));
  ASSERT_TRUE(a && sameA && b);
  NFileInfo infoA, infoSameA, infoB;
  ASSERT_TRUE(a->GetInfo(&infoA).IsOk());
  ASSERT_TRUE(sameA->GetInfo(&infoSameA).IsOk());
  ASSERT_TRUE(b->GetInfo(&infoB).IsOk());
  EXPECT_EQ(infoA.fileId, infoSameA.fileId);
  EXPECT_NE(infoA.fileId, infoB.fileId);

  // An old time in whole seconds makes the change visible on any timestamp
  // granularity, and is what std::filesystem can set everywhere.
  const auto old = std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(978307200)));
  fs::last_write_time(Native("a"), old);
  NFileInfo before;
  ASSERT_TRUE(a->GetInfo(&before).IsOk());
  EXPECT_EQ(before.modifiedNanoseconds, 978307200000000000);

  ASSERT_TRUE(a->Write(0, "x", 1).IsOk());
  NFileInfo after;
  ASSERT_TRUE(sameA->GetInfo(&after).IsOk());
  EXPECT_GT(after.modifiedNanoseconds, before.modifiedNanoseconds);
  EXPECT_EQ(after.size, 1u);
  EXPECT_EQ(after.fileId, before.fileId);
  EXPECT_NE(after, before);
}

TEST_F(NPlatformTest, CurrentFileTimeCountsFrom1601) {
  constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
  const std::uint64_t now = Platform().CurrentFileTime();
  const auto seconds = static_cast<std::int64_t>((now - kUnixEpochAsFileTime) / 10000000);
  EXPECT_LE(std::llabs(seconds - static_cast<std::int64_t>(std::time(nullptr))), 5);
}

// ---- Files and folders ---------------------------------------------------

TEST_F(NPlatformTest, MoveFileRenamesAndNeverReplaces) {
  WriteText("from", "moved");
  ASSERT_TRUE(Platform().MoveFile(Path("from"), Path("to")).IsOk());
  EXPECT_FALSE(Exists("from"));
  EXPECT_EQ(ReadText("to"), "moved");

  WriteText("other", "other");
  EXPECT_EQ(Platform().MoveFile(Path("other"), Path("to")).Code(), NStatus::kAlreadyExists);
  EXPECT_EQ(ReadText("other"), "other");
  EXPECT_EQ(ReadText("to"), "moved");

  ASSERT_TRUE(Platform().DeleteFile(Path("to")).IsOk());
  EXPECT_FALSE(Exists("to"));
}

TEST_F(NPlatformTest, CreateFolderChainCreatesEveryMissingFolderAndStopsAtAFile) {
  EXPECT_TRUE(Platform().CreateFolderChain(Path("a/b/c/d/e")).IsOk());
  for (const char* folder : {"a", "a/b", "a/b/c", "a/b/c/d", "a/b/c/d/e"}) {
    EXPECT_TRUE(Platform().IsFolder(Path(folder))) << folder;
  }
  EXPECT_TRUE(Platform().CreateFolderChain(Path("a/b/c/d/e")).IsOk()) << "all present";
  EXPECT_TRUE(Platform().CreateFolderChain(Path("x/y/")).IsOk()) << "trailing separator";
  EXPECT_TRUE(Platform().IsFolder(Path("x/y")));

  WriteText("a/file", "");
  EXPECT_EQ(Platform().CreateFolderChain(Path("a/file")).Code(), NStatus::kAlreadyExists);
  EXPECT_EQ(Platform().CreateFolderChain(Path("a/file/g/h")).Code(), NStatus::kAlreadyExists);
  EXPECT_TRUE(Platform().IsFile(Path("a/file")));

  ASSERT_TRUE(Platform().RemoveFolder(Path("x/y")).IsOk());
  EXPECT_FALSE(Exists("x/y"));
}

TEST_F(NPlatformTest, ListFolderNamesEveryEntryWithItsKindAndNeverTheDotEntries) {
  WriteText("one.ini", "1");
  WriteText(".hidden", "");
  fs::create_directory(Native("sub"));
  std::vector<std::pair<std::u16string, NPathKind>> expected = {
      {u".hidden", NPathKind::kFile}, {u"one.ini", NPathKind::kFile}, {u"sub", NPathKind::kFolder}};
  // A link is neither a file nor a folder, whatever it names.
  if (NMakeSymbolicLink("one.ini", Native("link"), false) && NMakeSymbolicLink("sub", Native("folderlink"), true)) {
    expected.emplace_back(u"folderlink", NPathKind::kOther);
    expected.emplace_back(u"link", NPathKind::kOther);
  }
  std::sort(expected.begin(), expected.end());

  std::vector<NFolderEntry> entries = {{u"stale", NPathKind::kFile}};
  NStatus status = Platform().ListFolder(m_folder.u16string(), &entries);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  std::vector<std::pair<std::u16string, NPathKind>> listed;
  for (const NFolderEntry& entry : entries) listed.emplace_back(entry.name, entry.kind);
  std::sort(listed.begin(), listed.end());
  EXPECT_EQ(listed, expected);

  status = Platform().ListFolder(Path("sub"), &entries);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_TRUE(entries.empty());

  for (const char* missing : {"missing", "missing/deeper", "one.ini"}) {
    status = Platform().ListFolder(Path(missing), &entries);
    EXPECT_TRUE(status.IsNotFound()) << missing << ": " << Describe(status);
    EXPECT_EQ(status.Path(), Path(missing));
  }
}

TEST_F(NPlatformTest, ListingWithoutLinksRefusesAFolderReachedThroughOne) {
  WriteText("real/sub/one.ini", "1");
  std::vector<NFolderEntry> entries;
  NStatus status = Platform().ListFolderWithoutLinks(Path("real/sub"), &entries);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, u"one.ini");
  for (const char* missing : {"missing", "real/missing/deeper", "real/sub/one.ini"}) {
    status = Platform().ListFolderWithoutLinks(Path(missing), &entries);
    EXPECT_TRUE(status.IsNotFound()) << missing << ": " << Describe(status);
  }
  if (!NMakeSymbolicLink("real", Native("linked"), true)) GTEST_SKIP() << "this system makes no symbolic links here";
  for (const char* linked : {"linked", "linked/sub"}) {
    ASSERT_TRUE(Platform().ListFolder(Path(linked), &entries).IsOk()) << linked;
    status = Platform().ListFolderWithoutLinks(Path(linked), &entries);
    EXPECT_EQ(status.Code(), NStatus::kAccessDenied) << linked << ": " << Describe(status);
  }
}

TEST_F(NPlatformTest, PathKindTellsFilesFoldersAndLinksApart) {
  WriteText("file", "");
  fs::create_directory(Native("folder"));
  const struct {
    std::u16string path;
    NPathKind kind;
  } cases[] = {
      {Path("file"), NPathKind::kFile},         {Path("folder"), NPathKind::kFolder},
      {Path("missing"), NPathKind::kNone},      {Path("file/x"), NPathKind::kNone},
      {Path("file") + u'\0', NPathKind::kNone}, {u"", NPathKind::kNone},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Platform().GetPathKind(c.path), c.kind) << NUtf16ToUtf8(c.path);
  }
  // A link at the end is not followed.
  if (NMakeSymbolicLink("folder", Native("link"), true)) {
    EXPECT_EQ(Platform().GetPathKind(Path("link")), NPathKind::kOther);
  }
}

TEST_F(NPlatformTest, NonAsciiNamesRoundTripThroughOpenAndListFolder) {
  const std::u16string names[] = {u"K\u00f6nig \u65e5\u672c.ini", u"\U0001F600.ini"};
  const std::u16string folder = m_folder.u16string() + Platform().PathSeparator();
  const NOpenOptions create{.mode = NOpenMode::kCreateAlways, .access = NFileAccess::kReadWrite};
  for (const std::u16string& name : names) {
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(folder + name, create, &file);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    ASSERT_TRUE(file->Write(0, "content", 7).IsOk());
    EXPECT_TRUE(fs::is_regular_file(m_folder / fs::path(name)));
  }

  std::vector<NFolderEntry> entries;
  ASSERT_TRUE(Platform().ListFolder(m_folder.u16string(), &entries).IsOk());
  std::vector<std::u16string> listed;
  for (const NFolderEntry& entry : entries) listed.push_back(entry.name);
  std::sort(listed.begin(), listed.end());
  std::vector<std::u16string> expected(std::begin(names), std::end(names));
  std::sort(expected.begin(), expected.end());
  ASSERT_EQ(listed, expected);

  for (const std::u16string& name : listed) {
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(folder + name, {}, &file);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    EXPECT_EQ(ReadAll(*file), "content");
  }
}

TEST_F(NPlatformTest, CanonicalPathResolvesDotsAndLinks) {
  WriteText("real/file", "");
  std::u16string canonical;
  ASSERT_TRUE(Platform().CanonicalPath(Path("real"), &canonical));
  std::u16string again;
  ASSERT_TRUE(Platform().CanonicalPath(Path("real/./../real/file"), &again));
  EXPECT_EQ(again, canonical + Platform().PathSeparator() + u"file");
  if (NMakeSymbolicLink("real", Native("linked"), true)) {
    ASSERT_TRUE(Platform().CanonicalPath(Path("linked"), &again));
    EXPECT_EQ(again, canonical);
  }
  const NStatus missing = Platform().CanonicalPath(Path("missing"), &again);
  EXPECT_TRUE(missing.IsNotFound()) << Describe(missing);
}

}  // namespace
