#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "platform/testing/NWindowsLockPlatform.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kShortWait{20};
// An error no real call in these tests returns by itself.
constexpr std::uint32_t kInjectedError = 1117;  // ERROR_IO_DEVICE

std::string Describe(const NStatus& status) {
  std::ostringstream out;
  out << "code " << status.Code() << " from '" << status.Operation() << "'";
  return out.str();
}

class TestPlatformsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::random_device device;
    for (int attempt = 0; attempt < 100 && m_folder.empty(); ++attempt) {
      auto candidate = std::filesystem::path(testing::TempDir()) / ("cfgdeck_testing_" + std::to_string(device()));
      if (std::filesystem::create_directory(candidate)) m_folder = candidate;
    }
    ASSERT_FALSE(m_folder.empty());
  }
  void TearDown() override {
    std::error_code ignored;
    if (!m_folder.empty()) std::filesystem::remove_all(m_folder, ignored);
  }

  std::filesystem::path Native(const std::string& name) const { return m_folder / name; }
  std::u16string Path(const std::string& name) const { return Native(name).u16string(); }

  void WriteText(const std::string& name, const std::string& text) const {
    std::ofstream out(Native(name), std::ios::binary | std::ios::trunc);
    out << text;
  }
  std::string ReadText(const std::string& name) const { return NReadFileBytes(Native(name)); }
  bool Exists(const std::string& name) const { return std::filesystem::exists(Native(name)); }

  static std::unique_ptr<NFile> Open(NPlatform& platform, const std::u16string& path,
                                     NFileAccess access = NFileAccess::kReadWrite, unsigned share = kShareAll,
                                     NOpenMode mode = NOpenMode::kCreateIfMissing) {
    std::unique_ptr<NFile> file;
    const NStatus status = platform.OpenFile(path, {.mode = mode, .access = access, .share = share}, &file);
    EXPECT_TRUE(status.IsOk()) << Describe(status);
    return file;
  }

  std::filesystem::path m_folder;
};

// ---- NFaultPlatform --------------------------------------------------------

using NFaultPlatformTest = TestPlatformsTest;

