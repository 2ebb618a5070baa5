#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFolder.h"
#include "platform/testing/NWindowsLockPlatform.h"

namespace {

using namespace std::chrono_literals;
using enum NLockKind;
using Clock = std::chrono::steady_clock;

// An error no real call in these tests returns by itself.
constexpr std::uint32_t kInjectedError = 1117;  // ERROR_IO_DEVICE

NPlatform& Real() { return NPlatform::Default(); }

class NFaultPlatformTest : public NTestFolderTest {
 protected:
  std::unique_ptr<NFile> OpenFaulty(const std::string& name = "data") {
    return OpenOn(m_faults, name, {.mode = NOpenMode::kCreateIfMissing, .access = NFileAccess::kReadWrite});
  }

  NFaultPlatform m_faults{Real()};
};

TEST_F(NFaultPlatformTest, FailNthFailsOnlyTheNthCallOfItsKindCountingFromTheInjection) {
  // Each call gets its number i, so that it can work on a name of its own.
  using Call = std::function<NStatus(NPlatform&, NFile&, int i)>;
  const auto n = [](const char* name, int i) { return name + std::to_string(i); };
  // What a lock of one byte at `at` through another handle gives.
  const auto lockCode = [&](std::uint64_t at) {
    auto other = Open("data");
    return other ? other->Lock(at, 1, kExclusive, 0ms).Code() : ~0u;
  };
  const struct {
    NFaultKind kind;
    const char* operation;
    Call call;
    std::function<bool()> untouched;  // after the failed second call; empty: nothing to look at
  } rows[] = {
      {NFaultKind::kOpen, "open",
       [&](NPlatform& p, NFile&, int i) {
         std::unique_ptr<NFile> file;
         return p.OpenFile(Path(n("open", i)), {.mode = NOpenMode::kCreateIfMissing}, &file);
       },
       [&] { return !Exists("open2"); }},
      {NFaultKind::kRead, "read",
       [](NPlatform&, NFile& f, int i) {
         char byte;
         std::size_t read = 0;
         return f.Read(i, &byte, 1, &read);
       },
       nullptr},
      {NFaultKind::kWrite, "write", [](NPlatform&, NFile& f, int i) { return f.Write(i, "x", 1); },
       [&] { return ReadText("data") == "0x23456789"; }},
      {NFaultKind::kTruncate, "truncate", [](NPlatform&, NFile& f, int i) { return f.Truncate(10 + i); },
       [&] { return std::filesystem::file_size(Native("data")) == 11; }},
      {NFaultKind::kReserve, "reserve", [](NPlatform&, NFile& f, int i) { return f.Reserve(100 + i); }, nullptr},
      {NFaultKind::kLock, "lock", [](NPlatform&, NFile& f, int i) { return f.Lock(10 * i, 1, kExclusive, 0ms); },
       [&] { return lockCode(20) == 0; }},
      {NFaultKind::kUnlock, "unlock",
       [](NPlatform&, NFile& f, int i) {
         if (NStatus status = f.Lock(100 + i, 1, kExclusive, 0ms); !status) return status;
         return f.Unlock(100 + i, 1);
       },
       [&] { return lockCode(102) == NStatus::kWaitTimeout; }},
      {NFaultKind::kSync, "sync", [](NPlatform&, NFile& f, int) { return f.Sync(); }, nullptr},
      {NFaultKind::kGetInfo, "stat",
       [](NPlatform&, NFile& f, int) {
         NFileInfo info;
         return f.GetInfo(&info);
       },
       nullptr},
      {NFaultKind::kDelete, "delete",
       [&](NPlatform& p, NFile&, int i) {
         WriteText(n("delete", i), "");
         return p.DeleteFile(Path(n("delete", i)));
       },
       [&] { return Exists("delete2"); }},
      {NFaultKind::kMove, "move",
       [&](NPlatform& p, NFile&, int i) {
         WriteText(n("move", i), "");
         return p.MoveFile(Path(n("move", i)), Path(n("moved", i)));
       },
       [&] { return Exists("move2") && !Exists("moved2"); }},
      {NFaultKind::kCreateFolder, "create folder",
       [&](NPlatform& p, NFile&, int i) { return p.CreateFolder(Path(n("create", i))); },
       [&] { return !Exists("create2"); }},
      {NFaultKind::kRemoveFolder, "remove folder",
       [&](NPlatform& p, NFile&, int i) {
         std::filesystem::create_directory(Native(n("remove", i)));
         return p.RemoveFolder(Path(n("remove", i)));
       },
       [&] { return Exists("remove2"); }},
      {NFaultKind::kListFolder, "list folder",
       [&](NPlatform& p, NFile&, int) {
         std::vector<NFolderEntry> entries;
         return p.ListFolder(m_folder.u16string(), &entries);
       },
       nullptr},
  };
  ASSERT_EQ(std::size(rows), kFaultKindCount) << "every kind has a row";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.operation);
    WriteText("data", "0123456789");
    NFaultPlatform faults(Real());
    auto file = OpenOn(faults, "data", {.mode = NOpenMode::kCreateIfMissing, .access = NFileAccess::kReadWrite});
    ASSERT_TRUE(file);
    const int before = faults.CallCount(row.kind);
    faults.FailNth(row.kind, 2, kInjectedError);
    EXPECT_OK(row.call(faults, *file, 1));
    EXPECT_FALSE(faults.Fired());
    const NStatus failed = row.call(faults, *file, 2);
    EXPECT_EQ(failed.Code(), kInjectedError);
    EXPECT_EQ(failed.Operation(), row.operation);
    EXPECT_FALSE(failed.Path().empty());
    EXPECT_TRUE(faults.Fired());
    if (row.untouched) {
      EXPECT_TRUE(row.untouched()) << "the failed call reached the real platform";
    }
    EXPECT_OK(row.call(faults, *file, 3)) << "a fault that is not sticky fails one call";
    EXPECT_EQ(faults.CallCount(row.kind), before + 3);
  }
}

