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

// ---- Byte-range locks between processes ---------------------------------

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

// ---- Opening -------------------------------------------------------------

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

TEST_F(NPosixPlatformTest, ReservedSpaceIsReallyThereWhereTheFileSystemCanReserve) {
  const int probe = ::open(Path("probe").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(probe, 0);
  const bool canReserve = ::fallocate(probe, FALLOC_FL_KEEP_SIZE, 0, 4096) == 0;
  ::close(probe);
  if (!canReserve) GTEST_SKIP() << "this file system cannot reserve space";

  auto file = Open(Path("data"), NOpenMode::kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_TRUE(file->Write(0, "abc", 3).IsOk());
  constexpr std::uint64_t kReserved = 1 << 20;
  ASSERT_TRUE(file->Reserve(kReserved).IsOk());
  struct stat st;
  ASSERT_EQ(::stat(Path("data").c_str(), &st), 0);
  EXPECT_GE(static_cast<std::uint64_t>(st.st_blocks) * 512, kReserved);
  EXPECT_EQ(st.st_size, 3);
}

TEST_F(NPosixPlatformTest, ModificationTimesKeepTheirNanoseconds) {
  auto file = Open(Path("a"));
  ASSERT_TRUE(file);
  const timespec times[2] = {{978307200, 123456789}, {978307200, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, Path("a").c_str(), times, 0), 0) << std::strerror(errno);
  NFileInfo info;
  ASSERT_TRUE(file->GetInfo(&info).IsOk());
  EXPECT_EQ(info.modifiedNanoseconds, 978307200123456789);
}

TEST_F(NPosixPlatformTest, TheSizeHintIsTheSizeAtOpeningUntilTheHandleWrites) {
  WriteText(Path("a"), "12345");
  auto file = Open(Path("a"));
  ASSERT_TRUE(file);
  WriteText(Path("a"), "123456789");  // another writer, after the opening
  std::uint64_t size = 0;
  ASSERT_TRUE(file->SizeHint(&size).IsOk());
  EXPECT_EQ(size, 5u) << "no system call for the hint";
  ASSERT_TRUE(file->Write(9, "ab", 2).IsOk());
  ASSERT_TRUE(file->SizeHint(&size).IsOk());
  EXPECT_EQ(size, 11u);
  ASSERT_TRUE(file->Truncate(1).IsOk());
  ASSERT_TRUE(file->SizeHint(&size).IsOk());
  EXPECT_EQ(size, 1u);
}

TEST_F(NPosixPlatformTest, ClosingAHandleFreesItsLocksAtOnce) {
  WriteText(Path("a"), "contents");
  auto reader = Open(Path("a"), NOpenMode::kExistingOnly, NFileAccess::kRead);
  auto writer = Open(Path("a"), NOpenMode::kExistingOnly);
  ASSERT_TRUE(reader && writer);
  ASSERT_TRUE(reader->Lock(0, 4, NLockKind::kShared, 0ms).IsOk());
  ASSERT_EQ(writer->Lock(0, 4, NLockKind::kExclusive, 0ms).Code(), NStatus::kWaitTimeout);
  reader.reset();
  EXPECT_TRUE(writer->Lock(0, 4, NLockKind::kExclusive, 0ms).IsOk());
}

// ---- Files and folders ---------------------------------------------------

TEST_F(NPosixPlatformTest, SpecialFilesListAndCountAsOther) {
  WriteText(Path("file"), "");
  ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);
  std::vector<NFolderEntry> entries;
  ASSERT_TRUE(Platform().ListFolder(U16(m_folder), &entries).IsOk());
  std::vector<std::pair<std::u16string, NPathKind>> listed;
  for (const NFolderEntry& entry : entries) listed.emplace_back(entry.name, entry.kind);
  std::sort(listed.begin(), listed.end());
  const std::vector<std::pair<std::u16string, NPathKind>> expected = {{u"file", NPathKind::kFile},
                                                                      {u"pipe", NPathKind::kOther}};
  EXPECT_EQ(listed, expected);
  EXPECT_EQ(Platform().GetPathKind(UPath("pipe")), NPathKind::kOther);
}

TEST_F(NPosixPlatformTest, FolderStampsNameTheFolderAndItsLastChange) {
  ASSERT_EQ(::mkdir(Path("a").c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(Path("b").c_str(), 0755), 0);
  WriteText(Path("file"), "");
  ASSERT_EQ(::symlink("a", Path("link").c_str()), 0);
  NFolderStamp first, again, other, none;
  ASSERT_TRUE(Platform().GetFolderStamp(UPath("a"), &first));
  ASSERT_TRUE(Platform().GetFolderStamp(UPath("a"), &again));
  ASSERT_TRUE(Platform().GetFolderStamp(UPath("b"), &other));
  EXPECT_EQ(first, again);
  EXPECT_FALSE(first == other);
  EXPECT_FALSE(Platform().GetFolderStamp(UPath("file"), &none));
  EXPECT_FALSE(Platform().GetFolderStamp(UPath("link"), &none));
  EXPECT_FALSE(Platform().GetFolderStamp(UPath("missing"), &none));

  // Made just now: its change may share a tick with the next one. An
  // older modification time does not hide the recent change time.
  EXPECT_FALSE(first.Settled());
  const timespec old[2] = {{978307200, 0}, {978307200, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, Path("a").c_str(), old, 0), 0);
  NFolderStamp touched;
  ASSERT_TRUE(Platform().GetFolderStamp(UPath("a"), &touched));
  EXPECT_FALSE(touched == first);
  EXPECT_EQ(touched.modified, 978307200'000'000'000);
  EXPECT_FALSE(touched.Settled());
  touched.taken = touched.changed + 2'000'000'001;
  EXPECT_TRUE(touched.Settled());
}

TEST_F(NPosixPlatformTest, AMissingFolderOnTheWayIsAMissingFileWhenTheCallerAsks) {
  NOpenOptions options;
  std::unique_ptr<NFile> file;
  EXPECT_EQ(Platform().OpenFile(UPath("missing/key.ini"), options, &file).Code(), NStatus::kPathNotFound);
  options.anyMissingIsFile = true;
  EXPECT_EQ(Platform().OpenFile(UPath("missing/key.ini"), options, &file).Code(), NStatus::kFileNotFound);
  EXPECT_EQ(Platform().OpenFile(UPath("key.ini"), options, &file).Code(), NStatus::kFileNotFound);
}

TEST_F(NPosixPlatformTest, ATrailingSlashFollowsALinkToAFolder) {
  ASSERT_EQ(::mkdir(Path("folder").c_str(), 0755), 0);
  ASSERT_EQ(::symlink("folder", Path("link").c_str()), 0);
  EXPECT_EQ(Platform().GetPathKind(UPath("link")), NPathKind::kOther);
  EXPECT_EQ(Platform().GetPathKind(UPath("link/")), NPathKind::kFolder);
}

TEST_F(NPosixPlatformTest, NamesAreStoredAsUtf8) {
  const NOpenOptions create{.mode = NOpenMode::kCreateAlways, .access = NFileAccess::kReadWrite};
  std::unique_ptr<NFile> file;
  const NStatus status = Platform().OpenFile(U16(m_folder + "/") + u"K\u00f6nig \U0001F600.ini", create, &file);
  ASSERT_TRUE(status.IsOk()) << Describe(status);
  // As other programs on the system expect.
  EXPECT_TRUE(Exists(Path("K\xC3\xB6nig \xF0\x9F\x98\x80.ini")));
}

}  // namespace