TEST_F(NFaultPlatformTest, FailNthFailsOnlyTheNthCallOfItsKindCountingFromTheInjection) {
  struct Row {
    NFaultKind kind;
    const char* operation;
    std::function<NStatus(NFaultPlatform&, NFile&, int)> call;
    std::function<bool()> untouched;  // after the failed second call; empty: nothing to look at
  };
  const Row rows[] = {
      {NFaultKind::kOpen, "open",
       [&](NFaultPlatform& p, NFile&, int i) {
         std::unique_ptr<NFile> file;
         return p.OpenFile(Path("open" + std::to_string(i)), {.mode = NOpenMode::kCreateIfMissing}, &file);
       },
       [&] { return !Exists("open2"); }},
      {NFaultKind::kRead, "read",
       [](NFaultPlatform&, NFile& f, int i) {
         char byte;
         std::size_t read = 0;
         return f.Read(i, &byte, 1, &read);
       },
       nullptr},
      {NFaultKind::kWrite, "write", [](NFaultPlatform&, NFile& f, int i) { return f.Write(i, "x", 1); },
       [&] { return ReadText("data") == "0x23456789"; }},
      {NFaultKind::kTruncate, "truncate", [](NFaultPlatform&, NFile& f, int i) { return f.Truncate(10 + i); },
       [&] { return std::filesystem::file_size(Native("data")) == 11; }},
      {NFaultKind::kReserve, "reserve", [](NFaultPlatform&, NFile& f, int i) { return f.Reserve(100 + i); }, nullptr},
      {NFaultKind::kLock, "lock",
       [](NFaultPlatform&, NFile& f, int i) { return f.Lock(10 * i, 1, NLockKind::kExclusive, 0ms); },
       [&] {
         auto other = Open(NPlatform::Default(), Path("data"));
         return other && other->Lock(20, 1, NLockKind::kExclusive, 0ms).IsOk();
       }},
      {NFaultKind::kUnlock, "unlock",
       [](NFaultPlatform&, NFile& f, int i) {
         if (NStatus status = f.Lock(100 + i, 1, NLockKind::kExclusive, 0ms); !status) return status;
         return f.Unlock(100 + i, 1);
       },
       [&] {
         auto other = Open(NPlatform::Default(), Path("data"));
         return other && other->Lock(102, 1, NLockKind::kExclusive, 0ms).Code() == NStatus::kWaitTimeout;
       }},
      {NFaultKind::kSync, "sync", [](NFaultPlatform&, NFile& f, int) { return f.Sync(); }, nullptr},
      {NFaultKind::kGetInfo, "stat",
       [](NFaultPlatform&, NFile& f, int) {
         NFileInfo info;
         return f.GetInfo(&info);
       },
       nullptr},
      {NFaultKind::kDelete, "delete",
       [&](NFaultPlatform& p, NFile&, int i) {
         WriteText("delete" + std::to_string(i), "");
         return p.DeleteFile(Path("delete" + std::to_string(i)));
       },
       [&] { return Exists("delete2"); }},
      {NFaultKind::kMove, "move",
       [&](NFaultPlatform& p, NFile&, int i) {
         WriteText("move" + std::to_string(i), "");
         return p.MoveFile(Path("move" + std::to_string(i)), Path("moved" + std::to_string(i)));
       },
       [&] { return Exists("move2") && !Exists("moved2"); }},
      {NFaultKind::kCreateFolder, "create folder",
       [&](NFaultPlatform& p, NFile&, int i) {
         return p.CreateFolder(Path("create" + std::to_string(i)), NFileSecurity::kDefault);
       },
       [&] { return !Exists("create2"); }},
      {NFaultKind::kRemoveFolder, "remove folder",
       [&](NFaultPlatform& p, NFile&, int i) {
         std::filesystem::create_directory(Native("remove" + std::to_string(i)));
         return p.RemoveFolder(Path("remove" + std::to_string(i)));
       },
       [&] { return Exists("remove2"); }},
      {NFaultKind::kListFolder, "list folder",
       [&](NFaultPlatform& p, NFile&, int) {
         std::vector<NFolderEntry> entries;
         return p.ListFolder(m_folder.u16string(), &entries);
       },
       nullptr},
  };
  ASSERT_EQ(std::size(rows), kFaultKindCount) << "every kind has a row";

  for (const Row& row : rows) {
    SCOPED_TRACE(row.operation);
    WriteText("data", "0123456789");
    NFaultPlatform faults(NPlatform::Default());
    auto file = Open(faults, Path("data"));
    ASSERT_TRUE(file);
    const int before = faults.CallCount(row.kind);
    faults.FailNth(row.kind, 2, kInjectedError);

    EXPECT_TRUE(row.call(faults, *file, 1).IsOk());
    EXPECT_FALSE(faults.Fired());
    const NStatus failed = row.call(faults, *file, 2);
    EXPECT_EQ(failed.Code(), kInjectedError);
    EXPECT_EQ(failed.Operation(), row.operation);
    EXPECT_FALSE(failed.Path().empty());
    EXPECT_TRUE(faults.Fired());
    if (row.untouched) {
      EXPECT_TRUE(row.untouched()) << "the failed call reached the real platform";
    }
    EXPECT_TRUE(row.call(faults, *file, 3).IsOk()) << "a fault that is not sticky fails one call";
    EXPECT_EQ(faults.CallCount(row.kind), before + 3);
  }
}

