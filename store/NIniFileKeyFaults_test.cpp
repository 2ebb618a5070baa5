#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <mutex>
#include <random>
#include <sstream>
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
#include "store/NIniFileStore.h"
#include "store/NTextFile.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr std::u16string_view kKeyName = u"Sessions\\lab";
// A load or save of one key makes far fewer calls: a loop reaching this never ends.
constexpr int kMaxCalls = 200;
constexpr std::uint32_t kPlainError = 5;  // ERROR_ACCESS_DENIED


NUnicodeString Native(const fs::path& path) { return NUnicodeString::FromUtf8(path.string()); }

// Every value of a key as the records a save would write, in its order: two
// keys hold the same values exactly when their dumps are equal.
std::string Dump(const NIniFileKey& key) {
  NTextFile writer;
  writer.SetEncoding(NTextFile::Encoding::kUtf8);
  key.Values().ForEach([&writer](const NIniFileKey::Map::Element& element) {
    element.Data()->WriteRecord(writer, element.Name());
  });
  return writer.Pending();
}

// Where two byte strings part, for failure messages that would otherwise print
// kilobytes.
std::string Difference(const std::string& actual, const std::string& expected) {
  std::size_t at = 0;
  while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
  return std::to_string(actual.size()) + " bytes against " + std::to_string(expected.size()) +
         ", first difference at " + std::to_string(at);
}

// The key before the save; personal names included, so that with a private
// root both files exist.
void SetOldValues(NIniFileKey& key) {
  ASSERT_TRUE(key.SetStringValue(u"Hostname", u"old.example"));
  ASSERT_TRUE(key.SetDwordValue(u"Port", 22));
  ASSERT_TRUE(key.SetStringValue(u"Username", u"alice"));
  ASSERT_TRUE(key.SetStringValue(u"Password", u"old secret"));
  ASSERT_TRUE(key.SetDwordValue(u"Doomed", 1));
  ASSERT_TRUE(key.SetMultiStringValue(u"Lines", NStringArray{NUnicodeString(u"one"), NUnicodeString(u"two")}));
}

// The save: a change, a deletion, a changed personal value and enough new
// values that the content spans several read blocks.
void ChangeValues(NIniFileKey& key) {
  ASSERT_TRUE(key.SetDwordValue(u"Port", 2222));
  ASSERT_TRUE(key.DeleteValue(u"Doomed"));
  ASSERT_TRUE(key.SetStringValue(u"Password", u"new secret"));
  ASSERT_TRUE(key.SetBinaryValue(u"Blob", "\x01\x02\x03", 3));
  for (int i = 0; i < 200; ++i) {
    const NUnicodeString name = NUnicodeString::FromUtf8("Added " + std::to_string(i));
    ASSERT_TRUE(key.SetStringValue(name, u"a value long enough to fill blocks"));
  }
}

// The bytes of a key's main and private file.
struct NKeyFiles {
  std::string main;
  std::string personal;  // empty without a private root
};

class NIniFileKeyFaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::random_device device;
    for (int attempt = 0; attempt < 100 && m_base.empty(); ++attempt) {
      const fs::path candidate = fs::path(testing::TempDir()) / ("cfgdeck_faults_" + std::to_string(device()));
      if (fs::create_directory(candidate)) m_base = candidate;
    }
    ASSERT_FALSE(m_base.empty());
  }
  void TearDown() override {
    std::error_code ignored;
    if (!m_base.empty()) fs::remove_all(m_base, ignored);
  }

  fs::path Root(const std::string& folder) const { return m_base / folder / "main"; }
  fs::path PrivateRoot(const std::string& folder) const { return m_base / folder / "personal"; }
  fs::path MainFile(const std::string& folder) const { return Root(folder) / "Sessions" / "lab.ini"; }
  fs::path PrivateFile(const std::string& folder) const { return PrivateRoot(folder) / "Sessions" / "lab.ini"; }

  std::unique_ptr<NIniFileStore> MakeStore(const std::string& folder, bool withPrivate, NPlatform& platform) const {
    NIniFileStoreOptions options;
    options.syncOnSave = true;  // so that Sync is among the calls that fail
    return std::make_unique<NIniFileStore>(Native(Root(folder)),
                                           withPrivate ? Native(PrivateRoot(folder)) : NUnicodeString(), platform,
                                           options);
  }

  static std::unique_ptr<NIniFileKey> OpenKey(const NIniFileStore& store, NReportMessageParams& params) {
    NKeyPath path;
    EXPECT_TRUE(path.Append(kKeyName));
    return NIniFileKey::Open(store, path, false, params);
  }

  NKeyFiles ReadFiles(const std::string& folder, bool withPrivate) const {
    return {NReadFileBytes(MainFile(folder)), withPrivate ? NReadFileBytes(PrivateFile(folder)) : std::string()};
  }
  void WriteFiles(const std::string& folder, const NKeyFiles& files, bool withPrivate) const {
    NWriteFileBytes(MainFile(folder), files.main);
    if (withPrivate) NWriteFileBytes(PrivateFile(folder), files.personal);
  }

  void EmptyFolder(const std::string& folder) const { fs::remove_all(m_base / folder); }

  // The files of the key before the save, as a save writes them.
  NKeyFiles OldFiles(bool withPrivate) {
    EmptyFolder("old");
    auto store = MakeStore("old", withPrivate, NPlatform::Default());
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    if (!key) return {};
    SetOldValues(*key);
    EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    return ReadFiles("old", withPrivate);
  }

  // The files after the save, made by the same save with nothing failing.
  NKeyFiles NewFiles(const NKeyFiles& old, bool withPrivate) {
    EmptyFolder("new");
    WriteFiles("new", old, withPrivate);
    auto store = MakeStore("new", withPrivate, NPlatform::Default());
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    if (!key) return {};
    ChangeValues(*key);
    EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    return ReadFiles("new", withPrivate);
  }

  // A failure report names the file it concerns and has real texts, its own
  // and the system's for the error.
  void ExpectNamesAFile(const NReportMessageParams& params, const std::string& folder, bool withPrivate) const {
    const std::string text = params.GetText().ToUtf8();
    EXPECT_EQ(text.find("Could not retrieve"), std::string::npos) << text;
    const bool namesMain = text.find(MainFile(folder).string()) != std::string::npos;
    const bool namesPrivate = withPrivate && text.find(PrivateFile(folder).string()) != std::string::npos;
    EXPECT_TRUE(namesMain || namesPrivate) << text;
  }

  fs::path m_base;
};

// ---- One failing call at a time ---------------------------------------------

struct NFaultCase {
  const char* name;
  bool withPrivate;
  NFault fault;
};

// Names the case in failure messages instead of dumping its bytes.
void PrintTo(const NFaultCase& param, std::ostream* out) { *out << param.name; }

class NIniFileKeyEachCallTest : public NIniFileKeyFaultsTest, public testing::WithParamInterface<NFaultCase> {};

TEST_P(NIniFileKeyEachCallTest, SaveFailingAtAnyCallLeavesOldOrNewFilesAndASecondSaveCompletesIt) {
  const NFaultCase& param = GetParam();
  const bool withPrivate = param.withPrivate;
  const NKeyFiles old = OldFiles(withPrivate);
  const NKeyFiles fresh = NewFiles(old, withPrivate);
  ASSERT_NE(old.main, fresh.main);
  if (withPrivate) {
    ASSERT_NE(old.personal, fresh.personal);
    ASSERT_NE(old.personal.find("old secret"), std::string::npos) << "the private file holds the personal values";
  }

  std::string outcomes;  // per failing call: main file old or new, then the private one
  int n = 1;
  for (; n <= kMaxCalls; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    WriteFiles("work", old, withPrivate);
    NFaultPlatform faults(NPlatform::Default());
    auto store = MakeStore("work", withPrivate, faults);
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    ChangeValues(*key);
    faults.FailNthOfAny(n, param.fault);
    const bool saved = key->Flush(params);
    const bool fired = faults.Fired();
    EXPECT_EQ(saved, !fired);

    const NKeyFiles after = ReadFiles("work", withPrivate);
    const bool mainNew = after.main == fresh.main;
    EXPECT_TRUE(mainNew || after.main == old.main) << Difference(after.main, fresh.main);
    const bool privateNew = withPrivate && after.personal == fresh.personal;
    if (withPrivate) {
      EXPECT_TRUE(privateNew || after.personal == old.personal) << Difference(after.personal, fresh.personal);
    }
    if (!fired) {
      EXPECT_TRUE(mainNew && (privateNew || !withPrivate));
      break;
    }
    outcomes += " " + std::to_string(n) + ":" + (mainNew ? "N" : "o") + (withPrivate ? (privateNew ? "N" : "o") : "");

    if (!saved) {
      ExpectNamesAFile(params, "work", withPrivate);
      EXPECT_TRUE(key->IsModified());
      faults.Reset();
      NReportMessageParams again;
      EXPECT_TRUE(key->Flush(again)) << again.GetText().ToUtf8();
      const NKeyFiles retried = ReadFiles("work", withPrivate);
      EXPECT_EQ(retried.main, fresh.main) << Difference(retried.main, fresh.main);
      EXPECT_EQ(retried.personal, fresh.personal) << Difference(retried.personal, fresh.personal);
    }
  }
  ASSERT_LE(n, kMaxCalls) << "the fault kept firing";
  // Open, lock, stat, read, reserve, truncate, write, sync and unlock at least.
  EXPECT_GT(n, 9);
  std::cout << "[ outcomes ] failing call:main" << (withPrivate ? "+private" : "") << " file (o: old, N: new):"
            << outcomes << "\n";
}

