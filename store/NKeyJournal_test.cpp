#include <gtest/gtest.h>

#include <iostream>
#include <random>
#include <string>

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#endif

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyFaultsFixture.h"
#include "store/NKeyJournal.h"

namespace {

using Outcome = NKeyJournal::Outcome;

constexpr int kMaxCalls = 200;

class NKeyJournalTest : public NIniFileKeyFaultsTest {
 protected:
  fs::path JournalOf(const fs::path& keyFile) const { return fs::path(keyFile.string() + "-journal"); }

  // Opens the key on the real platform, as the next process would, and
  // returns what settling its main file did.
  Outcome OpenAgain(const std::string& folder, bool withPrivate, NPlatform& platform = NPlatform::Default()) {
    auto store = MakeStore(folder, withPrivate, platform);
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    return key ? key->LoadReport(0).journal : Outcome::kNone;
  }

  // Leaves in `folder` the journal and the file that a save from `old` to
  // `fresh` leaves when it dies after `bytes` bytes of its new content.
  void DieMidWrite(const std::string& folder, const std::string& old, const std::string& fresh, std::size_t bytes) {
    NWriteFileBytes(MainFile(folder), old);
    NKeyJournal journal(NPlatform::Default(), Native(MainFile(folder)));
    ASSERT_TRUE(journal.Write(old, fresh, NFileSecurity::kDefault, false));
    NWriteFileBytes(MainFile(folder), fresh.substr(0, bytes));
  }
};

struct NStopCase {
  const char* name;
  bool withPrivate;
  bool forGood;  // every call from the failing one on fails, as in a process that died there
};
void PrintTo(const NStopCase& param, std::ostream* out) { *out << param.name; }

class NKeyJournalEachCallTest : public NKeyJournalTest, public testing::WithParamInterface<NStopCase> {};

// A save failing at each of its calls in turn, once or for good, leaves the
// old or the new bytes once the key is next opened, and no journal.
TEST_P(NKeyJournalEachCallTest, TheNextOpenFindsTheOldOrTheNewBytes) {
  const NStopCase& param = GetParam();
  const NKeyFiles old = OldFiles(param.withPrivate);
  const NKeyFiles fresh = NewFiles(old, param.withPrivate);
  std::string outcomes;
  int rolledBack = 0;
  int n = 1;
  for (; n <= kMaxCalls; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    WriteFiles("work", old, param.withPrivate);
    NFaultPlatform faults(NPlatform::Default());
    {
      auto store = MakeStore("work", param.withPrivate, faults);
      NReportMessageParams params;
      auto key = OpenKey(*store, params);
      ASSERT_TRUE(key) << params.GetText().ToUtf8();
      ChangeValues(*key);
      faults.FailNthOfAny(n, NFault{NStatus::kDiskFull, param.forGood, true});
      (void)key->Flush(params);
    }
    if (!faults.Fired()) break;
    rolledBack += OpenAgain("work", param.withPrivate) == Outcome::kRolledBack;
    const NKeyFiles after = ReadFiles("work", param.withPrivate);
    const bool mainNew = after.main == fresh.main;
    EXPECT_TRUE(mainNew || after.main == old.main) << Difference(after.main, fresh.main);
    outcomes += ' ' + std::to_string(n) + ':' + (mainNew ? 'N' : 'o');
    if (param.withPrivate) {
      const bool privateNew = after.personal == fresh.personal;
      EXPECT_TRUE(privateNew || after.personal == old.personal) << Difference(after.personal, fresh.personal);
      outcomes += privateNew ? 'N' : 'o';
    }
    EXPECT_FALSE(fs::exists(JournalOf(MainFile("work"))));
    if (param.withPrivate) {
      EXPECT_FALSE(fs::exists(JournalOf(PrivateFile("work"))));
    }
  }
  ASSERT_LE(n, kMaxCalls) << "the fault kept firing";
  if (param.forGood) {
    EXPECT_GT(rolledBack, 0) << "no stop landed between the cut and the end of the write";
  }
  std::cout << "[ outcomes ] " << param.name << " (o: old, N: new):" << outcomes << "\n";
}

INSTANTIATE_TEST_SUITE_P(Stops, NKeyJournalEachCallTest,
                         testing::Values(NStopCase{"Once", false, false}, NStopCase{"ForGood", false, true},
                                         NStopCase{"PrivateOnce", true, false},
                                         NStopCase{"PrivateForGood", true, true}),
                         [](const testing::TestParamInfo<NStopCase>& stop) { return stop.param.name; });

// What a journal found beside a key file says, and what opening the key does
// with it: a completed save costs no write, an interrupted one is rolled
// back, and a journal cut short is dropped with the file as it stands.
TEST_F(NKeyJournalTest, AnOpenSettlesTheJournalItFinds) {
  const NKeyFiles old = OldFiles(false);
  const NKeyFiles fresh = NewFiles(old, false);
  struct Row {
    const char* name;
    std::size_t written;     // bytes of the new content on disk when the save died
    std::size_t journalCut;  // bytes of the journal left, 0 for all of it
    Outcome outcome;
    const std::string* expected;
  } rows[] = {
      {"the new bytes complete", fresh.main.size(), 0, Outcome::kCompleted, &fresh.main},
      {"cut before the write", 0, 0, Outcome::kRolledBack, &old.main},
      {"half written", fresh.main.size() / 2, 0, Outcome::kRolledBack, &old.main},
      {"all but the last byte", fresh.main.size() - 1, 0, Outcome::kRolledBack, &old.main},
      {"a torn journal header", old.main.size(), 20, Outcome::kDamaged, &old.main},
      {"a torn journal body", old.main.size(), 100, Outcome::kDamaged, &old.main},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    if (row.journalCut == 0) {
      DieMidWrite("work", old.main, fresh.main, row.written);
    } else {
      NWriteFileBytes(MainFile("work"), old.main);
      NKeyJournal journal(NPlatform::Default(), Native(MainFile("work")));
      ASSERT_TRUE(journal.Write(old.main, fresh.main, NFileSecurity::kDefault, false));
      fs::resize_file(JournalOf(MainFile("work")), row.journalCut);
    }
    NFaultPlatform counting(NPlatform::Default());
    EXPECT_EQ(OpenAgain("work", false, counting), row.outcome);
    EXPECT_EQ(ReadFiles("work", false).main, *row.expected);
    EXPECT_FALSE(fs::exists(JournalOf(MainFile("work"))));
    if (row.outcome != Outcome::kRolledBack) {
      EXPECT_EQ(counting.CallCount(NFaultKind::kWrite), 0);
    }
  }
}

// A reader that cannot take the exclusive lock reads the old bytes from the
// journal and leaves it; the next save settles it before its own change.
TEST_F(NKeyJournalTest, AReaderThatCannotSettleReadsTheOldBytesAndASaveSettlesLater) {
  const NKeyFiles old = OldFiles(false);
  const NKeyFiles fresh = NewFiles(old, false);
  DieMidWrite("work", old.main, fresh.main, fresh.main.size() / 3);
  std::string oldDump;
  {
    auto store = MakeStore("old", false, NPlatform::Default());
    NReportMessageParams params;
    oldDump = Dump(*OpenKey(*store, params));
  }

  auto store = MakeStore("work", false, NPlatform::Default());
  NReportMessageParams params;
  std::unique_ptr<NFile> other;
  NOpenOptions options;
  ASSERT_TRUE(NPlatform::Default().OpenFile(Native(MainFile("work")), options, &other));
  ASSERT_TRUE(other->Lock(0, 4, NLockKind::kShared, std::chrono::milliseconds::zero()));
  auto key = OpenKey(*store, params);
  ASSERT_TRUE(key) << params.GetText().ToUtf8();
  EXPECT_EQ(key->LoadReport(0).journal, Outcome::kReadOld);
  EXPECT_EQ(Dump(*key), oldDump);
  EXPECT_TRUE(fs::exists(JournalOf(MainFile("work"))));
  ASSERT_TRUE(other->Unlock(0, 4));
  other.reset();

  ASSERT_TRUE(key->SetDwordValue(u"Port", 3333));
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(fs::exists(JournalOf(MainFile("work"))));
  auto again = OpenKey(*store, params);
  std::uint32_t port = 0;
  EXPECT_TRUE(again->GetDwordValue(u"Port", &port));
  EXPECT_EQ(port, 3333u);
  NUnicodeString password;
  EXPECT_TRUE(again->GetStringValue(u"Password", &password));
  EXPECT_EQ(password, u"old secret") << "the save started from the rolled-back bytes";
}

// A journal whose key file is gone (deleted by a program that knows nothing
// of journals) makes no key: nothing lists it, finds it or settles it.
TEST_F(NKeyJournalTest, AJournalWithoutItsKeyFileIsNoKey) {
  const NKeyFiles old = OldFiles(false);
  DieMidWrite("work", old.main, NewFiles(old, false).main, 10);
  fs::remove(MainFile("work"));
  auto store = MakeStore("work", false, NPlatform::Default());
  NReportMessageParams params;
  NKeyPath sessions;
  ASSERT_TRUE(sessions.Append(u"Sessions"));
  auto folder = NIniFileKey::Open(*store, sessions, true, params);
  ASSERT_TRUE(folder) << params.GetText().ToUtf8();
  EXPECT_FALSE(folder->SubKeyExists(u"lab"));
  NUnicodeString name;
  std::uint32_t kind = 0;
  EXPECT_FALSE(folder->CreateIterator(false)->Next(&name, &kind)) << name.ToUtf8();
  auto key = OpenKey(*store, params);
  ASSERT_TRUE(key);
  EXPECT_EQ(Dump(*key), "");
  EXPECT_TRUE(fs::exists(JournalOf(MainFile("work"))));
}

#ifndef _WIN32
// A real process saving a large key in a loop, killed with SIGKILL at
// random moments: after every kill the next open finds one of the two
// images the loop alternates between, byte for byte.
TEST_F(NKeyJournalTest, SigkillAtRandomMomentsNeverLeavesAnythingButOldOrNew) {
  constexpr int kKills = 1000;
  constexpr auto kBudget = std::chrono::seconds(60);
  auto imageOf = [&](const std::string& folder, char fill) {
    EmptyFolder(folder);
    auto store = MakeStore(folder, false, NPlatform::Default());
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    EXPECT_TRUE(key->SetStringValue(u"Blob", NUnicodeString::FromUtf8(std::string(25'000, fill))));
    EXPECT_TRUE(key->Flush(params));
    return ReadFiles(folder, false).main;
  };
  const std::string imageA = imageOf("a", 'a');
  const std::string imageB = imageOf("b", 'b');
  NWriteFileBytes(MainFile("work"), imageA);

  std::mt19937 random(12345);
  const auto started = std::chrono::steady_clock::now();
  int kills = 0, midSave = 0, damaged = 0;
  for (; kills < kKills && std::chrono::steady_clock::now() - started < kBudget; ++kills) {
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
      // No flush to disk: a kill loses nothing that a flush would keep, and
      // more kills land inside a save.
      NIniFileStoreOptions options;
      options.syncOnSave = false;
      NIniFileStore store(Native(Root("work")), NUnicodeString(), NPlatform::Default(), options);
      NKeyPath path;
      (void)path.Append(kKeyName);
      for (char fill = 'a';; fill = fill == 'a' ? 'b' : 'a') {
        NReportMessageParams params;
        auto key = NIniFileKey::Open(store, path, false, params);
        if (!key || !key->SetStringValue(u"Blob", NUnicodeString::FromUtf8(std::string(25'000, fill))) ||
            !key->Flush(params)) {
          ::_exit(3);
        }
      }
    }
    std::this_thread::sleep_for(std::chrono::microseconds(std::uniform_int_distribution<int>(200, 3000)(random)));
    ::kill(child, SIGKILL);
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the saving child stopped by itself";
    midSave += fs::exists(JournalOf(MainFile("work")));
    (void)OpenAgain("work", false);
    const std::string after = NReadFileBytes(MainFile("work"));
    damaged += after != imageA && after != imageB;
  }
  std::cout << "[ kills    ] " << kills << " kills, " << midSave << " inside a save, " << damaged << " damaged\n";
  EXPECT_EQ(damaged, 0);
  EXPECT_GE(kills, 100) << "too few kills within the time bound to mean anything";
  EXPECT_GT(midSave, 0) << "no kill landed inside a save";
}
#endif

}  // namespace
