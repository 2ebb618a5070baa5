#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NChildProcess.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyFixture.h"
#include "store/NIniFileStore.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// What a child does and where; set only in children.
constexpr char kRoleVariable[] = "CFGDECK_CHILD_ROLE";
constexpr char kFolderVariable[] = "CFGDECK_CHILD_FOLDER";
constexpr char kIndexVariable[] = "CFGDECK_CHILD_INDEX";
constexpr char kReadyVariable[] = "CFGDECK_CHILD_READY_FD";

// Writers save contents 0 and 1 in turn, the counting one with every value
// of a new generation, the alternating one always the same two byte strings.
// A merger sets its own value of the shared key to 1, 2, ... kMergeSteps,
// saving each.
constexpr std::string_view kCountingWriter = "counting-writer";
constexpr std::string_view kAlternatingWriter = "alternating-writer";
constexpr std::string_view kMerger = "merger";

constexpr unsigned kChildSeconds = 10;  // the children's watchdog
constexpr int kSmallCount = 50, kLargeCount = 400, kMergers = 4, kDefaultSignalRuns = 200;
constexpr std::uint32_t kMergeSteps = 200, kStopSeed = 20240611;

fs::path KeyFile(const fs::path& folder) { return folder / "store" / "Sessions" / "shared.ini"; }

std::unique_ptr<NIniFileStore> MakeStore(const fs::path& folder) {
  // The processes stop, not the machine: the page cache keeps every write,
  // and a sync per save would only slow the loops down.
  NIniFileStoreOptions options;
  options.syncOnSave = false;
  return std::make_unique<NIniFileStore>(NUnicodeString::FromUtf8((folder / "store").string()), NUnicodeString(),
                                         NPlatform::Default(), options);
}

std::unique_ptr<NIniFileKey> OpenKey(const NIniFileStore& store, bool readOnly, NReportMessageParams& params) {
  NKeyPath path;
  if (!path.Append(u"Sessions\\shared")) return nullptr;
  return NIniFileKey::Open(store, path, readOnly, params);
}

NUnicodeString ValueName(int i) { return NUnicodeString::FromUtf8("value " + std::to_string(i)); }

// Gives the key content `which` (0: kSmallCount values, 1: kLargeCount),
// every value and "generation" holding `generation`.
bool SetContent(NIniFileKey& key, int which, std::uint32_t generation) {
  for (int i = 0; i < kLargeCount; ++i) {
    if (i >= (which == 0 ? kSmallCount : kLargeCount)) {
      key.DeleteValue(ValueName(i));
    } else if (!key.SetDwordValue(ValueName(i), generation)) {
      return false;
    }
  }
  return key.SetDwordValue(u"generation", generation);
}

// Empty when the key was loaded whole and holds one whole content.
std::string WholeContentProblem(const NIniFileKey& key) {
  const NIniLoadReport& report = key.LoadReport();
  if (report.invalidLine) return "invalid record at line " + std::to_string(report.invalidLine) + ": " + report.problem;
  if (report.unterminated) return "the last line has no line end";
  if (report.emptyFile) return "the file is empty";
  std::uint32_t generation = 0;
  if (!key.GetDwordValue(u"generation", &generation)) return "no generation";
  const std::size_t count = key.Values().ValueCount() - 1;
  if (count != kSmallCount && count != kLargeCount) return std::to_string(count) + " values";
  for (int i = 0; i < static_cast<int>(count); ++i) {
    std::uint32_t value = 0;
    if (!key.GetDwordValue(ValueName(i), &value) || value != generation) {
      return "value " + std::to_string(i) + " is not of generation " + std::to_string(generation);
    }
  }
  return {};
}

std::string DescribeWait(int status) {
  if (WIFEXITED(status)) return "exited with " + std::to_string(WEXITSTATUS(status));
  if (WIFSIGNALED(status)) return std::string("killed by ") + ::strsignal(WTERMSIG(status));
  return "status " + std::to_string(status);
}

int EnvironmentNumber(const char* name, int fallback) {
  const char* text = std::getenv(name);
  return text && *text ? std::atoi(text) : fallback;
}

// ---- The child side -------------------------------------------------------