TEST_P(NIniFileKeyEachCallTest, LoadFailingAtAnyCallReportsItOrLoadsEverything) {
  const NFaultCase& param = GetParam();
  const bool withPrivate = param.withPrivate;
  const NKeyFiles files = NewFiles(OldFiles(withPrivate), withPrivate);
  ASSERT_GT(files.main.size(), 2 * NTextFile::kBlockSize) << "the load must take several reads";
  WriteFiles("work", files, withPrivate);
  std::string expected;
  {
    auto store = MakeStore("work", withPrivate, NPlatform::Default());
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    expected = Dump(*key);
    ASSERT_NE(expected.find("new secret"), std::string::npos);
  }

  int n = 1;
  for (; n <= kMaxCalls; ++n) {
    SCOPED_TRACE("failing call " + std::to_string(n));
    NFaultPlatform faults(NPlatform::Default());
    auto store = MakeStore("work", withPrivate, faults);
    faults.FailNthOfAny(n, param.fault);
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
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

INSTANTIATE_TEST_SUITE_P(
    Faults, NIniFileKeyEachCallTest,
    testing::Values(NFaultCase{"PlainError", false, {.error = kPlainError}},
                    NFaultCase{"FullDiskShortWrite", false, {.error = NStatus::kDiskFull, .shortWrite = true}},
                    NFaultCase{"PrivatePlainError", true, {.error = kPlainError}},
                    NFaultCase{"PrivateFullDiskShortWrite", true, {.error = NStatus::kDiskFull, .shortWrite = true}}),
    [](const testing::TestParamInfo<NFaultCase>& param) { return std::string(param.param.name); });

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
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    ChangeValues(*key);
    faults.Reset();
    faults.FailNth(NFaultKind::kReserve, c.failingReserve, NStatus::kDiskFull, true);
    // The disk stays full: a second try fails the same way.
    for (int attempt = 0; attempt < 2; ++attempt) {
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

// A real file system that runs out of space: a 64 KiB tmpfs, which needs root.
class NIniFileKeyFullDiskTest : public NIniFileKeyFaultsTest {
 protected:
  void SetUp() override {
    NIniFileKeyFaultsTest::SetUp();
    if (HasFatalFailure()) return;
    if (::geteuid() != 0) GTEST_SKIP() << "mounting a small tmpfs needs root";
    m_mount = m_base / "tmpfs";
    fs::create_directory(m_mount);
    if (::mount("tmpfs", m_mount.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, "size=64k") != 0) {
      GTEST_SKIP() << "cannot mount a tmpfs here: " << std::strerror(errno);
    }
    m_mounted = true;
  }
  void TearDown() override {
    // Detached even if a file is still open, so that the folder can go.
    if (m_mounted) {
      EXPECT_EQ(::umount2(m_mount.c_str(), MNT_DETACH), 0) << std::strerror(errno);
    }
    NIniFileKeyFaultsTest::TearDown();
  }

  static std::uint64_t FreeBytes(const fs::path& path) {
    struct statvfs info;
    if (::statvfs(path.c_str(), &info) != 0) return 0;
    return static_cast<std::uint64_t>(info.f_bavail) * info.f_frsize;
  }

  fs::path m_mount;
  bool m_mounted = false;
};

TEST_F(NIniFileKeyFullDiskTest, SaveThatDoesNotFitFailsAndLeavesTheOldFileWhole) {
  NFaultPlatform counter(NPlatform::Default());
  NIniFileStoreOptions options;
  options.syncOnSave = true;
  NIniFileStore store(Native(m_mount / "store"), NUnicodeString(), counter, options);
  NReportMessageParams params;
  auto key = OpenKey(store, params);
  ASSERT_TRUE(key) << params.GetText().ToUtf8();
  SetOldValues(*key);
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  const fs::path file = m_mount / "store" / "Sessions" / "lab.ini";
  const std::string old = NReadFileBytes(file);
  ASSERT_FALSE(old.empty());

  // Less room than the new content needs beyond the old file's page.
  constexpr std::uint64_t kLeft = 4096;
  const std::uint64_t free = FreeBytes(m_mount);
  ASSERT_GT(free, kLeft);
  {
    std::ofstream filler(m_mount / "filler", std::ios::binary);
    filler << std::string(static_cast<std::size_t>(free - kLeft), 'x');
    ASSERT_TRUE(filler.flush()) << "the filler must fit";
  }
  ASSERT_LE(FreeBytes(m_mount), kLeft);

  ChangeValues(*key);
  ASSERT_GT(Dump(*key).size(), 2 * kLeft);
  counter.Reset();
  EXPECT_FALSE(key->Flush(params));
  const std::string text = params.GetText().ToUtf8();
  EXPECT_NE(text.find(file.string()), std::string::npos) << text;
  EXPECT_EQ(NReadFileBytes(file), old) << Difference(NReadFileBytes(file), old);
  EXPECT_EQ(counter.CallCount(NFaultKind::kTruncate), 0) << "the file was cut: " << text;

  // Once there is room again, the same key saves.
  fs::remove(m_mount / "filler");
  EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  EXPECT_NE(NReadFileBytes(file).find("Added 199"), std::string::npos);
}

// ---- Windows lock rules --------------------------------------------------------

// Holds the first Write made through it after Arm until Release, so that
// another thread can act while a save holds its exclusive lock; counts Lock
// calls, so that a test knows when another thread is waiting for one.
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
  bool WaitForLockCalls(int count) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, 10s, [&] { return m_lockCalls >= count; });
  }
  int LockCalls() {
    std::lock_guard lock(m_mutex);
    return m_lockCalls;
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
      m_platform.CountLock();
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
  void CountLock() {
    std::lock_guard lock(m_mutex);
    ++m_lockCalls;
    m_changed.notify_all();
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_armed = false;
  bool m_paused = false;
  bool m_released = false;
  int m_lockCalls = 0;
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
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    NUnicodeString text;
    EXPECT_TRUE(key->GetStringValue(u"Password", &text));
    EXPECT_EQ(text, u"old secret");

    ChangeValues(*key);
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    const NKeyFiles after = ReadFiles("work", withPrivate);
    EXPECT_EQ(after.main, fresh.main) << Difference(after.main, fresh.main);
    EXPECT_EQ(after.personal, fresh.personal) << Difference(after.personal, fresh.personal);

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

    auto reader = OpenKey(*store, params);
    ASSERT_TRUE(reader) << params.GetText().ToUtf8();
    std::uint32_t value = 0;
    NUnicodeString text;
    EXPECT_TRUE(reader->GetDwordValue(u"First", &value));
    EXPECT_TRUE(reader->GetDwordValue(u"Second", &value));
    EXPECT_FALSE(reader->GetDwordValue(u"Doomed", &value));
    EXPECT_TRUE(reader->GetStringValue(u"Password", &text));
    EXPECT_EQ(text, u"from first");
    EXPECT_EQ(Dump(*reader), Dump(*second)) << "the second writer holds the merged values";
  }
}

TEST_F(NIniFileKeyWindowsRulesTest, LoadWaitsForASaveHoldingTheLockAndSeesItsWholeContent) {
  const NKeyFiles old = OldFiles(false);
  const NKeyFiles fresh = NewFiles(old, false);
  WriteFiles("work", old, false);
  NPausingPlatform pausing(m_windows);
  auto store = MakeStore("work", false, pausing);
  NReportMessageParams writerParams;
  auto writer = OpenKey(*store, writerParams);
  ASSERT_TRUE(writer) << writerParams.GetText().ToUtf8();
  ChangeValues(*writer);
  const std::string expected = Dump(*writer);

  pausing.Arm();
  std::atomic<bool> saved = false;
  std::thread writerThread([&] { saved = writer->Flush(writerParams); });
  const bool paused = pausing.WaitUntilPaused();
  EXPECT_TRUE(paused) << "the save never wrote";

  std::atomic<bool> loaded = false;
  std::unique_ptr<NIniFileKey> reader;
  NReportMessageParams readerParams;
  std::thread readerThread;
  if (paused) {
    const int locksBefore = pausing.LockCalls();
    readerThread = std::thread([&] {
      reader = OpenKey(*store, readerParams);
      loaded = true;
    });
    // The reader has asked for its lock; give it time to be wrongly granted.
    EXPECT_TRUE(pausing.WaitForLockCalls(locksBefore + 1));
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
