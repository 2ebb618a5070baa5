// The platform's behaviour that only POSIX systems have: other processes
// started with fork, FIFOs, file modes and the umask, links made at will.
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
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/NUnicode.h"
#include "platform/testing/NTestFolder.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using enum NOpenMode;

// Names the file the child process locks; set only in that child.
constexpr char kChildLockFileVariable[] = "CFGDECK_CHILD_LOCK_FILE";
constexpr char kChildReadyVariable[] = "CFGDECK_CHILD_READY_FD";

NPlatform& Platform() { return NPlatform::Default(); }

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

class NPosixPlatformTest : public NTestFolderTest {
 protected:
  void TearDown() override {
    m_file.reset();
    m_child.reset();  // killed before its folder goes
    NTestFolderTest::TearDown();
  }
  mode_t ModeOf(const std::string& name) const {
    struct stat st;
    return ::lstat(Native(name).c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
  }

  // Starts this test binary again as the child that holds an exclusive lock
  // on [0, 4) of "shared.lock", and opens the file itself.
  void StartLockingChild() {
    WriteText("shared.lock", "contents");
    m_child = std::make_unique<NChildProcess>(
        "NPlatformChildProcess.HoldsAnExclusiveLockUntilTold",
        std::vector<std::string>{std::string(kChildLockFileVariable) + "=" + Native("shared.lock").string()},
        Native("child.log").string(), kChildReadyVariable);
    ASSERT_TRUE(m_child->Started()) << std::strerror(errno);
    ASSERT_TRUE(m_child->WaitReady(10s)) << ReadText("child.log");
    m_file = Open("shared.lock", kExistingOnly);
    ASSERT_TRUE(m_file);
  }

  std::unique_ptr<NChildProcess> m_child;
  std::unique_ptr<NFile> m_file;
};

TEST(NPlatformChildProcess, HoldsAnExclusiveLockUntilTold) {
  const char* lockFile = std::getenv(kChildLockFileVariable);
  if (lockFile == nullptr) GTEST_SKIP() << "runs only as the child of the cross-process lock tests";
  std::unique_ptr<NFile> file;
  ASSERT_OK(
      Platform().OpenFile(NUtf8ToUtf16(lockFile), {.mode = kExistingOnly, .access = NFileAccess::kReadWrite}, &file));
  ASSERT_OK(file->Lock(0, 4, NLockKind::kExclusive, 0ms));
  const char* ready = std::getenv(kChildReadyVariable);
  ASSERT_NE(ready, nullptr);
  ASSERT_EQ(::write(std::atoi(ready), "r", 1), 1);
  const std::string release = std::string(lockFile) + ".release";
  const auto deadline = Clock::now() + 10s;
  while (::access(release.c_str(), F_OK) != 0) {
    ASSERT_LT(Clock::now(), deadline) << "the parent never released the lock";
    std::this_thread::sleep_for(1ms);
  }
}

TEST_F(NPosixPlatformTest, ExclusiveLockOfAnotherProcessExcludesThisOneUntilItUnlocks) {
  ASSERT_NO_FATAL_FAILURE(StartLockingChild());
  EXPECT_CODE(m_file->Lock(0, 4, NLockKind::kExclusive, 50ms), NStatus::kWaitTimeout);
  EXPECT_CODE(m_file->Lock(2, 1, NLockKind::kShared, 20ms), NStatus::kWaitTimeout);
  EXPECT_OK(m_file->Lock(4, 4, NLockKind::kExclusive, 0ms)) << "outside the child's range";
  WriteText("shared.lock.release", "");
  EXPECT_OK(m_file->Lock(0, 4, NLockKind::kExclusive, 10s));
  const int wait = m_child->Wait();
  EXPECT_TRUE(WIFEXITED(wait) && WEXITSTATUS(wait) == 0) << ReadText("child.log");
}

TEST_F(NPosixPlatformTest, LockOfAProcessKilledWhileHoldingItIsReleased) {
  ASSERT_NO_FATAL_FAILURE(StartLockingChild());
  ASSERT_CODE(m_file->Lock(0, 4, NLockKind::kExclusive, 20ms), NStatus::kWaitTimeout);
  m_child->Signal(SIGKILL);
  const int wait = m_child->Wait();
  EXPECT_TRUE(WIFSIGNALED(wait) && WTERMSIG(wait) == SIGKILL);
  EXPECT_OK(m_file->Lock(0, 4, NLockKind::kExclusive, 5s));
}

TEST_F(NPosixPlatformTest, OpensThatCouldLoopOrBlockReturnPromptly) {
  ASSERT_EQ(::symlink("absent", Native("dangling").c_str()), 0);
  ASSERT_EQ(::mkfifo(Native("fifo").c_str(), 0600), 0) << std::strerror(errno);
  using enum NFileAccess;
  const struct {
    const char* name;
    NOpenMode mode;
    NFileAccess access;
    std::uint32_t code;
  } rows[] = {
      // Creating through a dangling link fails both ways, for ever.
      {"dangling", kCreateIfMissing, kReadWrite, NStatus::kFileNotFound},
      {"dangling", kCreateAlways, kReadWrite, NStatus::kFileNotFound},
      // A FIFO planted in the folder blocks an open without a writer.
      {"fifo", kExistingOnly, kRead, NStatus::kAccessDenied},
      {"fifo", kExistingOnly, kReadWrite, NStatus::kAccessDenied},
      {"fifo", kCreateIfMissing, kRead, NStatus::kAccessDenied},
      {"fifo", kCreateAlways, kReadWrite, NStatus::kAccessDenied},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.name) + " mode " + std::to_string(static_cast<int>(row.mode)));
    const std::optional<NStatus> status = OpenWithin(Path(row.name), {.mode = row.mode, .access = row.access}, 2s);
    if (!status) {
      // Wake a blocked reader so that its thread ends.
      const int writer = ::open(Native(row.name).c_str(), O_WRONLY | O_NONBLOCK);
      if (writer >= 0) ::close(writer);
      ADD_FAILURE() << "open looped or blocked";
      continue;
    }
    EXPECT_CODE(*status, row.code);
  }
  EXPECT_FALSE(Exists("absent"));
}