TEST_F(NFaultPlatformTest, StickyFaultFailsEveryLaterCallOfItsKindUntilReset) {
  auto file = OpenFaulty();
  ASSERT_TRUE(file);
  m_faults.FailNth(NFaultKind::kSync, 2, NStatus::kDiskFull, true);
  EXPECT_OK(file->Sync());
  for (int call = 2; call <= 4; ++call) EXPECT_CODE(file->Sync(), NStatus::kDiskFull) << "call " << call;
  NFileInfo info;
  EXPECT_OK(file->GetInfo(&info)) << "other kinds go on working";
  EXPECT_EQ(m_faults.CallCount(NFaultKind::kSync), 4);
  EXPECT_EQ(m_faults.TotalCalls(), 6);  // the open, four syncs, one stat
  m_faults.Reset();
  EXPECT_FALSE(m_faults.Fired());
  EXPECT_EQ(m_faults.TotalCalls(), 0);
  EXPECT_EQ(m_faults.CallCount(NFaultKind::kSync), 0);
  EXPECT_OK(file->Sync());
}

TEST_F(NFaultPlatformTest, FailNthOfAnyReachesEveryCallOfAnOperationInTurn) {
  // Writes a file under a temporary name and moves it into place.
  const auto save = [&](NPlatform& platform) {
    std::unique_ptr<NFile> file;
    NStatus status = platform.OpenFile(Path("saved.tmp"),
                                       {.mode = NOpenMode::kCreateAlways, .access = NFileAccess::kReadWrite}, &file);
    if (status) status = file->Write(0, "hello", 5);
    if (status) status = file->Sync();
    file.reset();
    if (status) status = platform.MoveFile(Path("saved.tmp"), Path("saved"));
    return status;
  };
  std::vector<std::string> failedOperations;
  for (int n = 1; n <= 10; ++n) {
    SCOPED_TRACE("call " + std::to_string(n));
    NFaultPlatform faults(Real());
    faults.FailNthOfAny(n, NStatus::kDiskFull);
    const NStatus status = save(faults);
    if (!faults.Fired()) {
      EXPECT_OK(status);
      EXPECT_EQ(faults.TotalCalls(), 4);
      EXPECT_EQ(faults.CallCount(NFaultKind::kWrite), 1);
      break;
    }
    EXPECT_CODE(status, NStatus::kDiskFull);
    EXPECT_FALSE(Exists("saved"));
    failedOperations.push_back(status.Operation());
  }
  EXPECT_EQ(failedOperations, (std::vector<std::string>{"open", "write", "sync", "move"}));
  EXPECT_EQ(ReadText("saved"), "hello");
}

