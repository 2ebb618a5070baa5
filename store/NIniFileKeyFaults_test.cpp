#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "location/NReportMessageParams.h"
#include "platform/NForwardingPlatform.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "platform/testing/NWindowsLockPlatform.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyFixture.h"
#include "store/NIniFileStore.h"
#include "store/NTextFile.h"

namespace {

using namespace std::chrono_literals;

// A load or save of one key makes far fewer calls: a loop reaching this never ends.
constexpr int kMaxCalls = 200;
constexpr std::uint32_t kPlainError = 5;  // ERROR_ACCESS_DENIED

// ---- One failing call at a time ---------------------------------------------

struct NFaultCase {
  const char* name;
  bool withPrivate;
  NFault fault;  // sticky: every call from the failing one on fails, as in a process that died there
  // After a failed save, the key is dropped and opened again, as by the next
  // process; else the same key saves again.
  bool reopen;
};

// Names the case in failure messages instead of dumping its bytes.
void PrintTo(const NFaultCase& param, std::ostream* out) { *out << param.name; }

class NIniFileKeyEachSaveCallTest : public NIniFileKeyFaultsTest, public testing::WithParamInterface<NFaultCase> {};
class NIniFileKeyEachLoadCallTest : public NIniFileKeyEachSaveCallTest {};

// A failed save leaves the old or the new bytes: at once, when the key
// saves again; once the key is next opened, with no journal left.
TEST_P(NIniFileKeyEachSaveCallTest, FailingAtAnyCallLeavesOldOrNewFilesAndASecondSaveCompletesIt) {
  const NFaultCase& param = GetParam();
  const bool withPrivate = param.withPrivate;
  const NKeyFiles old = OldFiles(withPrivate);
  const NKeyFiles fresh = NewFiles(old, withPrivate);
  ASSERT_NE(old.main, fresh.main);
  if (withPrivate) {
    ASSERT_NE(old.personal, fresh.personal);
    ASSERT_NE(old.personal.find("old secret"), std::string::npos) << "the private file holds the personal values";
  }

  const std::string allNew = withPrivate ? "NN" : "N";
  std::string outcomes;  // per failing call: main file old or new, then the private one
  int rolledBack = 0;
  int n = 1;
  for (; n <= kMaxCalls; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    WriteFiles("work", old, withPrivate);
    NFaultPlatform faults(NPlatform::Default());
    auto store = MakeStore("work", withPrivate, faults);
    auto key = OpenKey(*store);
    ASSERT_TRUE(key);
    ChangeValues(*key);
    faults.FailNthOfAny(n, param.fault);
    NReportMessageParams params;
    const bool saved = key->Flush(params);
    const bool fired = faults.Fired();
    EXPECT_EQ(saved, !fired);
    if (!fired) {
      EXPECT_EQ(OldOrNew(ReadFiles("work", withPrivate), old, fresh, withPrivate), allNew);
      break;
    }
    if (param.reopen) {
      key.reset();
      store.reset();
      rolledBack += OpenAgain("work", withPrivate) == NKeyJournal::Outcome::kRolledBack;
      EXPECT_FALSE(fs::exists(JournalOf(MainFile("work"))));
      EXPECT_FALSE(fs::exists(JournalOf(PrivateFile("work"))));
    }
    outcomes += ' ' + std::to_string(n) + ':' + OldOrNew(ReadFiles("work", withPrivate), old, fresh, withPrivate);

    if (!saved && !param.reopen) {
      ExpectNamesAFile(params, "work", withPrivate);
      EXPECT_TRUE(key->IsModified());
      faults.Reset();
      NReportMessageParams again;
      EXPECT_TRUE(key->Flush(again)) << again.GetText().ToUtf8();
      EXPECT_EQ(OldOrNew(ReadFiles("work", withPrivate), old, fresh, withPrivate), allNew) << "saved again";
    }
  }
  ASSERT_LE(n, kMaxCalls) << "the fault kept firing";
  // Open, lock, stat, read, reserve, truncate, write, sync and unlock at least.
  EXPECT_GT(n, 9);
  if (param.fault.sticky) {
    EXPECT_GT(rolledBack, 0) << "no stop landed between the cut and the end of the write";
  }
  std::cout << "[ outcomes ] " << param.name << ", failing call:main" << (withPrivate ? "+private" : "")
            << " file (o: old, N: new):" << outcomes << "\n";
}

TEST_P(NIniFileKeyEachLoadCallTest, FailingAtAnyCallReportsItOrLoadsEverything) {
  const NFaultCase& param = GetParam();
  const bool withPrivate = param.withPrivate;
  const NKeyFiles files = NewFiles(OldFiles(withPrivate), withPrivate);
  ASSERT_GT(files.main.size(), 2 * NTextFile::kBlockSize) << "the load must take several reads";
  WriteFiles("work", files, withPrivate);
  const auto store = MakeStore("work", withPrivate, NPlatform::Default());
  const auto loaded = OpenKey(*store);
  ASSERT_TRUE(loaded);
  const std::string expected = Dump(*loaded);
  ASSERT_NE(expected.find("new secret"), std::string::npos);

  int n = 1;
  for (; n <= kMaxCalls; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    NFaultPlatform faults(NPlatform::Default());
    auto failing = MakeStore("work", withPrivate, faults);
    faults.FailNthOfAny(n, param.fault);
    NReportMessageParams params;
    auto key = OpenKey(*failing, params);
    const bool fired = faults.Fired();
    if (key) {
      EXPECT_EQ(Dump(*key), expected) << "a partial load";
    } else {
      EXPECT_TRUE(fired) << params.GetText().ToUtf8();
      ExpectNamesAFile(params, "work", withPrivate);
    }
    EXPECT_EQ(faults.CallCount(NFaultKind::kWrite) + faults.CallCount(NFaultKind::kTruncate), 0);
    if (!fired) {
      EXPECT_TRUE(key);
      break;
    }
  }
  ASSERT_LE(n, kMaxCalls) << "the fault kept firing";
  EXPECT_GT(n, 4);  // open, lock, stat, read and unlock at least
}

constexpr NFault kFullDisk{.error = NStatus::kDiskFull, .shortWrite = true};
constexpr NFault kFullDiskForGood{.error = NStatus::kDiskFull, .sticky = true, .shortWrite = true};
const NFaultCase kFaultCases[] = {
    {"PlainError", false, {.error = kPlainError}, false},
    {"FullDiskShortWrite", false, kFullDisk, false},
    {"FullDiskForGood", false, kFullDiskForGood, true},
    {"PrivatePlainError", true, {.error = kPlainError}, false},
    {"PrivateFullDiskShortWrite", true, kFullDisk, false},
    {"PrivateFullDiskForGood", true, kFullDiskForGood, true},
    // For saves alone: how a failed load goes on does not depend on it.
    {"FullDiskReopened", false, kFullDisk, true},
    {"PrivateFullDiskReopened", true, kFullDisk, true},
};
std::string CaseName(const testing::TestParamInfo<NFaultCase>& param) { return param.param.name; }

INSTANTIATE_TEST_SUITE_P(Faults, NIniFileKeyEachSaveCallTest, testing::ValuesIn(kFaultCases), CaseName);
INSTANTIATE_TEST_SUITE_P(Faults, NIniFileKeyEachLoadCallTest, testing::ValuesIn(kFaultCases, kFaultCases + 6),
                         CaseName);

// ---- A full disk ---------------------------------------------------------------

TEST_F(NIniFileKeyFaultsTest, FullDiskAtAnyReserveLeavesEveryFileWholeAndUncut) {
  struct NReserveCase {
    bool withPrivate;
    int failingReserve;  // 2: the private file's, after the main file's succeeded
  };
  for (const NReserveCase& c : {NReserveCase{false, 1}, NReserveCase{true, 1}, NReserveCase{true, 2}}) {
    SCOPED_TRACE("private " + std::to_string(c.withPrivate) + ", failing reserve " + std::to_string(c.failingReserve));
    const NKeyFiles old = OldFiles(c.withPrivate);
    EmptyFolder("work");
    WriteFiles("work", old, c.withPrivate);
    NFaultPlatform faults(NPlatform::Default());
    auto store = MakeStore("work", c.withPrivate, faults);
    auto key = OpenKey(*store);
    ASSERT_TRUE(key);
    ChangeValues(*key);
    faults.Reset();
    faults.FailNth(NFaultKind::kReserve, c.failingReserve, NStatus::kDiskFull, true);
    // The disk stays full: a second try fails the same way.
    for (int attempt = 0; attempt < 2; ++attempt) {
      NReportMessageParams params;
      EXPECT_FALSE(key->Flush(params));
      ExpectNamesAFile(params, "work", c.withPrivate);
    }
    EXPECT_GE(faults.CallCount(NFaultKind::kReserve), c.failingReserve);
    EXPECT_EQ(faults.CallCount(NFaultKind::kTruncate), 0);
    EXPECT_EQ(faults.CallCount(NFaultKind::kWrite), 0);
    const NKeyFiles after = ReadFiles("work", c.withPrivate);
    EXPECT_EQ(after.main, old.main) << Difference(after.main, old.main);
    EXPECT_EQ(after.personal, old.personal) << Difference(after.personal, old.personal);
  }
}

// ---- Windows lock rules --------------------------------------------------------

// Holds the first Write made through it after Arm until Release, so that
// another thread can act while a save holds its exclusive lock.
class NPausingPlatform final : public NForwardingPlatform {
 public:
  using NForwardingPlatform::NForwardingPlatform;

  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override {
    std::unique_ptr<NFile> opened;
    if (NStatus status = Target().OpenFile(path, options, &opened); !status) return status;
    *file = std::make_unique<NPausingFile>(*this, std::move(opened));
    return NStatus::Ok();
  }