TEST_F(NFaultPlatformTest, StickyFaultFailsEveryLaterCallOfItsKindUntilReset) {
  NFaultPlatform faults(NPlatform::Default());
  auto file = Open(faults, Path("data"));
  ASSERT_TRUE(file);
  faults.FailNth(NFaultKind::kSync, 2, NStatus::kDiskFull, true);

  EXPECT_TRUE(file->Sync().IsOk());
  for (int call = 2; call <= 4; ++call) EXPECT_EQ(file->Sync().Code(), NStatus::kDiskFull) << "call " << call;
  NFileInfo info;
  EXPECT_TRUE(file->GetInfo(&info).IsOk()) << "other kinds go on working";
  EXPECT_EQ(faults.CallCount(NFaultKind::kSync), 4);
  EXPECT_EQ(faults.TotalCalls(), 6);  // the open, four syncs, one stat

  faults.Reset();
  EXPECT_FALSE(faults.Fired());
  EXPECT_EQ(faults.TotalCalls(), 0);
  EXPECT_EQ(faults.CallCount(NFaultKind::kSync), 0);
  EXPECT_TRUE(file->Sync().IsOk());
}

TEST_F(NFaultPlatformTest, FailNthOfAnyReachesEveryCallOfAnOperationInTurn) {
  // Writes a file under a temporary name and moves it into place.
  const auto save = [&](NPlatform& platform) {
    std::unique_ptr<NFile> file;
    NStatus status = platform.OpenFile(
        Path("saved.tmp"), {.mode = NOpenMode::kCreateAlways, .access = NFileAccess::kReadWrite}, &file);
    if (status) status = file->Write(0, "hello", 5);
    if (status) status = file->Sync();
    file.reset();
    if (status) status = platform.MoveFile(Path("saved.tmp"), Path("saved"));
    return status;
  };

  std::vector<std::string> failedOperations;
  for (int n = 1; n <= 10; ++n) {
    NFaultPlatform faults(NPlatform::Default());
    faults.FailNthOfAny(n, NStatus::kDiskFull);
    const NStatus status = save(faults);
    if (!faults.Fired()) {
      EXPECT_TRUE(status.IsOk()) << Describe(status);
      EXPECT_EQ(faults.TotalCalls(), 4);
      EXPECT_EQ(faults.CallCount(NFaultKind::kWrite), 1);
      break;
    }
    EXPECT_EQ(status.Code(), NStatus::kDiskFull) << "call " << n;
    EXPECT_FALSE(Exists("saved")) << "call " << n;
    failedOperations.push_back(status.Operation());
  }
  EXPECT_EQ(failedOperations, (std::vector<std::string>{"open", "write", "sync", "move"}));
  EXPECT_EQ(ReadText("saved"), "hello");
}

TEST_F(NFaultPlatformTest, ShortWriteWritesTheFirstHalfBeforeFailing) {
  NFaultPlatform faults(NPlatform::Default());
  auto file = Open(faults, Path("data"));
  ASSERT_TRUE(file);
  faults.FailNth(NFaultKind::kWrite, 1, {.error = NStatus::kDiskFull, .shortWrite = true});

  EXPECT_EQ(file->Write(2, "abcdefghij", 10).Code(), NStatus::kDiskFull);
  EXPECT_EQ(ReadText("data"), std::string("\0\0abcde", 7));
  EXPECT_TRUE(file->Write(0, "xy", 2).IsOk());
  EXPECT_EQ(ReadText("data"), "xyabcde");
}

TEST_F(NFaultPlatformTest, CallsFromManyThreadsAreCountedOnceEachAndFailOnce) {
  constexpr int kThreads = 4;
  constexpr int kCallsPerThread = 5000;
  NFaultPlatform faults(NPlatform::Default());
  std::vector<std::unique_ptr<NFile>> files;
  for (int i = 0; i < kThreads; ++i) files.push_back(Open(faults, Path("data")));
  faults.FailNth(NFaultKind::kGetInfo, 10000, kInjectedError);

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
  EXPECT_EQ(faults.CallCount(NFaultKind::kGetInfo), kThreads * kCallsPerThread);
}

// ---- NWindowsLockPlatform --------------------------------------------------