TEST_F(NFaultPlatformTest, ShortWriteWritesTheFirstHalfBeforeFailing) {
  auto file = OpenFaulty();
  ASSERT_TRUE(file);
  m_faults.FailNth(NFaultKind::kWrite, 1, {.error = NStatus::kDiskFull, .shortWrite = true});
  EXPECT_CODE(file->Write(2, "abcdefghij", 10), NStatus::kDiskFull);
  EXPECT_EQ(ReadText("data"), std::string("\0\0abcde", 7));
  EXPECT_OK(file->Write(0, "xy", 2));
  EXPECT_EQ(ReadText("data"), "xyabcde");
}

TEST_F(NFaultPlatformTest, CallsFromManyThreadsAreCountedOnceEachAndFailOnce) {
  constexpr int kThreads = 4;
  constexpr int kCallsPerThread = 5000;
  std::vector<std::unique_ptr<NFile>> files;
  for (int i = 0; i < kThreads; ++i) files.push_back(OpenFaulty());
  m_faults.FailNth(NFaultKind::kGetInfo, 10000, kInjectedError);
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int call = 0; call < kCallsPerThread; ++call) {
        NFileInfo info;
        if (!files[i]->GetInfo(&info)) ++failures;
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(failures, 1);
  EXPECT_EQ(m_faults.CallCount(NFaultKind::kGetInfo), kThreads * kCallsPerThread);
}

class NWindowsLockPlatformTest : public NTestFolderTest {
 protected:
  std::unique_ptr<NFile> OpenLocked(const std::string& name, NFileAccess access = NFileAccess::kReadWrite,
                                    unsigned share = kShareAll) {
    return OpenOn(m_locks, name, {.mode = NOpenMode::kCreateIfMissing, .access = access, .share = share});
  }
  NStatus TryOpen(const std::string& name, NOpenOptions options) {
    std::unique_ptr<NFile> file;
    return m_locks.OpenFile(Path(name), options, &file);
  }

  NWindowsLockPlatform m_locks{Real()};
};

enum class Io { kRead, kWrite, kTruncate, kReserve, kLockShared, kLockExclusive };

TEST_F(NWindowsLockPlatformTest, IoAndLocksThroughAHandleObeyTheLocksOfEveryHandle) {
  // The holder locks [4, 8) of a 6-byte file. Reading and writing under the
  // handle's own exclusive lock are left to the store's saves on this platform.
  const struct {
    const char* name;
    bool sameHandle;
    NLockKind held;
    Io io;
    std::uint64_t offset;  // Truncate and Reserve: the length
    std::uint64_t size;
    std::uint32_t expected;
  } rows[] = {
      {"read_other_exclusive", false, kExclusive, Io::kRead, 2, 4, NStatus::kLockViolation},
      {"read_before_other_exclusive", false, kExclusive, Io::kRead, 0, 4, 0},
      {"read_other_shared", false, kShared, Io::kRead, 2, 4, 0},
      {"write_other_shared", false, kShared, Io::kWrite, 7, 1, NStatus::kLockViolation},
      {"write_other_exclusive", false, kExclusive, Io::kWrite, 3, 2, NStatus::kLockViolation},
      {"write_after_other_exclusive", false, kExclusive, Io::kWrite, 8, 1, 0},
      {"write_own_shared", true, kShared, Io::kWrite, 5, 1, NStatus::kLockViolation},
      {"truncate_into_other_shared", false, kShared, Io::kTruncate, 5, 0, NStatus::kLockViolation},
      {"truncate_past_other_exclusive", false, kExclusive, Io::kTruncate, 8, 0, 0},
      {"truncate_into_own_shared", true, kShared, Io::kTruncate, 2, 0, NStatus::kLockViolation},
      {"truncate_into_own_exclusive", true, kExclusive, Io::kTruncate, 2, 0, 0},
      {"reserve_over_other_shared", false, kShared, Io::kReserve, 64, 0, NStatus::kLockViolation},
      {"reserve_within_length", false, kExclusive, Io::kReserve, 4, 0, 0},
      {"reserve_over_own_exclusive", true, kExclusive, Io::kReserve, 64, 0, 0},
      {"other_exclusive_then_shared", false, kExclusive, Io::kLockShared, 6, 4, NStatus::kWaitTimeout},
      {"other_exclusive_then_exclusive", false, kExclusive, Io::kLockExclusive, 6, 4, NStatus::kWaitTimeout},
      {"other_shared_then_exclusive", false, kShared, Io::kLockExclusive, 6, 4, NStatus::kWaitTimeout},
      {"other_shared_then_shared", false, kShared, Io::kLockShared, 6, 4, 0},
      {"other_exclusive_then_disjoint", false, kExclusive, Io::kLockExclusive, 8, 4, 0},
      {"own_shared_then_exclusive", true, kShared, Io::kLockExclusive, 6, 4, NStatus::kLockViolation},
      {"own_exclusive_then_exclusive", true, kExclusive, Io::kLockExclusive, 6, 4, NStatus::kLockViolation},
      {"own_exclusive_then_shared", true, kExclusive, Io::kLockShared, 6, 4, NStatus::kLockViolation},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    WriteText(row.name, "012345");
    auto holder = OpenLocked(row.name), other = OpenLocked(row.name);
    ASSERT_TRUE(holder && other);
    ASSERT_OK(holder->Lock(4, 4, row.held, 0ms));
    NFile& actor = row.sameHandle ? *holder : *other;
    const NLockKind wanted = row.io == Io::kLockShared ? kShared : kExclusive;
    // A handle refused by its own lock must hear so at once, not at the end of the wait.
    const auto timeout = row.sameHandle ? 5000ms : 50ms;
    char buffer[8];
    std::size_t read = 0;
    const auto start = Clock::now();
    const NStatus status = row.io == Io::kRead       ? actor.Read(row.offset, buffer, row.size, &read)
                           : row.io == Io::kWrite    ? actor.Write(row.offset, "xxxxxxxx", row.size)
                           : row.io == Io::kTruncate ? actor.Truncate(row.offset)
                           : row.io == Io::kReserve  ? actor.Reserve(row.offset)
                                                     : actor.Lock(row.offset, row.size, wanted, timeout);
    const auto waited = Clock::now() - start;
    EXPECT_CODE(status, row.expected);
    if (row.expected == 0) continue;
    EXPECT_EQ(status.Path(), Path(row.name));
    EXPECT_EQ(ReadText(row.name), "012345") << "a refused call changed the file";
    EXPECT_LT(waited, row.sameHandle ? 1s : 2s);
    if (row.expected == NStatus::kWaitTimeout) {
      EXPECT_GE(waited, 45ms) << "gave up early";
    }
  }
}

