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
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/NUnicode.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using enum NLockKind;
using enum NOpenMode;
using Clock = std::chrono::steady_clock;

NPlatform& Platform() { return NPlatform::Default(); }

// Entries as sortable pairs, so that a listing compares whatever its order.
std::vector<std::pair<std::u16string, NPathKind>> Sorted(const std::vector<NFolderEntry>& entries) {
  std::vector<std::pair<std::u16string, NPathKind>> listed;
  for (const NFolderEntry& entry : entries) listed.emplace_back(entry.name, entry.kind);
  std::sort(listed.begin(), listed.end());
  return listed;
}

using NPlatformTest = NTestFolderTest;

// A lock belongs to its handle: another handle of the same process waits
// for it as another process would.
TEST_F(NPlatformTest, SharedLocksCoexistAndConflictWithExclusiveOnesAcrossHandlesOfOneProcess) {
  const struct {
    const char* name;
    NLockKind held, wanted;
    bool granted;
  } rows[] = {
      {"shared_shared", kShared, kShared, true},
      {"shared_exclusive", kShared, kExclusive, false},
      {"exclusive_shared", kExclusive, kShared, false},
      {"exclusive_exclusive", kExclusive, kExclusive, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    auto holder = Open(row.name), other = Open(row.name);
    ASSERT_TRUE(holder && other);
    ASSERT_OK(holder->Lock(0, 8, row.held, 0ms));
    const auto start = Clock::now();
    const NStatus status = other->Lock(0, 8, row.wanted, 50ms);
    const auto waited = Clock::now() - start;
    if (row.granted) {
      EXPECT_OK(status);
      continue;
    }
    EXPECT_CODE(status, NStatus::kWaitTimeout);
    EXPECT_EQ(status.Path(), Path(row.name));
    EXPECT_GE(waited, 45ms) << "a finite wait gave up early";
    EXPECT_LT(waited, 2s);
    EXPECT_CODE(other->Lock(7, 4, row.wanted, 0ms), NStatus::kWaitTimeout) << "overlapping range";
    EXPECT_OK(other->Lock(8, 4, row.wanted, 0ms)) << "disjoint range";
  }
}

TEST_F(NPlatformTest, UnlockingOrClosingTheHandleHandsTheRangeOnButClosingAnotherHandleDoesNot) {
  enum class Then { kUnlock, kClose, kCloseAnother };
  const struct {
    const char* name;
    NFileAccess access;
    NLockKind held;
    Then then;
  } rows[] = {
      {"unlock", NFileAccess::kReadWrite, kExclusive, Then::kUnlock},
      {"close", NFileAccess::kReadWrite, kExclusive, Then::kClose},
      {"close_reader", NFileAccess::kRead, kShared, Then::kClose},
      // Closing any descriptor of a file drops classic process-wide POSIX locks.
      {"close_another", NFileAccess::kReadWrite, kExclusive, Then::kCloseAnother},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    auto holder = Open(row.name, kCreateIfMissing, row.access), other = Open(row.name);
    ASSERT_TRUE(holder && other);
    ASSERT_OK(holder->Lock(0, 4, row.held, 0ms));
    ASSERT_CODE(other->Lock(0, 4, kExclusive, 0ms), NStatus::kWaitTimeout);
    if (row.then == Then::kUnlock) {
      ASSERT_OK(holder->Unlock(0, 4));
    } else if (row.then == Then::kClose) {
      holder.reset();
    } else {
      auto another = Open(row.name, kExistingOnly, NFileAccess::kRead);
      ASSERT_TRUE(another);
      NFileInfo info;
      EXPECT_OK(another->GetInfo(&info));
      another.reset();
      EXPECT_CODE(other->Lock(0, 4, kExclusive, 20ms), NStatus::kWaitTimeout);
      continue;
    }
    EXPECT_OK(other->Lock(0, 4, kExclusive, 0ms));
    if (holder) {
      EXPECT_CODE(holder->Lock(0, 4, kShared, 0ms), NStatus::kWaitTimeout);
    }
  }
}

TEST_F(NPlatformTest, BlockingLockInAnotherThreadIsGrantedOnceTheHolderUnlocks) {
  auto holder = Open("data");
  std::shared_ptr<NFile> waiter = Open("data");
  ASSERT_TRUE(holder && waiter);
  ASSERT_OK(holder->Lock(0, 4, kExclusive, 0ms));
  struct Outcome {
    std::atomic<bool> done{false};
    NStatus status;
  };
  auto outcome = std::make_shared<Outcome>();
  std::thread thread([outcome, waiter] {
    outcome->status = waiter->Lock(0, 4, kExclusive, NFile::kWaitForever);
    outcome->done = true;
  });
  std::this_thread::sleep_for(30ms);
  EXPECT_FALSE(outcome->done) << "granted while another handle held the range";
  ASSERT_OK(holder->Unlock(0, 4));
  const auto deadline = Clock::now() + 10s;
  while (!outcome->done && Clock::now() < deadline) std::this_thread::sleep_for(1ms);
  if (!outcome->done) {
    ADD_FAILURE() << "the blocking lock was never granted";
    thread.detach();  // it owns what it uses; a hung wait must not hang the run
    return;
  }
  thread.join();
  EXPECT_OK(outcome->status);
  EXPECT_CODE(holder->Lock(0, 4, kShared, 0ms), NStatus::kWaitTimeout) << "the waiter holds it now";
}

TEST_F(NPlatformTest, FailedCallsReportWin32CodesWithTheOperationAndThePath) {
  WriteText("file", "source");
  WriteText("target", "target");
  fs::create_directory(Native("folder"));
  WriteText("full/inner", "");
  const std::u16string withNul = Path("a") + u'\0' + u"b";
  std::unique_ptr<NFile> file;
  // Windows says access denied for writes through a read-only handle; so must every system.
  const auto readOnly = Open("file", kExistingOnly, NFileAccess::kRead);
  ASSERT_TRUE(readOnly);
  auto open = [&](const std::u16string& path, NOpenMode mode, NFileAccess access) {
    return Platform().OpenFile(path, {.mode = mode, .access = access}, &file);
  };
  using enum NFileAccess;
  NPlatform& p = Platform();
  const struct {
    const char* what;
    NStatus status;
    std::uint32_t code;
    std::u16string path;
  } rows[] = {
      {"open a missing file", open(Path("missing"), kExistingOnly, kRead), 2, Path("missing")},
      {"open in a missing folder", open(Path("nowhere/file"), kExistingOnly, kRead), 3, Path("nowhere/file")},
      {"create in a missing folder", open(Path("nowhere/file"), kCreateIfMissing, kReadWrite), 3, Path("nowhere/file")},
      {"open under a file", open(Path("file/inner"), kExistingOnly, kRead), 3, Path("file/inner")},
      {"create under a file", open(Path("file/inner"), kCreateAlways, kReadWrite), 3, Path("file/inner")},
      {"open a folder to read", open(Path("folder"), kExistingOnly, kRead), 5, Path("folder")},
      {"open a folder to write", open(Path("folder"), kExistingOnly, kReadWrite), 5, Path("folder")},
      {"create over a folder", open(Path("folder"), kCreateAlways, kReadWrite), 5, Path("folder")},
      {"open a name with NUL", open(withNul, kCreateIfMissing, kReadWrite), 87, withNul},
      {"delete a folder", p.DeleteFile(Path("folder")), 5, Path("folder")},
      {"delete a missing file", p.DeleteFile(Path("missing")), 2, Path("missing")},
      {"delete in a missing folder", p.DeleteFile(Path("nowhere/file")), 3, Path("nowhere/file")},
      {"delete a name with NUL", p.DeleteFile(withNul), 87, withNul},
      {"create an existing folder", p.CreateFolder(Path("folder")), 183, Path("folder")},
      {"create a folder over a file", p.CreateFolder(Path("file")), 183, Path("file")},
      {"create a folder in a missing one", p.CreateFolder(Path("nowhere/sub")), 3, Path("nowhere/sub")},
      {"create a folder named with NUL", p.CreateFolder(withNul), 87, withNul},
      {"move onto an existing file", p.MoveFile(Path("file"), Path("target")), 183, Path("target")},
      {"move a missing file", p.MoveFile(Path("missing"), Path("moved")), 2, Path("missing")},
      {"move into a missing folder", p.MoveFile(Path("file"), Path("nowhere/file")), 3, Path("nowhere/file")},
      {"move from a missing folder", p.MoveFile(Path("nowhere/file"), Path("moved")), 3, Path("nowhere/file")},
      {"move a name with NUL", p.MoveFile(withNul, Path("moved")), 87, withNul},
      {"remove a folder that is not empty", p.RemoveFolder(Path("full")), 145, Path("full")},
      {"remove a file as a folder", p.RemoveFolder(Path("file")), 267, Path("file")},
      {"remove a missing folder", p.RemoveFolder(Path("missing")), 2, Path("missing")},
      {"write through a read-only handle", readOnly->Write(0, "xyz", 3), 5, Path("file")},
      {"truncate through a read-only handle", readOnly->Truncate(0), 5, Path("file")},
      {"reserve through a read-only handle", readOnly->Reserve(4096), 5, Path("file")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_CODE(row.status, row.code);
    EXPECT_EQ(row.status.Path(), row.path);
    EXPECT_FALSE(row.status.Operation().empty());
  }
  EXPECT_TRUE(rows[0].status.IsNotFound());
  EXPECT_EQ(file, nullptr);
  // None of the failures changed anything.
  EXPECT_EQ(ReadText("file"), "source");
  EXPECT_EQ(ReadText("target"), "target");
  for (const char* name : {"missing", "moved", "nowhere", "a"}) EXPECT_FALSE(Exists(name)) << name;
  EXPECT_TRUE(fs::is_directory(Native("folder")));
  EXPECT_TRUE(Exists("full/inner"));
}

TEST_F(NPlatformTest, OpenModesKeepCutOrRefuseToCreateTheFile) {
  const struct {
    const char* name;
    NOpenMode mode;
    bool exists, opens;
    const char* content;  // afterwards; null: no file
  } rows[] = {
      {"existing_only_existing", kExistingOnly, true, true, "kept"},
      {"existing_only_missing", kExistingOnly, false, false, nullptr},
      {"create_if_missing_existing", kCreateIfMissing, true, true, "kept"},
      {"create_if_missing_missing", kCreateIfMissing, false, true, ""},
      {"create_always_existing", kCreateAlways, true, true, ""},
      {"create_always_missing", kCreateAlways, false, true, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    if (row.exists) WriteText(row.name, "kept");
    std::unique_ptr<NFile> file;
    const NStatus status =
        Platform().OpenFile(Path(row.name), {.mode = row.mode, .access = NFileAccess::kReadWrite}, &file);
    EXPECT_EQ(status.IsOk(), row.opens) << NDescribe(status);
    EXPECT_EQ(file != nullptr, row.opens);
    if (row.content == nullptr) {
      EXPECT_FALSE(Exists(row.name));
      continue;
    }
    EXPECT_EQ(ReadText(row.name), row.content);
    if (file) {
      EXPECT_EQ(NReadAll(*file), row.content);
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
  std::unique_ptr<NFile> file;
  for (NOpenMode mode : {kExistingOnly, kCreateIfMissing, kCreateAlways}) {
    for (const char* name : {"link", "dangling"}) {
      SCOPED_TRACE(std::string(name) + " mode " + std::to_string(static_cast<int>(mode)));
      EXPECT_CODE(
          Platform().OpenFile(Path(name), {.mode = mode, .access = NFileAccess::kReadWrite, .noFollow = true}, &file),
          NStatus::kAccessDenied);
      EXPECT_EQ(file, nullptr);
    }
  }
  EXPECT_EQ(ReadText("target"), "keep") << "cut through a refused link";
  EXPECT_FALSE(Exists("absent")) << "created through a refused link";
  // A link earlier in the path is the caller's business.
  ASSERT_OK(Platform().OpenFile(Path("linked/inside"), {.noFollow = true}, &file));
  EXPECT_EQ(NReadAll(*file), "inside");
  // Without noFollow the link is followed.
  ASSERT_OK(Platform().OpenFile(Path("link"), {}, &file));
  EXPECT_EQ(NReadAll(*file), "keep");
  // noLinks refuses a link anywhere on the way, also when creating.
  for (const char* name : {"linked/inside", "linked/new"}) {
    file.reset();
    EXPECT_CODE(Platform().OpenFile(Path(name), {.mode = kCreateIfMissing, .noLinks = true}, &file),
                NStatus::kAccessDenied)
        << name;
  }
  EXPECT_FALSE(Exists("real/new"));
}

TEST_F(NPlatformTest, NoLinksOpensAndCreatesWhereNoLinkIs) {
  std::u16string folder;
  ASSERT_OK(Platform().CanonicalPath(m_folder.u16string(), &folder));
  const char16_t separator = Platform().PathSeparator();
  folder += separator;
  WriteText("sub/old", "old");
  std::unique_ptr<NFile> file;
  for (NOpenMode mode : {kExistingOnly, kCreateIfMissing, kCreateAlways}) {
    SCOPED_TRACE(static_cast<int>(mode));
    ASSERT_OK(Platform().OpenFile(folder + u"sub" + separator + u"old",
                                  {.mode = mode, .access = NFileAccess::kReadWrite, .noFollow = true, .noLinks = true},
                                  &file));
    EXPECT_EQ(NReadAll(*file), mode == kCreateAlways ? "" : "old");
  }
  ASSERT_OK(Platform().OpenFile(folder + u"sub" + separator + u"new",
                                {.mode = kCreateIfMissing, .access = NFileAccess::kReadWrite, .noLinks = true}, &file));
  EXPECT_OK(file->Write(0, "made", 4));
  file.reset();
  EXPECT_EQ(ReadText("sub/new"), "made");
  // A missing folder is reported as one, so that the caller can make it.
  EXPECT_CODE(
      Platform().OpenFile(folder + u"missing" + separator + u"new", {.mode = kCreateIfMissing, .noLinks = true}, &file),
      NStatus::kPathNotFound);
  EXPECT_FALSE(Exists("missing"));
}

TEST_F(NPlatformTest, PositionalWritesExtendTheFileReadsStopAtItsEndAndReserveKeepsItsLength) {
  auto file = Open("data", kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_OK(file->Write(0, "hello", 5));
  ASSERT_OK(file->Write(10, "XY", 2));
  ASSERT_OK(file->Write(1, "EL", 2));
  NFileInfo info;
  ASSERT_OK(file->GetInfo(&info));
  EXPECT_EQ(info.size, 12u);
  const std::string written("hELlo\0\0\0\0\0XY", 12);
  EXPECT_EQ(ReadText("data"), written);
  char buffer[32];
  const struct {
    std::uint64_t offset;
    std::size_t size;
    std::string expected;
  } reads[] = {{0, sizeof buffer, written}, {3, 4, std::string("lo\0\0", 4)}, {11, 4, "Y"}, {12, 4, ""}, {1000, 4, ""}};
  for (const auto& r : reads) {
    std::size_t read = 99;
    ASSERT_OK(file->Read(r.offset, buffer, r.size, &read));
    EXPECT_EQ(std::string(buffer, read), r.expected) << "at " << r.offset;
  }
  ASSERT_OK(file->Truncate(3));
  EXPECT_EQ(NReadAll(*file), "hEL");
  ASSERT_OK(file->Truncate(5));
  EXPECT_EQ(NReadAll(*file), std::string("hEL\0\0", 5));
  EXPECT_OK(file->Sync());
  EXPECT_EQ(ReadText("data"), std::string("hEL\0\0", 5));
  // A reservation, also of less than the file holds, leaves the length alone.
  for (const std::uint64_t reserved : {1u << 20, 0u, 2u}) ASSERT_OK(file->Reserve(reserved)) << reserved;
  ASSERT_OK(file->GetInfo(&info));
  EXPECT_EQ(info.size, 5u);
  EXPECT_EQ(NReadAll(*file), std::string("hEL\0\0", 5));
  EXPECT_EQ(ReadText("data"), std::string("hEL\0\0", 5));
}

TEST_F(NPlatformTest, InfoIdentifiesTheFileAndNoticesAWrite) {
  auto a = Open("a"), sameA = Open("a", kExistingOnly, NFileAccess::kRead), b = Open("b");
  ASSERT_TRUE(a && sameA && b);
  NFileInfo infoA, infoSameA, infoB;
  ASSERT_OK(a->GetInfo(&infoA));
  ASSERT_OK(sameA->GetInfo(&infoSameA));
  ASSERT_OK(b->GetInfo(&infoB));
  EXPECT_EQ(infoA.fileId, infoSameA.fileId);
  EXPECT_NE(infoA.fileId, infoB.fileId);
  // An old time in whole seconds makes the change visible on any timestamp
  // granularity, and is what std::filesystem can set everywhere.
  fs::last_write_time(Native("a"), std::chrono::file_clock::from_sys(std::chrono::sys_seconds(978307200s)));
  NFileInfo before, after;
  ASSERT_OK(a->GetInfo(&before));
  EXPECT_EQ(before.modifiedNanoseconds, 978307200000000000);
  ASSERT_OK(a->Write(0, "x", 1));
  ASSERT_OK(sameA->GetInfo(&after));
  EXPECT_GT(after.modifiedNanoseconds, before.modifiedNanoseconds);
  EXPECT_EQ(after.size, 1u);
  EXPECT_EQ(after.fileId, before.fileId);
  EXPECT_NE(after, before);
}

TEST_F(NPlatformTest, CurrentFileTimeCountsFrom1601) {
  constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
  const auto seconds = static_cast<std::int64_t>((Platform().CurrentFileTime() - kUnixEpochAsFileTime) / 10000000);
  EXPECT_LE(std::llabs(seconds - static_cast<std::int64_t>(std::time(nullptr))), 5);
}

TEST_F(NPlatformTest, MoveFileRenamesAndDeleteFileDeletes) {
  WriteText("from", "moved");
  ASSERT_OK(Platform().MoveFile(Path("from"), Path("to")));
  EXPECT_FALSE(Exists("from"));
  EXPECT_EQ(ReadText("to"), "moved");
  ASSERT_OK(Platform().DeleteFile(Path("to")));
  EXPECT_FALSE(Exists("to"));
}

TEST_F(NPlatformTest, CreateFolderChainCreatesEveryMissingFolderAndStopsAtAFile) {
  EXPECT_OK(Platform().CreateFolderChain(Path("a/b/c/d/e")));
  for (const char* folder : {"a", "a/b", "a/b/c", "a/b/c/d", "a/b/c/d/e"}) {
    EXPECT_TRUE(Platform().IsFolder(Path(folder))) << folder;
  }
  EXPECT_OK(Platform().CreateFolderChain(Path("a/b/c/d/e"))) << "all present";
  EXPECT_OK(Platform().CreateFolderChain(Path("x/y/"))) << "trailing separator";
  EXPECT_TRUE(Platform().IsFolder(Path("x/y")));
  WriteText("a/file", "");
  EXPECT_CODE(Platform().CreateFolderChain(Path("a/file")), NStatus::kAlreadyExists);
  EXPECT_CODE(Platform().CreateFolderChain(Path("a/file/g/h")), NStatus::kAlreadyExists);
  EXPECT_TRUE(Platform().IsFile(Path("a/file")));
  ASSERT_OK(Platform().RemoveFolder(Path("x/y")));
  EXPECT_FALSE(Exists("x/y"));
}

TEST_F(NPlatformTest, ListFolderNamesEveryEntryWithItsKindAndNeverTheDotEntries) {
  WriteText("one.ini", "1");
  WriteText(".hidden", "");
  fs::create_directory(Native("sub"));
  std::vector<NFolderEntry> expected = {
      {u".hidden", NPathKind::kFile}, {u"one.ini", NPathKind::kFile}, {u"sub", NPathKind::kFolder}};
  // A link is neither a file nor a folder, whatever it names.
  if (NMakeSymbolicLink("one.ini", Native("link"), false) && NMakeSymbolicLink("sub", Native("folderlink"), true)) {
    expected.push_back({u"folderlink", NPathKind::kOther});
    expected.push_back({u"link", NPathKind::kOther});
  }
  std::vector<NFolderEntry> entries = {{u"stale", NPathKind::kFile}};
  ASSERT_OK(Platform().ListFolder(m_folder.u16string(), &entries));
  EXPECT_EQ(Sorted(entries), Sorted(expected));
  ASSERT_OK(Platform().ListFolder(Path("sub"), &entries));
  EXPECT_TRUE(entries.empty());
  for (const char* missing : {"missing", "missing/deeper", "one.ini"}) {
    const NStatus status = Platform().ListFolder(Path(missing), &entries);
    EXPECT_TRUE(status.IsNotFound()) << missing << ": " << NDescribe(status);
    EXPECT_EQ(status.Path(), Path(missing));
  }
}

TEST_F(NPlatformTest, ListingWithoutLinksRefusesAFolderReachedThroughOne) {
  WriteText("real/sub/one.ini", "1");
  std::vector<NFolderEntry> entries;
  ASSERT_OK(Platform().ListFolderWithoutLinks(Path("real/sub"), &entries));
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].name, u"one.ini");
  for (const char* missing : {"missing", "real/missing/deeper", "real/sub/one.ini"}) {
    const NStatus status = Platform().ListFolderWithoutLinks(Path(missing), &entries);
    EXPECT_TRUE(status.IsNotFound()) << missing << ": " << NDescribe(status);
  }
  if (!NMakeSymbolicLink("real", Native("linked"), true)) GTEST_SKIP() << "this system makes no symbolic links here";
  for (const char* linked : {"linked", "linked/sub"}) {
    ASSERT_OK(Platform().ListFolder(Path(linked), &entries)) << linked;
    EXPECT_CODE(Platform().ListFolderWithoutLinks(Path(linked), &entries), NStatus::kAccessDenied) << linked;
  }
}

TEST_F(NPlatformTest, PathKindTellsFilesFoldersAndLinksApart) {
  WriteText("file", "");
  fs::create_directory(Native("folder"));
  const struct {
    std::u16string path;
    NPathKind kind;
  } rows[] = {
      {Path("file"), NPathKind::kFile},   {Path("folder"), NPathKind::kFolder},     {Path("missing"), NPathKind::kNone},
      {Path("file/x"), NPathKind::kNone}, {Path("file") + u'\0', NPathKind::kNone}, {u"", NPathKind::kNone},
  };
  for (const auto& row : rows) EXPECT_EQ(Platform().GetPathKind(row.path), row.kind) << NUtf16ToUtf8(row.path);
  // A link at the end is not followed.
  if (NMakeSymbolicLink("folder", Native("link"), true)) {
    EXPECT_EQ(Platform().GetPathKind(Path("link")), NPathKind::kOther);
  }
}

TEST_F(NPlatformTest, NonAsciiNamesRoundTripThroughOpenAndListFolder) {
  const std::vector<NFolderEntry> made = {{u"K\u00f6nig \u65e5\u672c.ini", NPathKind::kFile},
                                          {u"\U0001F600.ini", NPathKind::kFile}};
  const std::u16string folder = m_folder.u16string() + Platform().PathSeparator();
  std::unique_ptr<NFile> file;
  for (const NFolderEntry& entry : made) {
    ASSERT_OK(
        Platform().OpenFile(folder + entry.name, {.mode = kCreateAlways, .access = NFileAccess::kReadWrite}, &file));
    ASSERT_OK(file->Write(0, "content", 7));
    EXPECT_TRUE(fs::is_regular_file(m_folder / fs::path(entry.name)));
  }
  std::vector<NFolderEntry> entries;
  ASSERT_OK(Platform().ListFolder(m_folder.u16string(), &entries));
  ASSERT_EQ(Sorted(entries), Sorted(made));
  for (const NFolderEntry& entry : made) {
    ASSERT_OK(Platform().OpenFile(folder + entry.name, {}, &file));
    EXPECT_EQ(NReadAll(*file), "content");
  }
}

TEST_F(NPlatformTest, CanonicalPathResolvesDotsAndLinks) {
  WriteText("real/file", "");
  std::u16string canonical, again;
  ASSERT_OK(Platform().CanonicalPath(Path("real"), &canonical));
  ASSERT_OK(Platform().CanonicalPath(Path("real/./../real/file"), &again));
  EXPECT_EQ(again, canonical + Platform().PathSeparator() + u"file");
  if (NMakeSymbolicLink("real", Native("linked"), true)) {
    ASSERT_OK(Platform().CanonicalPath(Path("linked"), &again));
    EXPECT_EQ(again, canonical);
  }
  const NStatus missing = Platform().CanonicalPath(Path("missing"), &again);
  EXPECT_TRUE(missing.IsNotFound()) << NDescribe(missing);
}

}  // namespace
