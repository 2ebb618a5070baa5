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
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyFixture.h"
#include "store/NIniFileStore.h"

namespace {

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

class NIniFileKeyPosixTest : public NIniFileKeyFixture {
 protected:
  // As a host makes the store: with a private root and the default options.
  void SetUp() override {
    NIniFileKeyFixture::SetUp();
    if (HasFatalFailure()) return;
    m_store =
        std::make_unique<NIniFileStore>(NUnicodeString(m_root.u16string()), NUnicodeString(m_personal.u16string()));
  }
  static mode_t ModeOf(const std::filesystem::path& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? (st.st_mode & 0777) : 0;
  }
};

TEST_F(NIniFileKeyPosixTest, ThePrivateFileAndTheFoldersMadeForItAreTheOwnersAlone) {
  auto key = Open(u"Sessions\\s");
  ASSERT_TRUE(key);
  ASSERT_TRUE(key->SetStringValue(u"Hostname", u"h"));
  ASSERT_TRUE(key->SetStringValue(u"Password V2", u"secret"));
  NReportMessageParams params;
  ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  EXPECT_EQ(ModeOf(m_personal / "Sessions" / "s.ini"), 0600u);
  EXPECT_EQ(ModeOf(m_personal / "Sessions"), 0700u);
  EXPECT_EQ(ModeOf(m_personal), 0700u);
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
  EXPECT_FALSE(TryOpen(keyPath + u"k", params));
  EXPECT_NE(params.GetText().ToUtf8().find("too long"), std::string::npos) << params.GetText().ToUtf8();
  // Deleting the tree is refused the same way, and the folder stays usable.
  EXPECT_FALSE(Open(u"")->DeleteSubKey(NUnicodeString::FromUtf8(name), params));
  EXPECT_TRUE(Open(u"other", true));
}

TEST_F(NIniFileKeyPosixTest, UnreadableFilesAreAClearError) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every file";
  Write("locked.ini", Bom("D:\"a\"=00000001\r\n"));
  std::filesystem::permissions(m_root / "locked.ini", std::filesystem::perms::none);
  NReportMessageParams params;
  EXPECT_FALSE(TryOpen(u"locked", params, true));
  EXPECT_NE(params.GetText().ToUtf8().find("Access is denied"), std::string::npos);
}

TEST_F(NIniFileKeyPosixTest, ALoadReleasesItsLockWhileAChildStillHoldsTheFile) {
  Write("k.ini", Bom("D:\"a\"=00000001\r\n"));
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
