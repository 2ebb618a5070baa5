#include "platform/NPlatform.h"
#include "platform/testing/NChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/NUnicode.h"
#include "platform/testing/NTestFiles.h"


namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Names the file the child process locks; set only in that child.
constexpr char kChildLockFileVariable[] = "CFGDECK_CHILD_LOCK_FILE";
constexpr char kChildTest[] = "NPlatformChildProcess.HoldsAnExclusiveLockUntilTold";
constexpr std::chrono::milliseconds kShortWait{20};

NPlatform& Platform() { return NPlatform::Default(); }

std::u16string U16(const std::string& s) { return NUtf8ToUtf16(s); }

std::string Describe(const NStatus& status) {
  return "code " + std::to_string(status.Code()) + " from '" + status.Operation() + "' on '" +
         NUtf16ToUtf8(status.Path()) + "'";
}

void WriteText(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << text;
}

std::string ReadText(const std::string& path) { return NReadFileBytes(path); }

bool Exists(const std::string& path) {
  struct stat st;
  return ::lstat(path.c_str(), &st) == 0;
}

mode_t ModeOf(const std::string& path) {
  struct stat st;
  return ::lstat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

std::unique_ptr<NFile> Open(const std::string& path, NOpenMode mode = NOpenMode::kCreateIfMissing,
                            NFileAccess access = NFileAccess::kReadWrite) {
  std::unique_ptr<NFile> file;
  const NStatus status = Platform().OpenFile(U16(path), {.mode = mode, .access = access}, &file);
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

// Opens on another thread so that an open that blocks or loops fails the test
// instead of hanging it; nullopt when it did not return in time.
std::optional<NStatus> OpenWithin(std::u16string path, NOpenOptions options, std::chrono::milliseconds limit) {
  struct Outcome {
    std::mutex mutex;
    std::condition_variable done;
    std::optional<NStatus> status;
  };
  auto outcome = std::make_shared<Outcome>();
  std::thread([outcome, path = std::move(path), options] {
    std::unique_ptr<NFile> file;
    NStatus status = Platform().OpenFile(path, options, &file);
    std::lock_guard lock(outcome->mutex);
    outcome->status = std::move(status);
    outcome->done.notify_all();
  }).detach();
  std::unique_lock lock(outcome->mutex);
  outcome->done.wait_for(lock, limit, [&] { return outcome->status.has_value(); });
  return outcome->status;
}

class UmaskGuard {
 public:
  explicit UmaskGuard(mode_t mask) : m_previous(::umask(mask)) {}
  ~UmaskGuard() { ::umask(m_previous); }

 private:
  mode_t m_previous;
};

class NPosixPlatformTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::path(testing::TempDir()) / "cfgdeck_platform_XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr) << std::strerror(errno);
    m_folder = pattern;
  }
  void TearDown() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  std::string Path(const std::string& name) const { return m_folder + "/" + name; }
  std::u16string UPath(const std::string& name) const { return U16(Path(name)); }

  std::string m_folder;
};

// ---- Byte-range locks within one process --------------------------------