  void Arm() {
    std::lock_guard lock(m_mutex);
    m_armed = true;
  }
  bool WaitUntilPaused() {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, 10s, [this] { return m_paused; });
  }
  void Release() {
    std::lock_guard lock(m_mutex);
    m_released = true;
    m_changed.notify_all();
  }

 private:
  class NPausingFile final : public NFile {
   public:
    NPausingFile(NPausingPlatform& platform, std::unique_ptr<NFile> file)
        : m_platform(platform), m_file(std::move(file)) {}
    NStatus Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) override {
      return m_file->Read(offset, buffer, size, bytesRead);
    }
    NStatus Write(std::uint64_t offset, const void* data, std::size_t size) override {
      m_platform.PauseIfArmed();
      return m_file->Write(offset, data, size);
    }
    NStatus Truncate(std::uint64_t length) override { return m_file->Truncate(length); }
    NStatus Reserve(std::uint64_t length) override { return m_file->Reserve(length); }
    NStatus Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind,
                 std::chrono::milliseconds timeout) override {
      return m_file->Lock(offset, length, kind, timeout);
    }
    NStatus Unlock(std::uint64_t offset, std::uint64_t length) override { return m_file->Unlock(offset, length); }
    NStatus GetInfo(NFileInfo* info) override { return m_file->GetInfo(info); }
    NStatus Sync() override { return m_file->Sync(); }

   private:
    NPausingPlatform& m_platform;
    std::unique_ptr<NFile> m_file;
  };

  void PauseIfArmed() {
    std::unique_lock lock(m_mutex);
    if (!m_armed) return;
    m_armed = false;
    m_paused = true;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_released; });
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_armed = false;
  bool m_paused = false;
  bool m_released = false;
};