class NWindowsLockPlatformTest : public TestPlatformsTest {
 protected:
  std::unique_ptr<NFile> OpenLocked(const std::string& name, NFileAccess access = NFileAccess::kReadWrite,
                                    unsigned share = kShareAll) {
    return Open(m_locks, Path(name), access, share);
  }

  NWindowsLockPlatform m_locks{NPlatform::Default()};
};

enum class Io { kRead, kWrite, kTruncate, kReserve };

TEST_F(NWindowsLockPlatformTest, IoThroughAHandleObeysTheLocksOfEveryHandle) {
  // The holder locks [4, 8) of a 6-byte file.
  const struct {
    const char* name;
    bool sameHandle;
    NLockKind held;
    Io io;
    std::uint64_t offset;  // Truncate and Reserve: the length
    std::uint64_t size;
    std::uint32_t expected;
  } rows[] = {
      {"read_other_exclusive", false, NLockKind::kExclusive, Io::kRead, 2, 4, NStatus::kLockViolation},
      {"read_before_other_exclusive", false, NLockKind::kExclusive, Io::kRead, 0, 4, 0},
      {"read_other_shared", false, NLockKind::kShared, Io::kRead, 2, 4, 0},
      {"read_own_exclusive", true, NLockKind::kExclusive, Io::kRead, 2, 4, 0},
      {"write_other_shared", false, NLockKind::kShared, Io::kWrite, 7, 1, NStatus::kLockViolation},
      {"write_other_exclusive", false, NLockKind::kExclusive, Io::kWrite, 3, 2, NStatus::kLockViolation},
      {"write_after_other_exclusive", false, NLockKind::kExclusive, Io::kWrite, 8, 1, 0},
      {"write_own_shared", true, NLockKind::kShared, Io::kWrite, 5, 1, NStatus::kLockViolation},
      {"write_own_exclusive", true, NLockKind::kExclusive, Io::kWrite, 5, 1, 0},
      {"truncate_into_other_shared", false, NLockKind::kShared, Io::kTruncate, 5, 0, NStatus::kLockViolation},
      {"truncate_past_other_exclusive", false, NLockKind::kExclusive, Io::kTruncate, 8, 0, 0},
      {"truncate_into_own_shared", true, NLockKind::kShared, Io::kTruncate, 2, 0, NStatus::kLockViolation},
      {"truncate_into_own_exclusive", true, NLockKind::kExclusive, Io::kTruncate, 2, 0, 0},
      {"reserve_over_other_shared", false, NLockKind::kShared, Io::kReserve, 64, 0, NStatus::kLockViolation},
      {"reserve_within_length", false, NLockKind::kExclusive, Io::kReserve, 4, 0, 0},
      {"reserve_over_own_exclusive", true, NLockKind::kExclusive, Io::kReserve, 64, 0, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    WriteText(row.name, "012345");
    auto holder = OpenLocked(row.name);
    auto other = OpenLocked(row.name);
    ASSERT_TRUE(holder && other);
    ASSERT_TRUE(holder->Lock(4, 4, row.held, 0ms).IsOk());
    NFile& actor = row.sameHandle ? *holder : *other;

    NStatus status;
    switch (row.io) {
      case Io::kRead: {
        char buffer[8];
        std::size_t read = 0;
        status = actor.Read(row.offset, buffer, row.size, &read);
        break;
      }
      case Io::kWrite:
        status = actor.Write(row.offset, "xxxxxxxx", row.size);
        break;
      case Io::kTruncate:
        status = actor.Truncate(row.offset);
        break;
      case Io::kReserve:
        status = actor.Reserve(row.offset);
        break;
    }
    EXPECT_EQ(status.Code(), row.expected) << Describe(status);
    if (row.expected != 0) {
      EXPECT_EQ(status.Path(), Path(row.name));
      EXPECT_EQ(ReadText(row.name), "012345") << "a refused call changed the file";
    }
  }
}

TEST_F(NWindowsLockPlatformTest, LockRequestsConflictAcrossHandlesAndWithinOne) {
  // The holder locks [4, 8); the request is for [6, 10) unless disjoint.
  const struct {
    const char* name;
    bool sameHandle;
    NLockKind held;
    NLockKind wanted;
    bool disjoint;
    std::uint32_t expected;
  } rows[] = {
      {"other_exclusive_then_shared", false, NLockKind::kExclusive, NLockKind::kShared, false, NStatus::kWaitTimeout},
      {"other_exclusive_then_exclusive", false, NLockKind::kExclusive, NLockKind::kExclusive, false,
       NStatus::kWaitTimeout},
      {"other_shared_then_exclusive", false, NLockKind::kShared, NLockKind::kExclusive, false, NStatus::kWaitTimeout},
      {"other_shared_then_shared", false, NLockKind::kShared, NLockKind::kShared, false, 0},
      {"other_exclusive_then_disjoint", false, NLockKind::kExclusive, NLockKind::kExclusive, true, 0},
      {"own_shared_then_shared", true, NLockKind::kShared, NLockKind::kShared, false, 0},
      {"own_shared_then_exclusive", true, NLockKind::kShared, NLockKind::kExclusive, false, NStatus::kLockViolation},
      {"own_exclusive_then_exclusive", true, NLockKind::kExclusive, NLockKind::kExclusive, false,
       NStatus::kLockViolation},
      {"own_exclusive_then_shared", true, NLockKind::kExclusive, NLockKind::kShared, false, NStatus::kLockViolation},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    auto holder = OpenLocked(row.name);
    auto other = OpenLocked(row.name);
    ASSERT_TRUE(holder && other);
    ASSERT_TRUE(holder->Lock(4, 4, row.held, 0ms).IsOk());
    NFile& requester = row.sameHandle ? *holder : *other;

    // A handle refused by its own lock must hear so at once, not at the end of the wait.
    const auto timeout = row.sameHandle ? 5s : kShortWait;
    const auto start = Clock::now();
    const NStatus status = requester.Lock(row.disjoint ? 8 : 6, 4, row.wanted, timeout);
    EXPECT_EQ(status.Code(), row.expected) << Describe(status);
    if (row.sameHandle) {
      EXPECT_LT(Clock::now() - start, 1s);
    }
  }
}

TEST_F(NWindowsLockPlatformTest, StackedSharedLocksOfOneHandleNeedOneUnlockEach) {
  auto holder = OpenLocked("data");
  auto other = OpenLocked("data");
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kShared, 0ms).IsOk());
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kShared, 0ms).IsOk());

  ASSERT_TRUE(holder->Unlock(0, 4).IsOk());
  EXPECT_EQ(other->Lock(0, 4, NLockKind::kExclusive, 0ms).Code(), NStatus::kWaitTimeout) << "one lock is left";
  auto outsider = Open(NPlatform::Default(), Path("data"));
  ASSERT_TRUE(outsider);
  EXPECT_EQ(outsider->Lock(0, 4, NLockKind::kExclusive, 0ms).Code(), NStatus::kWaitTimeout)
      << "the lock left is still held on the real file";
  ASSERT_TRUE(holder->Unlock(0, 4).IsOk());
  EXPECT_TRUE(other->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  EXPECT_EQ(holder->Unlock(0, 4).Code(), NWindowsLockPlatform::kNotLocked);
}

