// Key files and folders as POSIX systems alone make them: file modes,
// folder chains deeper than any path can name, and descriptors that a forked
// child shares.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "location/NReportMessageParams.h"
#include "platform/NForwardingPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;

// Forks a child at every file it opens, as a host starting a program on
// another thread may between its fork and its exec: until it is stopped, the
// child holds a copy of every descriptor, and with it the file's locks.
class NForkingPlatform : public NForwardingPlatform {
 public:
  using NForwardingPlatform::NForwardingPlatform;
  ~NForkingPlatform() override {
    for (const pid_t child : m_children) {
      ::kill(child, SIGKILL);
      ::waitpid(child, nullptr, 0);
    }
  }

  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override {
    NStatus status = NForwardingPlatform::OpenFile(path, options, file);
    if (status) {
      const pid_t child = ::fork();
      if (child == 0) {
        for (;;) ::pause();
      }
      if (child > 0) m_children.push_back(child);
    }
    return status;
  }

  std::size_t Children() const { return m_children.size(); }

 private:
  std::vector<pid_t> m_children;
};

class NIniFileKeyPosixTest : public testing::Test {
 protected:
  void SetUp() override {
    m_base = fs::path(testing::TempDir()) /
             ("cfgdeck_posix_key_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_base);
    m_root = m_base / "root";
    fs::create_directories(m_root);
  }
  void TearDown() override { fs::remove_all(m_base); }

  std::unique_ptr<NIniFileKey> Open(std::u16string_view path, NReportMessageParams& params, bool readOnly = true) {
    if (!m_store) {
      m_store = std::make_unique<NIniFileStore>(NUnicodeString(m_root.u16string()),
                                                NUnicodeString((m_base / "personal").u16string()));
    }
    NKeyPath keyPath;
    if (!path.empty() && !keyPath.Append(path)) return nullptr;
    return NIniFileKey::Open(*m_store, keyPath, readOnly, params);
  }

  static mode_t ModeOf(const fs::path& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? (st.st_mode & 0777) : 0;
  }

  fs::path m_base, m_root;
  std::unique_ptr<NIniFileStore> m_store;
};

TEST_F(NIniFileKeyPosixTest, ThePrivateFileAndTheFoldersMadeForItAreTheOwnersAlone) {
  NReportMessageParams params;
  auto key = Open(u"Sessions\\s", params, false);
  ASSERT_TRUE(key) << params.GetText().ToUtf8();
  ASSERT_TRUE(key->SetStringValue(u"Hostname", u"h"));
  ASSERT_TRUE(key->SetStringValue(u"Password V2", u"secret"));
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  EXPECT_EQ(ModeOf(m_base / "personal" / "Sessions" / "s.ini"), 0600u);
  EXPECT_EQ(ModeOf(m_base / "personal" / "Sessions"), 0700u);
  EXPECT_EQ(ModeOf(m_base / "personal"), 0700u);
}

TEST_F(NIniFileKeyPosixTest, FoldersDeeperThanAPathCanNameGiveAClearError) {
  // Build the chain with relative calls, as no single path can name its end.
  const int top = ::open(m_root.c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_GE(top, 0);
  int folder = top;
  const std::string name(200, 'd');
  std::u16string keyPath;
  for (int depth = 0; depth < 30; ++depth) {
    ASSERT_EQ(::mkdirat(folder, name.c_str(), 0700), 0);
    const int next = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(next, 0);
    if (folder != top) ::close(folder);
    folder = next;
    keyPath += NUnicodeString::FromUtf8(name) + u"\\";
  }
  const int file = ::openat(folder, "k.ini", O_WRONLY | O_CREAT, 0600);
  ASSERT_GE(file, 0);
  ::close(file);
  ::close(folder);
  ::close(top);
  NReportMessageParams params;
  EXPECT_FALSE(Open(keyPath + u"k", params, false));
  EXPECT_NE(params.GetText().ToUtf8().find("too long"), std::string::npos) << params.GetText().ToUtf8();
  // Deleting the tree is refused the same way, and the folder stays usable.
  auto root = Open(u"", params, false);
  EXPECT_FALSE(root->DeleteSubKey(NUnicodeString::FromUtf8(name), params));
  EXPECT_TRUE(Open(u"other", params));
}

TEST_F(NIniFileKeyPosixTest, UnreadableFilesAreAClearError) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every file";
  NWriteFileBytes(m_root / "locked.ini",
                  "\xEF\xBB\xBF"
                  "D:\"a\"=00000001\r\n");
  fs::permissions(m_root / "locked.ini", fs::perms::none);
  NReportMessageParams params;
  EXPECT_FALSE(Open(u"locked", params));
  EXPECT_NE(params.GetText().ToUtf8().find("Access is denied"), std::string::npos);
}

TEST_F(NIniFileKeyPosixTest, ALoadReleasesItsLockWhileAChildStillHoldsTheFile) {
  NWriteFileBytes(m_root / "k.ini",
                  "\xEF\xBB\xBF"
                  "D:\"a\"=00000001\r\n");
  NForkingPlatform forking(NPlatform::Default());
  NIniFileStore store(NUnicodeString(m_root.u16string()), NUnicodeString(), forking);
  NKeyPath path;
  ASSERT_TRUE(path.Append(u"k"));
  NReportMessageParams params;
  auto key = NIniFileKey::Open(store, path, true, params);
  ASSERT_TRUE(key) << params.GetText().ToUtf8();
  ASSERT_EQ(forking.Children(), 1u);
  // A writer elsewhere takes the bytes a save locks.
  const int fd = ::open((m_root / "k.ini").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_len = 4;
  EXPECT_EQ(::fcntl(fd, F_OFD_SETLK, &lock), 0) << "the child's copy still holds the load's shared lock";
  ::close(fd);
}

}  // namespace