class NIniFileKeyWindowsRulesTest : public NIniFileKeyFaultsTest {
 protected:
  NWindowsLockPlatform m_windows{NPlatform::Default()};
};

TEST_F(NIniFileKeyWindowsRulesTest, LoadSaveAndReloadFollowTheRulesWithAndWithoutAPrivateRoot) {
  for (const bool withPrivate : {false, true}) {
    SCOPED_TRACE(withPrivate ? "with a private root" : "without a private root");
    const NKeyFiles old = OldFiles(withPrivate);
    const NKeyFiles fresh = NewFiles(old, withPrivate);
    EmptyFolder("work");
    WriteFiles("work", old, withPrivate);
    auto store = MakeStore("work", withPrivate, m_windows);
    auto key = OpenKey(*store);
    ASSERT_TRUE(key);
    EXPECT_EQ(String(*key, u"Password"), u"old secret");

    NReportMessageParams params;
    ChangeValues(*key);
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    EXPECT_EQ(OldOrNew(ReadFiles("work", withPrivate), old, fresh, withPrivate), withPrivate ? "NN" : "N");

    const std::string saved = Dump(*key);
    ASSERT_TRUE(key->SetDwordValue(u"Port", 1));
    ASSERT_TRUE(key->Reload(params)) << params.GetText().ToUtf8();
    EXPECT_EQ(Dump(*key), saved);
    // A reload leaves no lock behind that would refuse the next save.
    ASSERT_TRUE(key->SetDwordValue(u"Port", 3));
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    EXPECT_NE(NReadFileBytes(MainFile("work")).find("D:\"Port\"=00000003"), std::string::npos);
  }
}