TEST_F(NPosixPlatformTest, AMissingFolderOnTheWayIsAMissingFileWhenTheCallerAsks) {
  NOpenOptions options;
  std::unique_ptr<NFile> file;
  EXPECT_CODE(Platform().OpenFile(Path("missing/key.ini"), options, &file), NStatus::kPathNotFound);
  options.anyMissingIsFile = true;
  EXPECT_CODE(Platform().OpenFile(Path("missing/key.ini"), options, &file), NStatus::kFileNotFound);
  EXPECT_CODE(Platform().OpenFile(Path("key.ini"), options, &file), NStatus::kFileNotFound);
}

TEST_F(NPosixPlatformTest, OwnerOnlyGivesOwnerOnlyModesWhateverTheUmaskAndTheDefaultFollowsIt) {
  for (mode_t mask : {0000, 0022, 0027, 0277}) {
    UmaskGuard guard(mask);
    const std::string tag = std::to_string(mask);
    SCOPED_TRACE("umask " + tag);
    for (NOpenMode mode : {kCreateIfMissing, kCreateAlways}) {
      const std::string name = "file" + tag + "_" + std::to_string(static_cast<int>(mode));
      ASSERT_TRUE(OpenOn(Platform(), name,
                         {.mode = mode, .access = NFileAccess::kReadWrite, .security = NFileSecurity::kOwnerOnly}));
      EXPECT_EQ(ModeOf(name), 0600u) << name;
    }
    ASSERT_OK(Platform().CreateFolder(Path("folder" + tag), NFileSecurity::kOwnerOnly));
    EXPECT_EQ(ModeOf("folder" + tag), 0700u);
    ASSERT_OK(Platform().CreateFolderChain(Path("chain" + tag + "/a/b"), NFileSecurity::kOwnerOnly));
    for (const std::string& folder : {"chain" + tag, "chain" + tag + "/a", "chain" + tag + "/a/b"}) {
      EXPECT_EQ(ModeOf(folder), 0700u) << folder;
    }
    ASSERT_TRUE(Open("default" + tag));
    ASSERT_OK(Platform().CreateFolder(Path("defaultfolder" + tag)));
    EXPECT_EQ(ModeOf("default" + tag), 0666u & ~mask);
    EXPECT_EQ(ModeOf("defaultfolder" + tag), 0777u & ~mask);
  }
}

TEST_F(NPosixPlatformTest, OwnerOnlyLeavesAnExistingFileOrFolderAsItIs) {
  WriteText("file", "x");
  ASSERT_EQ(::chmod(Native("file").c_str(), 0644), 0);
  ASSERT_EQ(::mkdir(Native("folder").c_str(), 0755), 0);
  ASSERT_EQ(::chmod(Native("folder").c_str(), 0755), 0);
  for (NOpenMode mode : {kExistingOnly, kCreateIfMissing, kCreateAlways}) {
    ASSERT_TRUE(OpenOn(Platform(), "file",
                       {.mode = mode, .access = NFileAccess::kReadWrite, .security = NFileSecurity::kOwnerOnly}));
    EXPECT_EQ(ModeOf("file"), 0644u) << "mode " << static_cast<int>(mode);
  }
  ASSERT_OK(Platform().CreateFolderChain(Path("folder/sub"), NFileSecurity::kOwnerOnly));
  EXPECT_EQ(ModeOf("folder"), 0755u);
  EXPECT_EQ(ModeOf("folder/sub"), 0700u);
}