// The holder locks [4, 8) exclusively and stacks two shared locks on
// [10, 14); the outsider opens the real file straight, as another process.
TEST_F(NWindowsLockPlatformTest, LocksReachTheRealFileAndEndWithTheirExactUnlockOrTheirHandle) {
  auto holder = OpenLocked("data"), other = OpenLocked("data");
  auto outsider = Open("data");
  ASSERT_TRUE(holder && other && outsider);
  ASSERT_OK(holder->Lock(4, 4, kExclusive, 0ms));
  ASSERT_OK(holder->Lock(10, 4, kShared, 0ms));
  ASSERT_OK(holder->Lock(10, 4, kShared, 0ms));
  const struct {
    const char* name;
    NFile* handle;
    std::uint64_t offset, length;
  } refused[] = {
      {"never_locked", holder.get(), 0, 4},
      {"part_of_the_lock", holder.get(), 4, 2},
      {"more_than_the_lock", holder.get(), 4, 8},
      {"lock_of_another_handle", other.get(), 4, 4},
  };
  for (const auto& row : refused) {
    EXPECT_CODE(row.handle->Unlock(row.offset, row.length), NWindowsLockPlatform::kNotLocked) << row.name;
  }
  EXPECT_CODE(other->Lock(4, 4, kShared, 0ms), NStatus::kWaitTimeout) << "the lock survived";
  EXPECT_CODE(outsider->Lock(4, 4, kShared, 0ms), NStatus::kWaitTimeout) << "exclusive on the real file";
  ASSERT_OK(holder->Unlock(4, 4));
  EXPECT_CODE(holder->Unlock(4, 4), NWindowsLockPlatform::kNotLocked) << "unlocked twice";
  ASSERT_OK(holder->Unlock(10, 4));
  EXPECT_CODE(other->Lock(10, 4, kExclusive, 0ms), NStatus::kWaitTimeout) << "one stacked lock is left";
  EXPECT_CODE(outsider->Lock(10, 4, kExclusive, 0ms), NStatus::kWaitTimeout) << "and held on the real file";
  ASSERT_OK(holder->Unlock(10, 4));
  for (const std::uint64_t at : {4u, 10u}) {
    ASSERT_OK(outsider->Lock(at, 4, kExclusive, 0ms)) << "released on the real file at " << at;
    ASSERT_OK(outsider->Unlock(at, 4));
  }
  // Closing the handle releases every lock it holds.
  ASSERT_OK(holder->Lock(4, 4, kExclusive, 0ms));
  ASSERT_OK(holder->Lock(10, 4, kShared, 0ms));
  holder.reset();
  EXPECT_OK(other->Lock(4, 4, kExclusive, 0ms));
  EXPECT_OK(other->Lock(10, 4, kExclusive, 0ms));
}