TEST_F(NWindowsLockPlatformTest, UnlockMustNameExactlyARangeThatTheHandleLocked) {
  auto holder = OpenLocked("data");
  auto other = OpenLocked("data");
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(4, 4, NLockKind::kExclusive, 0ms).IsOk());

  const struct {
    const char* name;
    NFile* handle;
    std::uint64_t offset;
    std::uint64_t length;
  } refused[] = {
      {"never_locked", holder.get(), 0, 4},
      {"part_of_the_lock", holder.get(), 4, 2},
      {"more_than_the_lock", holder.get(), 4, 8},
      {"lock_of_another_handle", other.get(), 4, 4},
  };
  for (const auto& row : refused) {
    const NStatus status = row.handle->Unlock(row.offset, row.length);
    EXPECT_EQ(status.Code(), NWindowsLockPlatform::kNotLocked) << row.name << ": " << Describe(status);
  }
  EXPECT_EQ(other->Lock(4, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout) << "the lock survived";

  EXPECT_TRUE(holder->Unlock(4, 4).IsOk());
  EXPECT_EQ(holder->Unlock(4, 4).Code(), NWindowsLockPlatform::kNotLocked) << "unlocked twice";
}

TEST_F(NWindowsLockPlatformTest, DestroyingAHandleReleasesItsLocks) {
  auto holder = OpenLocked("data");
  auto other = OpenLocked("data");
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  ASSERT_TRUE(holder->Lock(10, 4, NLockKind::kShared, 0ms).IsOk());
  ASSERT_EQ(other->Lock(0, 4, NLockKind::kExclusive, 0ms).Code(), NStatus::kWaitTimeout);

  holder.reset();
  EXPECT_TRUE(other->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  EXPECT_TRUE(other->Lock(10, 4, NLockKind::kExclusive, 0ms).IsOk());
}

TEST_F(NWindowsLockPlatformTest, BlockedLockGivesUpAtTheEndOfAFiniteWait) {
  auto holder = OpenLocked("data");
  auto other = OpenLocked("data");
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());

  const auto start = Clock::now();
  const NStatus status = other->Lock(0, 4, NLockKind::kExclusive, 50ms);
  const auto waited = Clock::now() - start;
  EXPECT_EQ(status.Code(), NStatus::kWaitTimeout) << Describe(status);
  EXPECT_EQ(status.Path(), Path("data"));
  EXPECT_GE(waited, 45ms) << "gave up early";
  EXPECT_LT(waited, 2s);
}

