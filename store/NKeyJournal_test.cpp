#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyFixture.h"
#include "store/NKeyJournal.h"

namespace {

using Outcome = NKeyJournal::Outcome;

class NKeyJournalTest : public NIniFileKeyFaultsTest {
 protected:
  // Leaves in `folder` the journal and the file that a save from `old` to
  // `fresh` leaves when it dies after `bytes` bytes of its new content.
  void DieMidWrite(const std::string& folder, const std::string& old, const std::string& fresh, std::size_t bytes) {
    NWriteFileBytes(MainFile(folder), old);
    NKeyJournal journal(NPlatform::Default(), UnicodePath(MainFile(folder)));
    ASSERT_TRUE(journal.Write(old, fresh, NFileSecurity::kDefault, false));
    NWriteFileBytes(MainFile(folder), fresh.substr(0, bytes));
  }
};

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
      NKeyJournal journal(NPlatform::Default(), UnicodePath(MainFile("work")));
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
  const auto oldStore = MakeStore("old", false, NPlatform::Default());
  const auto oldKey = OpenKey(*oldStore);
  ASSERT_TRUE(oldKey);

  auto store = MakeStore("work", false, NPlatform::Default());
  std::unique_ptr<NFile> other;
  ASSERT_TRUE(NPlatform::Default().OpenFile(UnicodePath(MainFile("work")), {}, &other));
  ASSERT_TRUE(other->Lock(0, 4, NLockKind::kShared, std::chrono::milliseconds::zero()));
  auto key = OpenKey(*store);
  ASSERT_TRUE(key);
  EXPECT_EQ(key->LoadReport(0).journal, Outcome::kReadOld);
  EXPECT_EQ(Dump(*key), Dump(*oldKey));
  EXPECT_TRUE(fs::exists(JournalOf(MainFile("work"))));
  ASSERT_TRUE(other->Unlock(0, 4));
  other.reset();

  ASSERT_TRUE(key->SetDwordValue(u"Port", 3333));
  NReportMessageParams params;
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(fs::exists(JournalOf(MainFile("work"))));
  auto again = OpenKey(*store);
  ASSERT_TRUE(again);
  EXPECT_EQ(Dword(*again, u"Port"), 3333u);
  EXPECT_EQ(String(*again, u"Password"), u"old secret") << "the save started from the rolled-back bytes";
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
  auto key = OpenKey(*store);
  ASSERT_TRUE(key);
  EXPECT_EQ(Dump(*key), "");
  EXPECT_TRUE(fs::exists(JournalOf(MainFile("work"))));
}

}  // namespace