TEST_F(NWindowsLockPlatformTest, ShareModesOfOpenHandlesAndOfTheNewOneMustAllowEachOther) {
  using enum NFileAccess;
  using enum NOpenMode;
  constexpr unsigned kNoDelete = kShareRead | kShareWrite;
  const struct {
    const char* name;
    NFileAccess firstAccess;
    unsigned firstShare;
    NOpenOptions second;
    bool allowed;
  } rows[] = {
      {"reader_beside_writer_sharing_reads", kReadWrite, kShareRead, {.access = kRead}, true},
      {"writer_beside_writer_sharing_reads", kReadWrite, kShareRead, {.access = kReadWrite}, false},
      {"reader_beside_reader_sharing_nothing", kRead, kShareNone, {.access = kRead}, false},
      {"reader_beside_reader_sharing_writes_only", kRead, kShareWrite, {.access = kRead}, false},
      {"reader_sharing_reads_beside_writer", kReadWrite, kShareAll, {.access = kRead, .share = kShareRead}, false},
      {"reader_sharing_reads_beside_reader", kRead, kShareAll, {.access = kRead, .share = kShareRead}, true},
      {"writer_sharing_reads_and_writes", kReadWrite, kNoDelete, {.access = kReadWrite, .share = kNoDelete}, true},
      // Refused before the file is cut.
      {"rewriter_beside_reader_sharing_reads", kRead, kShareRead, {.mode = kCreateAlways, .access = kReadWrite}, false},
  };
  for (const auto& row : rows) {
    // Handles of one file meet whatever path opened them.
    for (const std::string via : {"", "./"}) {
      SCOPED_TRACE(via + row.name);
      WriteText(row.name, "content");
      auto first = OpenLocked(row.name, row.firstAccess, row.firstShare);
      ASSERT_TRUE(first);
      const NStatus status = TryOpen(via + row.name, row.second);
      if (row.allowed) {
        EXPECT_OK(status);
        continue;
      }
      EXPECT_CODE(status, NStatus::kSharingViolation);
      EXPECT_EQ(status.Path(), Path(via + row.name));
      first.reset();  // its share mode would keep the check below out as well
      EXPECT_EQ(ReadText(row.name), "content") << "a refused open changed the file";
      EXPECT_OK(TryOpen(via + row.name, row.second)) << "closing the first handle ends its share mode";
      EXPECT_EQ(ReadText(row.name), row.second.mode == kCreateAlways ? "" : "content");
    }
  }
}

TEST_F(NWindowsLockPlatformTest, DeletingOrMovingAnOpenFileNeedsShareDelete) {
  const unsigned shares[] = {kShareAll, kShareRead | kShareWrite};
  for (const unsigned share : shares) {
    const bool allowed = share & kShareDelete;
    const std::string name = allowed ? "shared_for_delete" : "not_shared_for_delete", moved = name + ".moved";
    SCOPED_TRACE(name);
    WriteText(name, "x");
    auto file = OpenLocked(name, NFileAccess::kRead, share);
    ASSERT_TRUE(file);
    EXPECT_CODE(m_locks.MoveFile(Path(name), Path(moved)), allowed ? 0 : NStatus::kSharingViolation);
    EXPECT_EQ(Exists(moved), allowed);
    const std::string current = allowed ? moved : name;
    EXPECT_CODE(m_locks.DeleteFile(Path(current)), allowed ? 0 : NStatus::kSharingViolation);
    // Older Windows, FAT volumes and Wine keep the name of a file deleted
    // while open until its last handle closes.
    file.reset();
    EXPECT_EQ(Exists(current), !allowed);
  }
}

}  // namespace