int Fail(const char* what, const NReportMessageParams& params) {
  std::cerr << "child: " << what << " failed: " << params.GetText().ToUtf8() << std::endl;
  return 1;
}

void TellReady() {
  const int fd = EnvironmentNumber(kReadyVariable, -1);
  if (fd < 0) return;
  (void)!::write(fd, "r", 1);
  ::close(fd);
}

int RunChild(std::string_view role) {
  // A parent run under nohup, or with the signals blocked, would hand that
  // on through exec, and the stop tests would then never stop anything.
  for (const int stop : {SIGTERM, SIGINT, SIGHUP}) ::signal(stop, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);

  const fs::path folder = std::getenv(kFolderVariable);
  auto store = MakeStore(folder);
  NReportMessageParams params;
  auto key = OpenKey(*store, false, params);
  if (!key) return Fail("open", params);

  if (role == kMerger) {
    TellReady();
    // All mergers load the same state, then start together.
    while (!fs::exists(folder / "go")) std::this_thread::sleep_for(1ms);
    const NUnicodeString name =
        NUnicodeString::FromUtf8("child-" + std::to_string(EnvironmentNumber(kIndexVariable, 0)));
    for (std::uint32_t i = 1; i <= kMergeSteps; ++i) {
      if (!key->SetDwordValue(name, i)) return Fail("set", params);
      if (!key->Flush(params)) return Fail("save", params);
    }
    return 0;
  }

  // Hosts have other threads, and a signal sent to the process may land on
  // any of them: the writer keeps one idle thread that does not block it.
  std::thread([] {
    for (;;) ::pause();
  }).detach();
  // The alternating writer notes which content its current save writes in a
  // shared file mapping, which the parent can still read after a SIGKILL.
  volatile std::int32_t* target = nullptr;
  const bool alternating = role == kAlternatingWriter;
  if (alternating) {
    const int fd = ::open((folder / "progress").c_str(), O_RDWR | O_CLOEXEC);
    void* mapped =
        fd < 0 ? MAP_FAILED : ::mmap(nullptr, sizeof(std::int32_t), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (fd >= 0) ::close(fd);
    if (mapped == MAP_FAILED) {
      std::cerr << "child: cannot map the progress file: " << std::strerror(errno) << std::endl;
      return 1;
    }
    target = static_cast<volatile std::int32_t*>(mapped);
  }
  for (std::uint32_t round = 1;; ++round) {
    const int which = static_cast<int>(round % 2);
    if (!SetContent(*key, which, alternating ? static_cast<std::uint32_t>(which) + 1 : round)) {
      return Fail("set", params);
    }
    if (target) *target = which + 1;
    if (!key->Flush(params)) return Fail("save", params);
    if (round == 1) TellReady();
  }
}

TEST(NIniFileKeyChild, RunsItsRole) {
  const char* role = std::getenv(kRoleVariable);
  if (role == nullptr) GTEST_SKIP() << "runs only as a child of the process tests";
  ::alarm(kChildSeconds);
  ::_exit(RunChild(role));
}

// ---- The parent side ------------------------------------------------------

// This test binary run again as a child that plays `role`.
struct Child {
  Child(std::string_view role, const fs::path& folder, int index)
      : log(folder / ("child-" + std::to_string(index) + ".log")),
        process(
            "NIniFileKeyChild.RunsItsRole",
            {std::string(kRoleVariable) + "=" + std::string(role), std::string(kFolderVariable) + "=" + folder.string(),
             std::string(kIndexVariable) + "=" + std::to_string(index)},
            log.string(), kReadyVariable) {}
  // Whether it started and said it is ready.
  bool Ready() { return process.Started() && process.WaitReady(std::chrono::seconds(kChildSeconds)); }
  std::string Log() const { return "\nchild log:\n" + NReadFileBytes(log); }

  fs::path log;
  NChildProcess process;
};

// What a stopped writer left, against the save it had begun.
enum class NOutcome { kOld, kNew, kEmpty, kCut, kMixed };
constexpr std::array<const char*, 5> kOutcomeNames = {"old", "new", "empty", "cut", "mixed"};

NOutcome Classify(const std::string& bytes, const std::string& being, const std::string& before) {
  if (bytes == being) return NOutcome::kNew;
  if (bytes == before) return NOutcome::kOld;
  if (bytes.empty()) return NOutcome::kEmpty;
  if (bytes.size() < being.size() && being.compare(0, bytes.size(), bytes) == 0) return NOutcome::kCut;
  return NOutcome::kMixed;
}

// TEST_TMPDIR puts the files on another file system, a tmpfs say.
class NIniFileKeyProcessesTest : public NTestFolderTest {
 protected:
  void TearDown() override {
    m_children.clear();
    NTestFolderTest::TearDown();
  }

  Child& Start(std::string_view role, int index) {
    return *m_children.emplace_back(std::make_unique<Child>(role, m_folder, index));
  }

  std::unique_ptr<NIniFileKey> Open(bool readOnly) {
    if (!m_store) m_store = MakeStore(m_folder);
    NReportMessageParams params;
    auto key = OpenKey(*m_store, readOnly, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    return key;
  }

  // Saves content `which` of `generation`; returns the file's bytes.
  std::string Save(int which, std::uint32_t generation) {
    auto key = Open(false);
    NReportMessageParams params;
    EXPECT_TRUE(key && SetContent(*key, which, generation) && key->Flush(params)) << params.GetText().ToUtf8();
    return NReadFileBytes(KeyFile(m_folder));
  }

  // Starts an alternating writer CFGDECK_SIGNAL_RUNS times and stops it
  // after a random pause with the next of `signals`; `check` sees what each
  // stop left. Prints how often each outcome came, under `label`.
  void RunStops(const char* label, const std::vector<int>& signals,
                const std::function<void(NOutcome, const std::string&, int)>& check) {
    m_small = Save(0, 1);
    m_large = Save(1, 2);
    ASSERT_GT(m_large.size(), 4 * m_small.size());
    const int runs = EnvironmentNumber("CFGDECK_SIGNAL_RUNS", kDefaultSignalRuns);
    std::array<int, 5> tally{};
    const auto start = Clock::now();
    std::mt19937 random(kStopSeed);
    std::uniform_int_distribution<int> pause(0, 20000);
    for (int run = 0; run < runs; ++run) {
      NWriteFileBytes(KeyFile(m_folder), m_small);
      NWriteFileBytes(m_folder / "progress", std::string(sizeof(std::int32_t), '\0'));
      Child child(kAlternatingWriter, m_folder, 0);
      ASSERT_TRUE(child.Ready()) << "run " << run << ": " << std::strerror(errno) << child.Log();
      std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
      const int stop = signals[static_cast<std::size_t>(run) % signals.size()];
      child.process.Signal(stop);
      const int status = child.process.Wait();
      ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == stop)
          << "run " << run << ": " << DescribeWait(status) << child.Log();

      std::int32_t target = 0;
      const std::string progress = NReadFileBytes(m_folder / "progress");
      ASSERT_EQ(progress.size(), sizeof target);
      std::memcpy(&target, progress.data(), sizeof target);
      ASSERT_TRUE(target == 1 || target == 2) << "run " << run;
      const std::string bytes = NReadFileBytes(KeyFile(m_folder));
      const NOutcome outcome = target == 1 ? Classify(bytes, m_small, m_large) : Classify(bytes, m_large, m_small);
      ++tally[static_cast<std::size_t>(outcome)];
      check(outcome, bytes, run);
      if (HasFatalFailure()) return;
    }
    std::cout << "[ " << label << " ] " << runs << " runs in " << m_folder.parent_path().string() << ":";
    for (std::size_t i = 0; i < tally.size(); ++i) {
      std::cout << (i ? ", " : " ") << kOutcomeNames[i] << " " << tally[i] << " (" << 100.0 * tally[i] / runs << "%)";
    }
    std::cout << " in " << std::chrono::duration<double>(Clock::now() - start).count() << " s\n";
  }

  std::string m_small, m_large;  // the two contents a stopped writer alternates between
  std::unique_ptr<NIniFileStore> m_store;
  std::vector<std::unique_ptr<Child>> m_children;
};

TEST_F(NIniFileKeyProcessesTest, LoadsDuringAnotherProcessesSavesAreAlwaysWhole) {
  Save(0, 0);
  Child& writer = Start(kCountingWriter, 0);
  ASSERT_TRUE(writer.Ready()) << std::strerror(errno) << writer.Log();
  std::set<std::size_t> sizes;
  std::set<std::uint32_t> generations;
  int loads = 0;
  for (const auto end = Clock::now() + 2s; Clock::now() < end; ++loads) {
    auto key = Open(true);
    ASSERT_TRUE(key);
    ASSERT_EQ(WholeContentProblem(*key), "") << "load " << loads;
    std::uint32_t generation = 0;
    key->GetDwordValue(u"generation", &generation);
    generations.insert(generation);
    sizes.insert(key->Values().ValueCount() - 1);
  }
  ASSERT_TRUE(writer.process.Running()) << DescribeWait(writer.process.Wait()) << writer.Log();
  writer.process.Signal(SIGTERM);
  const int status = writer.process.Wait();
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << DescribeWait(status) << writer.Log();
  // Not vacuous: the loads met saves of both sizes.
  EXPECT_EQ(sizes.size(), 2u);
  EXPECT_GT(generations.size(), 2u);
  std::cout << "[ loads ] " << loads << " whole loads, " << generations.size() << " generations seen\n";
}

TEST_F(NIniFileKeyProcessesTest, ProcessesChangingTheirOwnValuesOfOneKeyAllKeepTheirChanges) {
  auto seed = Open(false);
  ASSERT_TRUE(seed);
  ASSERT_TRUE(seed->SetStringValue(u"seed", u"kept"));
  NReportMessageParams params;
  ASSERT_TRUE(seed->Flush(params)) << params.GetText().ToUtf8();
  for (int k = 0; k < kMergers; ++k) ASSERT_TRUE(Start(kMerger, k).process.Started()) << std::strerror(errno);
  for (auto& merger : m_children) ASSERT_TRUE(merger->Ready()) << merger->Log();
  NWriteFileBytes(m_folder / "go", "");
  for (auto& merger : m_children) {
    const int status = merger->process.Wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << DescribeWait(status) << merger->Log();
  }

  auto key = Open(true);
  ASSERT_TRUE(key);
  for (int k = 0; k < kMergers; ++k) {
    EXPECT_EQ(Dword(*key, NUnicodeString::FromUtf8("child-" + std::to_string(k))), kMergeSteps) << "child " << k;
  }
  EXPECT_EQ(String(*key, u"seed"), u"kept");
  EXPECT_EQ(key->Values().ValueCount(), static_cast<std::size_t>(kMergers) + 1);
  EXPECT_EQ(key->LoadReport().invalidLine, 0u);
}

TEST_F(NIniFileKeyProcessesTest, PoliteStopsNeverLeaveAFileCutOrEmpty) {
  RunStops("stops", {SIGTERM, SIGINT, SIGHUP}, [&](NOutcome outcome, const std::string& bytes, int run) {
    auto key = Open(true);
    ASSERT_TRUE(key);
    const std::string problem = WholeContentProblem(*key);
    EXPECT_TRUE((outcome == NOutcome::kOld || outcome == NOutcome::kNew) && problem.empty())
        << "run " << run << ": " << kOutcomeNames[static_cast<std::size_t>(outcome)] << " file of " << bytes.size()
        << " bytes; " << problem;
  });
}

// A killed save leaves old, new, empty or cut content but never a mix, and
// the next open, settling the journal, finds the old or the new bytes.
TEST_F(NIniFileKeyProcessesTest, KilledSaveLeavesNoMixAndTheNextOpenFindsOldOrNew) {
  int midSave = 0;
  RunStops("kills", {SIGKILL}, [&](NOutcome outcome, const std::string& bytes, int run) {
    EXPECT_NE(outcome, NOutcome::kMixed) << "run " << run << ": " << bytes.size() << " bytes";
    midSave += fs::exists(KeyFile(m_folder).string() + "-journal");
    ASSERT_TRUE(Open(false));
    const std::string settled = NReadFileBytes(KeyFile(m_folder));
    EXPECT_TRUE(settled == m_small || settled == m_large) << "run " << run << ": " << settled.size() << " bytes";
  });
  EXPECT_GT(midSave, 0) << "no kill landed inside a save";
}

}  // namespace