TEST_F(NPosixPlatformTest, LockHeldByOneHandleExcludesAnotherHandleInTheSameProcess) {
  auto first = Open(Path("data"));
  auto second = Open(Path("data"));
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(first->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());

  const auto start = Clock::now();
  const NStatus status = second->Lock(0, 4, NLockKind::kExclusive, 50ms);
  const auto waited = Clock::now() - start;
  EXPECT_EQ(status.Code(), NStatus::kWaitTimeout) << Describe(status);
  EXPECT_EQ(status.Path(), UPath("data"));
  EXPECT_GE(waited, 45ms) << "a finite wait gave up early";
  EXPECT_LT(waited, 2s);

  EXPECT_EQ(second->Lock(3, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout) << "overlapping range";
  EXPECT_TRUE(second->Lock(4, 4, NLockKind::kExclusive, 0ms).IsOk()) << "disjoint range";
}

TEST_F(NPosixPlatformTest, SharedLocksCoexistAndConflictWithExclusiveOnesBothWays) {
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

TEST_F(NPosixPlatformTest, UnlockHandsTheRangeToAnotherHandle) {
  auto first = Open(Path("data"));
  auto second = Open(Path("data"));
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(first->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  ASSERT_EQ(second->Lock(0, 4, NLockKind::kExclusive, 0ms).Code(), NStatus::kWaitTimeout);

  ASSERT_TRUE(first->Unlock(0, 4).IsOk());
  EXPECT_TRUE(second->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  EXPECT_EQ(first->Lock(0, 4, NLockKind::kShared, 0ms).Code(), NStatus::kWaitTimeout);
}

TEST_F(NPosixPlatformTest, ClosingAnUnrelatedHandleOfTheSameFileKeepsTheLock) {
  auto holder = Open(Path("data"));
  auto other = Open(Path("data"));
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  {
    auto third = Open(Path("data"), NOpenMode::kExistingOnly, NFileAccess::kRead);
    ASSERT_TRUE(third);
    EXPECT_EQ(ReadAll(*third), "");
  }  // closes a descriptor of the file, which drops classic process-wide locks
  EXPECT_EQ(other->Lock(0, 4, NLockKind::kExclusive, kShortWait).Code(), NStatus::kWaitTimeout);
}

TEST_F(NPosixPlatformTest, DestroyingTheLockingHandleReleasesItsLock) {
  auto holder = Open(Path("data"));
  auto other = Open(Path("data"));
  ASSERT_TRUE(holder && other);
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  holder.reset();
  EXPECT_TRUE(other->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
}

TEST_F(NPosixPlatformTest, BlockingLockInAnotherThreadIsGrantedOnceTheHolderUnlocks) {
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

// ---- Byte-range locks between processes ---------------------------------

// This test binary run again, as a child that executes only kChildTest.
// This test binary run again as the child that holds a lock on `lockFile`.
class ChildProcess {
 public:
  ChildProcess(const std::string& lockFile, const std::string& logFile)
      : m_process(kChildTest, {std::string(kChildLockFileVariable) + "=" + lockFile}, logFile,
                  "CFGDECK_CHILD_READY_FD") {}
  bool Started() const { return m_process.Started(); }
  bool Running() { return m_process.Running(); }
  int Wait() { return m_process.Wait(); }
  void Kill() { m_process.Signal(SIGKILL); }

 private:
  NChildProcess m_process;
};

// Waits for the child to report that it holds the lock; false when it ended
// or never did.
bool WaitUntilHeld(const std::string& marker, ChildProcess& child) {
  const auto deadline = Clock::now() + 10s;
  while (Clock::now() < deadline) {
    if (Exists(marker)) return true;
    if (!child.Running()) return false;
    std::this_thread::sleep_for(1ms);
  }
  return false;
}

TEST(NPlatformChildProcess, HoldsAnExclusiveLockUntilTold) {
  const char* lockFile = std::getenv(kChildLockFileVariable);
  if (lockFile == nullptr) GTEST_SKIP() << "runs only as the child of the cross-process lock tests";
  std::unique_ptr<NFile> file;
  const NStatus status =
      Platform().OpenFile(U16(lockFile), {.mode = NOpenMode::kExistingOnly, .access = NFileAccess::kReadWrite}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  ASSERT_TRUE(file->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
  WriteText(std::string(lockFile) + ".held", "");
  const auto deadline = Clock::now() + 10s;
  while (!Exists(std::string(lockFile) + ".release")) {
    ASSERT_LT(Clock::now(), deadline) << "the parent never released the lock";
    std::this_thread::sleep_for(1ms);
  }
}

TEST_F(NPosixPlatformTest, ExclusiveLockOfAnotherProcessExcludesThisOneUntilItUnlocks) {
  const std::string lockFile = Path("shared.lock");
  WriteText(lockFile, "contents");
  ChildProcess child(lockFile, Path("child.log"));
  ASSERT_TRUE(child.Started()) << std::strerror(errno);
  ASSERT_TRUE(WaitUntilHeld(lockFile + ".held", child)) << ReadText(Path("child.log"));

  auto file = Open(lockFile, NOpenMode::kExistingOnly);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->Lock(0, 4, NLockKind::kExclusive, 50ms).Code(), NStatus::kWaitTimeout);
  EXPECT_EQ(file->Lock(2, 1, NLockKind::kShared, kShortWait).Code(), NStatus::kWaitTimeout);
  EXPECT_TRUE(file->Lock(4, 4, NLockKind::kExclusive, 0ms).IsOk()) << "outside the child's range";

  WriteText(lockFile + ".release", "");
  const NStatus status = file->Lock(0, 4, NLockKind::kExclusive, 10s);
  EXPECT_TRUE(status.IsOk()) << Describe(status);
  const int wait = child.Wait();
  EXPECT_TRUE(WIFEXITED(wait) && WEXITSTATUS(wait) == 0) << ReadText(Path("child.log"));
}

TEST_F(NPosixPlatformTest, LockOfAProcessKilledWhileHoldingItIsReleased) {
  const std::string lockFile = Path("shared.lock");
  WriteText(lockFile, "contents");
  ChildProcess child(lockFile, Path("child.log"));
  ASSERT_TRUE(child.Started()) << std::strerror(errno);
  ASSERT_TRUE(WaitUntilHeld(lockFile + ".held", child)) << ReadText(Path("child.log"));

  auto file = Open(lockFile, NOpenMode::kExistingOnly);
  ASSERT_TRUE(file);
  ASSERT_EQ(file->Lock(0, 4, NLockKind::kExclusive, kShortWait).Code(), NStatus::kWaitTimeout);
  child.Kill();
  const int wait = child.Wait();
  EXPECT_TRUE(WIFSIGNALED(wait) && WTERMSIG(wait) == SIGKILL);
  const NStatus status = file->Lock(0, 4, NLockKind::kExclusive, 5s);
  EXPECT_TRUE(status.IsOk()) << Describe(status);
}

// ---- Error codes ---------------------------------------------------------

TEST_F(NPosixPlatformTest, FailedCallsReportWin32CodesWithTheOperationAndThePath) {
  WriteText(Path("file"), "source");
  WriteText(Path("target"), "target");
  ASSERT_EQ(::mkdir(Path("folder").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(Path("full").c_str(), 0755), 0);
  WriteText(Path("full/inner"), "");
  const std::u16string withNul = UPath("a") + u'\0' + u"b";

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
      {"open a missing file", open(UPath("missing"), kExistingOnly, kRead), 2, UPath("missing")},
      {"open in a missing folder", open(UPath("nowhere/file"), kExistingOnly, kRead), 3, UPath("nowhere/file")},
      {"create in a missing folder", open(UPath("nowhere/file"), kCreateIfMissing, kReadWrite), 3,
       UPath("nowhere/file")},
      {"open under a file", open(UPath("file/inner"), kExistingOnly, kRead), 3, UPath("file/inner")},
      {"create under a file", open(UPath("file/inner"), kCreateAlways, kReadWrite), 3, UPath("file/inner")},
      {"open a folder to read", open(UPath("folder"), kExistingOnly, kRead), 5, UPath("folder")},
      {"open a folder to write", open(UPath("folder"), kExistingOnly, kReadWrite), 5, UPath("folder")},
      {"create over a folder", open(UPath("folder"), kCreateAlways, kReadWrite), 5, UPath("folder")},
      {"open a name with NUL", open(withNul, kCreateIfMissing, kReadWrite), 87, withNul},
      {"delete a folder", Platform().DeleteFile(UPath("folder")), 5, UPath("folder")},
      {"delete a missing file", Platform().DeleteFile(UPath("missing")), 2, UPath("missing")},
      {"delete in a missing folder", Platform().DeleteFile(UPath("nowhere/file")), 3, UPath("nowhere/file")},
      {"delete a name with NUL", Platform().DeleteFile(withNul), 87, withNul},
      {"create an existing folder", Platform().CreateFolder(UPath("folder")), 183, UPath("folder")},
      {"create a folder over a file", Platform().CreateFolder(UPath("file")), 183, UPath("file")},
      {"create a folder in a missing one", Platform().CreateFolder(UPath("nowhere/sub")), 3, UPath("nowhere/sub")},
      {"create a folder named with NUL", Platform().CreateFolder(withNul), 87, withNul},
      {"move onto an existing file", Platform().MoveFile(UPath("file"), UPath("target")), 183, UPath("target")},
      {"move a missing file", Platform().MoveFile(UPath("missing"), UPath("moved")), 2, UPath("missing")},
      {"move into a missing folder", Platform().MoveFile(UPath("file"), UPath("nowhere/file")), 3,
       UPath("nowhere/file")},
      {"move from a missing folder", Platform().MoveFile(UPath("nowhere/file"), UPath("moved")), 3,
       UPath("nowhere/file")},
      {"move a name with NUL", Platform().MoveFile(withNul, UPath("moved")), 87, withNul},
      {"remove a folder that is not empty", Platform().RemoveFolder(UPath("full")), 145, UPath("full")},
      {"remove a file as a folder", Platform().RemoveFolder(UPath("file")), 267, UPath("file")},
      {"remove a missing folder", Platform().RemoveFolder(UPath("missing")), 2, UPath("missing")},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.status.Code(), c.code) << c.what << ": " << Describe(c.status);
    EXPECT_EQ(c.status.Path(), c.path) << c.what;
    EXPECT_FALSE(c.status.Operation().empty()) << c.what;
  }
  EXPECT_TRUE(cases[0].status.IsNotFound());
  EXPECT_EQ(file, nullptr);

  // None of the failures changed anything.
  EXPECT_EQ(ReadText(Path("file")), "source");
  EXPECT_EQ(ReadText(Path("target")), "target");
  EXPECT_FALSE(Exists(Path("missing")));
  EXPECT_FALSE(Exists(Path("moved")));
  EXPECT_FALSE(Exists(Path("nowhere")));
  EXPECT_FALSE(Exists(Path("a")));
  EXPECT_TRUE(Exists(Path("folder")));
  EXPECT_TRUE(Exists(Path("full/inner")));
}

TEST_F(NPosixPlatformTest, WritingThroughAReadOnlyHandleFailsAndChangesNothing) {
  WriteText(Path("data"), "abc");
  auto file = Open(Path("data"), NOpenMode::kExistingOnly, NFileAccess::kRead);
  ASSERT_TRUE(file);
  // Windows says access denied; so must this layer.
  EXPECT_EQ(file->Write(0, "xyz", 3).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(file->Truncate(0).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(file->Reserve(4096).Code(), NStatus::kAccessDenied);
  EXPECT_EQ(ReadText(Path("data")), "abc");
}

// ---- Opening -------------------------------------------------------------

TEST_F(NPosixPlatformTest, OpenModesKeepCutOrRefuseToCreateTheFile) {
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
    const std::string path = Path("case" + std::to_string(index++));
    if (c.exists) WriteText(path, "kept");
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(U16(path), {.mode = c.mode, .access = NFileAccess::kReadWrite}, &file);
    SCOPED_TRACE(path);
    EXPECT_EQ(status.IsOk(), c.opens) << Describe(status);
    EXPECT_EQ(file != nullptr, c.opens);
    if (c.content == nullptr) {
      EXPECT_FALSE(Exists(path));
    } else {
      EXPECT_EQ(ReadText(path), c.content);
      if (file) {
        EXPECT_EQ(ReadAll(*file), c.content);
      }
    }
  }
}

TEST_F(NPosixPlatformTest, NoFollowRefusesASymbolicLinkOnlyAtTheLastComponent) {
  WriteText(Path("target"), "keep");
  ASSERT_EQ(::symlink("target", Path("link").c_str()), 0);
  ASSERT_EQ(::symlink("absent", Path("dangling").c_str()), 0);
  ASSERT_EQ(::mkdir(Path("real").c_str(), 0755), 0);
  WriteText(Path("real/inside"), "inside");
  ASSERT_EQ(::symlink("real", Path("linked").c_str()), 0);

  for (NOpenMode mode : {NOpenMode::kExistingOnly, NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
    for (const char* name : {"link", "dangling"}) {
      std::unique_ptr<NFile> file;
      const NStatus status =
          Platform().OpenFile(UPath(name), {.mode = mode, .access = NFileAccess::kReadWrite, .noFollow = true}, &file);
      EXPECT_EQ(status.Code(), NStatus::kAccessDenied) << name << " mode " << static_cast<int>(mode);
      EXPECT_EQ(file, nullptr);
    }
  }
  EXPECT_EQ(ReadText(Path("target")), "keep") << "cut through a refused link";
  EXPECT_FALSE(Exists(Path("absent"))) << "created through a refused link";

  // A link earlier in the path is the caller's business.
  std::unique_ptr<NFile> file;
  NStatus status = Platform().OpenFile(UPath("linked/inside"), {.noFollow = true}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(ReadAll(*file), "inside");
  // Without noFollow the link is followed.
  status = Platform().OpenFile(UPath("link"), {}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(ReadAll(*file), "keep");
  // noLinks refuses a link anywhere on the way, also when creating.
  std::u16string canonical;
  ASSERT_TRUE(Platform().CanonicalPath(UPath("real"), &canonical));
  for (const char* name : {"linked/inside", "linked/new"}) {
    file.reset();
    status = Platform().OpenFile(UPath(name), {.mode = NOpenMode::kCreateIfMissing, .noLinks = true}, &file);
    EXPECT_EQ(status.Code(), NStatus::kAccessDenied) << name;
  }
  EXPECT_FALSE(Exists(Path("real/new")));
  status = Platform().OpenFile(canonical + u"/inside", {.noLinks = true}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_EQ(ReadAll(*file), "inside");
}

TEST_F(NPosixPlatformTest, CreatingThroughADanglingLinkReturnsPromptly) {
  ASSERT_EQ(::symlink("absent", Path("dangling").c_str()), 0);
  for (NOpenMode mode : {NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
    const std::optional<NStatus> status =
        OpenWithin(UPath("dangling"), {.mode = mode, .access = NFileAccess::kReadWrite}, 2s);
    ASSERT_TRUE(status.has_value()) << "open looped or blocked, mode " << static_cast<int>(mode);
    EXPECT_EQ(status->Code(), NStatus::kFileNotFound) << Describe(*status);
  }
  EXPECT_FALSE(Exists(Path("absent")));
}

TEST_F(NPosixPlatformTest, FifoInTheFolderNeitherBlocksTheOpenNorIsOpened) {
  const std::string fifo = Path("fifo");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0) << std::strerror(errno);
  const struct {
    NOpenMode mode;
    NFileAccess access;
  } cases[] = {
      {NOpenMode::kExistingOnly, NFileAccess::kRead},
      {NOpenMode::kExistingOnly, NFileAccess::kReadWrite},
      {NOpenMode::kCreateIfMissing, NFileAccess::kRead},
      {NOpenMode::kCreateAlways, NFileAccess::kReadWrite},
  };
  for (const auto& c : cases) {
    const std::optional<NStatus> status = OpenWithin(U16(fifo), {.mode = c.mode, .access = c.access}, 2s);
    if (!status) {
      // Wake the blocked reader so that its thread ends.
      const int writer = ::open(fifo.c_str(), O_WRONLY | O_NONBLOCK);
      if (writer >= 0) ::close(writer);
      ADD_FAILURE() << "open blocked on a FIFO, mode " << static_cast<int>(c.mode);
      continue;
    }
    EXPECT_EQ(status->Code(), NStatus::kAccessDenied) << Describe(*status);
  }
}

// ---- Owner-only security -------------------------------------------------

TEST_F(NPosixPlatformTest, OwnerOnlyFilesAndFoldersGetOwnerOnlyModesWhateverTheUmask) {
  for (mode_t mask : {0000, 0022, 0277}) {
    UmaskGuard guard(mask);
    const std::string tag = std::to_string(mask);
    SCOPED_TRACE("umask " + tag);
    for (NOpenMode mode : {NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
      const std::string name = "file" + tag + "_" + std::to_string(static_cast<int>(mode));
      std::unique_ptr<NFile> file;
      const NStatus status = Platform().OpenFile(
          UPath(name), {.mode = mode, .access = NFileAccess::kReadWrite, .security = NFileSecurity::kOwnerOnly}, &file);
      ASSERT_TRUE(status.IsOk()) << Describe(status);
      EXPECT_EQ(ModeOf(Path(name)), 0600u) << name;
    }
    NStatus status = Platform().CreateFolder(UPath("folder" + tag), NFileSecurity::kOwnerOnly);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    EXPECT_EQ(ModeOf(Path("folder" + tag)), 0700u);

    status = Platform().CreateFolderChain(UPath("chain" + tag + "/a/b"), NFileSecurity::kOwnerOnly);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    for (const std::string& folder : {"chain" + tag, "chain" + tag + "/a", "chain" + tag + "/a/b"}) {
      EXPECT_EQ(ModeOf(Path(folder)), 0700u) << folder;
    }
  }
}

TEST_F(NPosixPlatformTest, DefaultSecurityFollowsTheUmask) {
  UmaskGuard guard(0027);
  std::unique_ptr<NFile> file;
  const NStatus status = Platform().OpenFile(UPath("file"), {.mode = NOpenMode::kCreateIfMissing}, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  ASSERT_TRUE(Platform().CreateFolder(UPath("folder")).IsOk());
  EXPECT_EQ(ModeOf(Path("file")), 0640u);
  EXPECT_EQ(ModeOf(Path("folder")), 0750u);
}

TEST_F(NPosixPlatformTest, OwnerOnlyLeavesAnExistingFileOrFolderAsItIs) {
  WriteText(Path("file"), "x");
  ASSERT_EQ(::chmod(Path("file").c_str(), 0644), 0);
  ASSERT_EQ(::mkdir(Path("folder").c_str(), 0755), 0);
  ASSERT_EQ(::chmod(Path("folder").c_str(), 0755), 0);
  for (NOpenMode mode : {NOpenMode::kExistingOnly, NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(
        UPath("file"), {.mode = mode, .access = NFileAccess::kReadWrite, .security = NFileSecurity::kOwnerOnly}, &file);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    EXPECT_EQ(ModeOf(Path("file")), 0644u) << "mode " << static_cast<int>(mode);
  }
  ASSERT_TRUE(Platform().CreateFolderChain(UPath("folder/sub"), NFileSecurity::kOwnerOnly).IsOk());
  EXPECT_EQ(ModeOf(Path("folder")), 0755u);
  EXPECT_EQ(ModeOf(Path("folder/sub")), 0700u);
}

// ---- Reading, writing and information ------------------------------------

TEST_F(NPosixPlatformTest, PositionalWritesExtendTheFileAndReadsStopAtItsEnd) {
  auto file = Open(Path("data"), NOpenMode::kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file->Write(0, "hello", 5).IsOk());
  ASSERT_TRUE(file->Write(10, "XY", 2).IsOk());
  ASSERT_TRUE(file->Write(1, "EL", 2).IsOk());
  NFileInfo info;
  ASSERT_TRUE(file->GetInfo(&info).IsOk());
  EXPECT_EQ(info.size, 12u);
  EXPECT_EQ(ReadText(Path("data")), std::string("hELlo\0\0\0\0\0XY", 12));

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
  EXPECT_EQ(ReadText(Path("data")), std::string("hEL\0\0", 5));
}

TEST_F(NPosixPlatformTest, ReserveKeepsTheVisibleLength) {
  auto file = Open(Path("data"), NOpenMode::kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file->Write(0, "abc", 3).IsOk());
  constexpr std::uint64_t kReserved = 1 << 20;
  ASSERT_TRUE(file->Reserve(kReserved).IsOk());
  ASSERT_TRUE(file->Reserve(0).IsOk());
  NFileInfo info;
  ASSERT_TRUE(file->GetInfo(&info).IsOk());
  EXPECT_EQ(info.size, 3u);
  EXPECT_EQ(ReadAll(*file), "abc");

  // Where the file system can reserve, the space must really be there.
  const int probe = ::open(Path("probe").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(probe, 0);
  const bool canReserve = ::fallocate(probe, FALLOC_FL_KEEP_SIZE, 0, 4096) == 0;
  ::close(probe);
  if (canReserve) {
    struct stat st;
    ASSERT_EQ(::stat(Path("data").c_str(), &st), 0);
    EXPECT_GE(static_cast<std::uint64_t>(st.st_blocks) * 512, kReserved);
  }
}

TEST_F(NPosixPlatformTest, InfoIdentifiesTheFileAndNoticesAWrite) {
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

  // An old, exact time makes the change visible on any timestamp granularity.
  const timespec times[2] = {{978307200, 123456789}, {978307200, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, Path("a").c_str(), times, 0), 0) << std::strerror(errno);
  NFileInfo before;
  ASSERT_TRUE(a->GetInfo(&before).IsOk());
  EXPECT_EQ(before.modifiedNanoseconds, 978307200123456789);

  ASSERT_TRUE(a->Write(0, "x", 1).IsOk());
  NFileInfo after;
  ASSERT_TRUE(sameA->GetInfo(&after).IsOk());
  EXPECT_GT(after.modifiedNanoseconds, before.modifiedNanoseconds);
  EXPECT_EQ(after.size, 1u);
  EXPECT_EQ(after.fileId, before.fileId);
  EXPECT_NE(after, before);
}

TEST_F(NPosixPlatformTest, CurrentFileTimeCountsFrom1601) {
  constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
  const std::uint64_t now = Platform().CurrentFileTime();
  const auto seconds = static_cast<std::int64_t>((now - kUnixEpochAsFileTime) / 10000000);
  EXPECT_LE(std::llabs(seconds - static_cast<std::int64_t>(std::time(nullptr))), 5);
}

// ---- Files and folders ---------------------------------------------------

TEST_F(NPosixPlatformTest, MoveFileRenamesAndNeverReplaces) {
  WriteText(Path("from"), "moved");
  ASSERT_TRUE(Platform().MoveFile(UPath("from"), UPath("to")).IsOk());
  EXPECT_FALSE(Exists(Path("from")));
  EXPECT_EQ(ReadText(Path("to")), "moved");

  WriteText(Path("other"), "other");
  EXPECT_EQ(Platform().MoveFile(UPath("other"), UPath("to")).Code(), NStatus::kAlreadyExists);
  EXPECT_EQ(ReadText(Path("other")), "other");
  EXPECT_EQ(ReadText(Path("to")), "moved");

  ASSERT_TRUE(Platform().DeleteFile(UPath("to")).IsOk());
  EXPECT_FALSE(Exists(Path("to")));
}

TEST_F(NPosixPlatformTest, CreateFolderChainCreatesEveryMissingFolderAndStopsAtAFile) {
  EXPECT_TRUE(Platform().CreateFolderChain(UPath("a/b/c/d/e")).IsOk());
  for (const char* folder : {"a", "a/b", "a/b/c", "a/b/c/d", "a/b/c/d/e"}) {
    EXPECT_TRUE(Platform().IsFolder(UPath(folder))) << folder;
  }
  EXPECT_TRUE(Platform().CreateFolderChain(UPath("a/b/c/d/e")).IsOk()) << "all present";
  EXPECT_TRUE(Platform().CreateFolderChain(UPath("x/y/")).IsOk()) << "trailing separator";
  EXPECT_TRUE(Platform().IsFolder(UPath("x/y")));

  WriteText(Path("a/file"), "");
  EXPECT_EQ(Platform().CreateFolderChain(UPath("a/file")).Code(), NStatus::kAlreadyExists);
  EXPECT_EQ(Platform().CreateFolderChain(UPath("a/file/g/h")).Code(), NStatus::kAlreadyExists);
  EXPECT_TRUE(Platform().IsFile(UPath("a/file")));

  ASSERT_TRUE(Platform().RemoveFolder(UPath("x/y")).IsOk());
  EXPECT_FALSE(Exists(Path("x/y")));
}

TEST_F(NPosixPlatformTest, ListFolderNamesEveryEntryWithItsKindAndNeverTheDotEntries) {
  WriteText(Path("one.ini"), "1");
  WriteText(Path(".hidden"), "");
  ASSERT_EQ(::mkdir(Path("sub").c_str(), 0755), 0);
  ASSERT_EQ(::symlink("one.ini", Path("link").c_str()), 0);
  ASSERT_EQ(::symlink("sub", Path("folderlink").c_str()), 0);
  ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);

  std::vector<NFolderEntry> entries = {{u"stale", NPathKind::kFile}};
  NStatus status = Platform().ListFolder(U16(m_folder), &entries);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  std::vector<std::pair<std::u16string, NPathKind>> listed;
  for (const NFolderEntry& entry : entries) listed.emplace_back(entry.name, entry.kind);
  std::sort(listed.begin(), listed.end());
  const std::vector<std::pair<std::u16string, NPathKind>> expected = {
      {u".hidden", NPathKind::kFile}, {u"folderlink", NPathKind::kOther}, {u"link", NPathKind::kOther},
      {u"one.ini", NPathKind::kFile}, {u"pipe", NPathKind::kOther},       {u"sub", NPathKind::kFolder},
  };
  EXPECT_EQ(listed, expected);

  status = Platform().ListFolder(UPath("sub"), &entries);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  EXPECT_TRUE(entries.empty());

  for (const char* missing : {"missing", "missing/deeper", "one.ini"}) {
    status = Platform().ListFolder(UPath(missing), &entries);
    EXPECT_TRUE(status.IsNotFound()) << missing << ": " << Describe(status);
    EXPECT_EQ(status.Path(), UPath(missing));
  }
}

TEST_F(NPosixPlatformTest, PathKindDoesNotFollowALinkAtTheEnd) {
  WriteText(Path("file"), "");
  ASSERT_EQ(::mkdir(Path("folder").c_str(), 0755), 0);
  ASSERT_EQ(::symlink("folder", Path("link").c_str()), 0);
  const struct {
    std::u16string path;
    NPathKind kind;
  } cases[] = {
      {UPath("file"), NPathKind::kFile},         {UPath("folder"), NPathKind::kFolder},
      {UPath("link"), NPathKind::kOther},        {UPath("link/"), NPathKind::kFolder},
      {UPath("missing"), NPathKind::kNone},      {UPath("file/x"), NPathKind::kNone},
      {UPath("file") + u'\0', NPathKind::kNone}, {u"", NPathKind::kNone},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Platform().GetPathKind(c.path), c.kind) << NUtf16ToUtf8(c.path);
  }
}

TEST_F(NPosixPlatformTest, NonAsciiNamesRoundTripThroughOpenAndListFolder) {
  const std::u16string names[] = {u"K\u00f6nig \u65e5\u672c.ini", u"\U0001F600.ini"};
  for (const std::u16string& name : names) {
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(
        U16(m_folder + "/") + name, {.mode = NOpenMode::kCreateAlways, .access = NFileAccess::kReadWrite}, &file);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    ASSERT_TRUE(file->Write(0, "content", 7).IsOk());
  }
  // Stored as UTF-8, as other programs on the system expect.
  EXPECT_TRUE(Exists(Path("K\xC3\xB6nig \xE6\x97\xA5\xE6\x9C\xAC.ini")));
  EXPECT_TRUE(Exists(Path("\xF0\x9F\x98\x80.ini")));

  std::vector<NFolderEntry> entries;
  ASSERT_TRUE(Platform().ListFolder(U16(m_folder), &entries).IsOk());
  std::vector<std::u16string> listed;
  for (const NFolderEntry& entry : entries) listed.push_back(entry.name);
  std::sort(listed.begin(), listed.end());
  std::vector<std::u16string> expected(std::begin(names), std::end(names));
  std::sort(expected.begin(), expected.end());
  ASSERT_EQ(listed, expected);

  for (const std::u16string& name : listed) {
    std::unique_ptr<NFile> file;
    const NStatus status = Platform().OpenFile(U16(m_folder + "/") + name, {}, &file);
    ASSERT_TRUE(status.IsOk()) << Describe(status);
    EXPECT_EQ(ReadAll(*file), "content");
  }
}

}  // namespace