TEST_F(NWindowsLockPlatformTest, LockWaitingForeverIsGrantedWhenAnotherThreadUnlocks) {
  auto holder = OpenLocked("data");
  auto other = OpenLocked("data");
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());

  std::atomic<bool> returned{false};
  NStatus status;
  std::thread waiter([&] {
    status = other->Lock(0, 4, NLockKind::kExclusive, NFile::kWaitForever);
    returned = true;
  });
  std::this_thread::sleep_for(50ms);
  EXPECT_FALSE(returned) << "granted while the range was still locked";
  EXPECT_TRUE(holder->Unlock(0, 4).IsOk());
  waiter.join();
  EXPECT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(holder->Lock(0, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout) << "the waiter holds it";
}

TEST_F(NWindowsLockPlatformTest, LocksAlsoReachTheRealFile) {
  auto holder = OpenLocked("data");
  auto outsider = Open(NPlatform::Default(), Path("data"));
  ASSERT_TRUE(holder && outsider);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  EXPECT_EQ(outsider->Lock(0, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout);

  ASSERT_TRUE(holder->Unlock(0, 4).IsOk());
  EXPECT_TRUE(outsider->Lock(0, 4, NLockKind::kShared, 0ms).IsOk());
}

TEST_F(NWindowsLockPlatformTest, ShareModesOfOpenHandlesAndOfTheNewOneMustAllowEachOther) {
  constexpr auto kRead = NFileAccess::kRead;
  constexpr auto kReadWrite = NFileAccess::kReadWrite;
  const struct {
    const char* name;
    NFileAccess firstAccess;
    unsigned firstShare;
    NFileAccess secondAccess;
    unsigned secondShare;
    bool allowed;
  } rows[] = {
      {"reader_beside_writer_sharing_reads", kReadWrite, kShareRead, kRead, kShareAll, true},
      {"writer_beside_writer_sharing_reads", kReadWrite, kShareRead, kReadWrite, kShareAll, false},
      {"reader_beside_reader_sharing_nothing", kRead, kShareNone, kRead, kShareAll, false},
      {"reader_beside_reader_sharing_writes_only", kRead, kShareWrite, kRead, kShareAll, false},
      {"reader_sharing_reads_beside_writer", kReadWrite, kShareAll, kRead, kShareRead, false},
      {"reader_sharing_reads_beside_reader", kRead, kShareAll, kRead, kShareRead, true},
      {"writer_sharing_reads_and_writes", kReadWrite, kShareRead | kShareWrite, kReadWrite, kShareRead | kShareWrite,
       true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    auto first = OpenLocked(row.name, row.firstAccess, row.firstShare);
    ASSERT_TRUE(first);
    std::unique_ptr<NFile> second;
    const NStatus status =
        m_locks.OpenFile(Path(row.name), {.access = row.secondAccess, .share = row.secondShare}, &second);
    if (row.allowed) {
      EXPECT_TRUE(status.IsOk()) << Describe(status);
      continue;
    }
    EXPECT_EQ(status.Code(), NStatus::kSharingViolation) << Describe(status);
    EXPECT_EQ(status.Path(), Path(row.name));
    first.reset();
    EXPECT_TRUE(m_locks.OpenFile(Path(row.name), {.access = row.secondAccess, .share = row.secondShare}, &second))
        << "closing the first handle ends its share mode";
  }
}

TEST_F(NWindowsLockPlatformTest, RefusedCreateAlwaysLeavesTheFileAsItWas) {
  WriteText("data", "content");
  auto first = OpenLocked("data", NFileAccess::kRead, kShareRead);
  ASSERT_TRUE(first);
  std::unique_ptr<NFile> second;
  const NOpenOptions recreate{.mode = NOpenMode::kCreateAlways, .access = NFileAccess::kReadWrite};
  EXPECT_EQ(m_locks.OpenFile(Path("data"), recreate, &second).Code(), NStatus::kSharingViolation);
  EXPECT_EQ(ReadText("data"), "content");

  first.reset();
  EXPECT_TRUE(m_locks.OpenFile(Path("data"), recreate, &second));
  EXPECT_EQ(ReadText("data"), "");
}

TEST_F(NWindowsLockPlatformTest, DeletingOrMovingAnOpenFileNeedsShareDelete) {
  const struct {
    const char* name;
    unsigned share;
    bool allowed;
  } rows[] = {
      {"shared_for_delete", kShareAll, true},
      {"not_shared_for_delete", kShareRead | kShareWrite, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string moved = std::string(row.name) + ".moved";
    WriteText(row.name, "x");
    auto file = OpenLocked(row.name, NFileAccess::kRead, row.share);
    ASSERT_TRUE(file);

    const NStatus move = m_locks.MoveFile(Path(row.name), Path(moved));
    EXPECT_EQ(move.Code(), row.allowed ? 0 : NStatus::kSharingViolation) << Describe(move);
    EXPECT_EQ(Exists(moved), row.allowed);
    const std::string current = row.allowed ? moved : row.name;
    const NStatus remove = m_locks.DeleteFile(Path(current));
    EXPECT_EQ(remove.Code(), row.allowed ? 0 : NStatus::kSharingViolation) << Describe(remove);
    // Older Windows, FAT volumes and Wine keep the name of a file deleted
    // while open until its last handle closes.
    file.reset();
    EXPECT_EQ(Exists(current), !row.allowed);
  }
}

TEST_F(NWindowsLockPlatformTest, HandlesOfOneFileMeetWhateverPathOpenedThem) {
  WriteText("data", "x");
  auto first = OpenLocked("data", NFileAccess::kReadWrite, kShareNone);
  ASSERT_TRUE(first);
  std::unique_ptr<NFile> second;
  const std::u16string otherSpelling = (m_folder / "." / "data").u16string();
  EXPECT_EQ(m_locks.OpenFile(otherSpelling, {.access = NFileAccess::kRead}, &second).Code(),
            NStatus::kSharingViolation);
}

}  // namespace