TEST_F(NIniFileKeyWindowsRulesTest, TwoKeysOfOneFileSavedInTurnMergeUnderTheRules) {
  for (const bool withPrivate : {false, true}) {
    SCOPED_TRACE(withPrivate ? "with a private root" : "without a private root");
    EmptyFolder("work");
    WriteFiles("work", OldFiles(withPrivate), withPrivate);
    auto store = MakeStore("work", withPrivate, m_windows);
    NReportMessageParams params;
    auto first = OpenKey(*store, params);
    auto second = OpenKey(*store, params);
    ASSERT_TRUE(first && second) << params.GetText().ToUtf8();
    ASSERT_TRUE(first->SetDwordValue(u"First", 1));
    ASSERT_TRUE(first->SetStringValue(u"Password", u"from first"));
    ASSERT_TRUE(first->Flush(params)) << params.GetText().ToUtf8();
    ASSERT_TRUE(second->SetDwordValue(u"Second", 2));
    ASSERT_TRUE(second->DeleteValue(u"Doomed"));
    ASSERT_TRUE(second->Flush(params)) << params.GetText().ToUtf8();

    auto reader = OpenKey(*store);
    ASSERT_TRUE(reader);
    EXPECT_EQ(Dword(*reader, u"First"), 1u);
    EXPECT_EQ(Dword(*reader, u"Second"), 2u);
    EXPECT_EQ(Dword(*reader, u"Doomed"), 0xDEADBEEFu) << "deleted";
    EXPECT_EQ(String(*reader, u"Password"), u"from first");
    EXPECT_EQ(Dump(*reader), Dump(*second)) << "the second writer holds the merged values";
  }
}

TEST_F(NIniFileKeyWindowsRulesTest, LoadWaitsForASaveHoldingTheLockAndSeesItsWholeContent) {
  const NKeyFiles old = OldFiles(false);
  const NKeyFiles fresh = NewFiles(old, false);
  WriteFiles("work", old, false);
  NPausingPlatform pausing(m_windows);
  NFaultPlatform counting(pausing);  // counts Lock calls, to know when the reader waits for one
  auto store = MakeStore("work", false, counting);
  auto writer = OpenKey(*store);
  ASSERT_TRUE(writer);
  ChangeValues(*writer);
  const std::string expected = Dump(*writer);

  pausing.Arm();
  std::atomic<bool> saved = false;
  NReportMessageParams writerParams;
  std::thread writerThread([&] { saved = writer->Flush(writerParams); });
  const bool paused = pausing.WaitUntilPaused();
  EXPECT_TRUE(paused) << "the save never wrote";

  std::atomic<bool> loaded = false;
  std::unique_ptr<NIniFileKey> reader;
  NReportMessageParams readerParams;
  std::thread readerThread;
  if (paused) {
    const int locksBefore = counting.CallCount(NFaultKind::kLock);
    readerThread = std::thread([&] {
      reader = OpenKey(*store, readerParams);
      loaded = true;
    });
    // Once the reader has asked for its lock, give it time to be wrongly granted.
    for (int waited = 0; waited < 10'000 && counting.CallCount(NFaultKind::kLock) == locksBefore; ++waited) {
      std::this_thread::sleep_for(1ms);
    }
    EXPECT_GT(counting.CallCount(NFaultKind::kLock), locksBefore);
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(loaded) << "a load went ahead while a save held the exclusive lock";
  }
  pausing.Release();
  writerThread.join();
  if (readerThread.joinable()) readerThread.join();

  EXPECT_TRUE(saved) << writerParams.GetText().ToUtf8();
  EXPECT_EQ(NReadFileBytes(MainFile("work")), fresh.main);
  ASSERT_TRUE(reader) << readerParams.GetText().ToUtf8();
  EXPECT_EQ(Dump(*reader), expected);
}

}  // namespace