TEST_F(NPosixPlatformTest, ReservedSpaceIsReallyThereWhereTheFileSystemCanReserve) {
  const int probe = ::open(Native("probe").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(probe, 0);
  const bool canReserve = ::fallocate(probe, FALLOC_FL_KEEP_SIZE, 0, 4096) == 0;
  ::close(probe);
  if (!canReserve) GTEST_SKIP() << "this file system cannot reserve space";
  auto file = Open("data", kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_OK(file->Write(0, "abc", 3));
  constexpr std::uint64_t kReserved = 1 << 20;
  ASSERT_OK(file->Reserve(kReserved));
  struct stat st;
  ASSERT_EQ(::stat(Native("data").c_str(), &st), 0);
  EXPECT_GE(static_cast<std::uint64_t>(st.st_blocks) * 512, kReserved);
  EXPECT_EQ(st.st_size, 3);
}

TEST_F(NPosixPlatformTest, ModificationTimesKeepTheirNanoseconds) {
  auto file = Open("a");
  ASSERT_TRUE(file);
  const timespec times[2] = {{978307200, 123456789}, {978307200, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, Native("a").c_str(), times, 0), 0) << std::strerror(errno);
  NFileInfo info;
  ASSERT_OK(file->GetInfo(&info));
  EXPECT_EQ(info.modifiedNanoseconds, 978307200123456789);
}

TEST_F(NPosixPlatformTest, TheSizeHintIsTheSizeAtOpeningUntilTheHandleWrites) {
  WriteText("a", "12345");
  auto file = Open("a");
  ASSERT_TRUE(file);
  WriteText("a", "123456789");  // another writer, after the opening
  std::uint64_t size = 0;
  ASSERT_OK(file->SizeHint(&size));
  EXPECT_EQ(size, 5u) << "no system call for the hint";
  ASSERT_OK(file->Write(9, "ab", 2));
  ASSERT_OK(file->SizeHint(&size));
  EXPECT_EQ(size, 11u);
  ASSERT_OK(file->Truncate(1));
  ASSERT_OK(file->SizeHint(&size));
  EXPECT_EQ(size, 1u);
}

TEST_F(NPosixPlatformTest, FifosAndLinksListAndCountAsOtherUnlessASlashFollowsTheLink) {
  WriteText("file", "");
  ASSERT_EQ(::mkfifo(Native("pipe").c_str(), 0600), 0);
  ASSERT_EQ(::mkdir(Native("folder").c_str(), 0755), 0);
  ASSERT_EQ(::symlink("folder", Native("link").c_str()), 0);
  std::vector<NFolderEntry> entries;
  ASSERT_OK(Platform().ListFolder(m_folder.u16string(), &entries));
  std::vector<std::pair<std::u16string, NPathKind>> listed;
  for (const NFolderEntry& entry : entries) listed.emplace_back(entry.name, entry.kind);
  std::sort(listed.begin(), listed.end());
  const std::vector<std::pair<std::u16string, NPathKind>> expected = {{u"file", NPathKind::kFile},
                                                                      {u"folder", NPathKind::kFolder},
                                                                      {u"link", NPathKind::kOther},
                                                                      {u"pipe", NPathKind::kOther}};
  EXPECT_EQ(listed, expected);
  EXPECT_EQ(Platform().GetPathKind(Path("pipe")), NPathKind::kOther);
  EXPECT_EQ(Platform().GetPathKind(Path("link")), NPathKind::kOther);
  EXPECT_EQ(Platform().GetPathKind(Path("link/")), NPathKind::kFolder);
}

TEST_F(NPosixPlatformTest, FolderStampsNameTheFolderAndItsLastChange) {
  ASSERT_EQ(::mkdir(Native("a").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(Native("b").c_str(), 0755), 0);
  WriteText("file", "");
  ASSERT_EQ(::symlink("a", Native("link").c_str()), 0);
  NFolderStamp first, again, other, none;
  ASSERT_TRUE(Platform().GetFolderStamp(Path("a"), &first));
  ASSERT_TRUE(Platform().GetFolderStamp(Path("a"), &again));
  ASSERT_TRUE(Platform().GetFolderStamp(Path("b"), &other));
  EXPECT_EQ(first, again);
  EXPECT_FALSE(first == other);
  for (const char* name : {"file", "link", "missing"})
    EXPECT_FALSE(Platform().GetFolderStamp(Path(name), &none)) << name;
  // Made just now: its change may share a tick with the next one. An
  // older modification time does not hide the recent change time.
  EXPECT_FALSE(first.Settled());
  const timespec old[2] = {{978307200, 0}, {978307200, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, Native("a").c_str(), old, 0), 0);
  NFolderStamp touched;
  ASSERT_TRUE(Platform().GetFolderStamp(Path("a"), &touched));
  EXPECT_FALSE(touched == first);
  EXPECT_EQ(touched.modified, 978307200'000'000'000);
  EXPECT_FALSE(touched.Settled());
  touched.taken = touched.changed + 2'000'000'001;
  EXPECT_TRUE(touched.Settled());
}

}  // namespace
