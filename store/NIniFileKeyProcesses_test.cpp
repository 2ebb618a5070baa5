#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NChildProcess.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
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
constexpr char kChildTest[] = "NIniFileKeyChild.RunsItsRole";

// Saves contents 0 and 1 in turn, every value holding a new generation.
constexpr std::string_view kCountingWriter = "counting-writer";
// Saves contents 0 and 1 in turn, always the same two byte strings.
constexpr std::string_view kAlternatingWriter = "alternating-writer";
// Sets its own value of the shared key to 1, 2, ... kMergeSteps, saving each.
constexpr std::string_view kMerger = "merger";

constexpr unsigned kChildSeconds = 10;  // the children's watchdog
constexpr int kSmallCount = 50;
constexpr int kLargeCount = 400;
constexpr int kMergers = 4;
constexpr std::uint32_t kMergeSteps = 200;
constexpr std::uint32_t kStopSeed = 20240611;
constexpr int kDefaultSignalRuns = 200;
constexpr std::u16string_view kKeyName = u"Sessions\\shared";


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
  if (!path.Append(kKeyName)) return nullptr;
  return NIniFileKey::Open(store, path, readOnly, params);
}

NUnicodeString ValueName(int i) { return NUnicodeString::FromUtf8("value " + std::to_string(i)); }

// Gives the key content `which` (0: kSmallCount values, 1: kLargeCount),
// every value and "generation" holding `generation`.
bool SetContent(NIniFileKey& key, int which, std::uint32_t generation) {
  const int count = which == 0 ? kSmallCount : kLargeCount;
  for (int i = 0; i < kLargeCount; ++i) {
    if (i < count) {
      if (!key.SetDwordValue(ValueName(i), generation)) return false;
    } else {
      key.DeleteValue(ValueName(i));
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
  const char byte = 'r';
  (void)!::write(fd, &byte, 1);
  ::close(fd);
}

// Where the writer notes which content its current save writes: a shared
// file mapping, which the parent can still read after a SIGKILL.
volatile std::int32_t* MapProgress(const fs::path& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) return nullptr;
  void* mapped = ::mmap(nullptr, sizeof(std::int32_t), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  ::close(fd);
  return mapped == MAP_FAILED ? nullptr : static_cast<volatile std::int32_t*>(mapped);
}

int RunChild(std::string_view role) {
  // A parent run under nohup, or with the signals blocked, would hand that
  // on through exec, and the stop tests would then never stop anything.
  for (const int stop : {SIGTERM, SIGINT, SIGHUP}) ::signal(stop, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);

  const fs::path folder = std::getenv(kFolderVariable);
  const int index = EnvironmentNumber(kIndexVariable, 0);
  auto store = MakeStore(folder);
  NReportMessageParams params;
  auto key = OpenKey(*store, false, params);
  if (!key) return Fail("open", params);

  if (role == kMerger) {
    TellReady();
    // All mergers load the same state, then start together.
    while (!fs::exists(folder / "go")) std::this_thread::sleep_for(1ms);
    const NUnicodeString name = NUnicodeString::FromUtf8("child-" + std::to_string(index));
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
  const bool alternating = role == kAlternatingWriter;
  volatile std::int32_t* target = nullptr;
  if (alternating) {
    target = MapProgress(folder / "progress");
    if (!target) {
      std::cerr << "child: cannot map the progress file: " << std::strerror(errno) << std::endl;
      return 1;
    }
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
class Child {
 public:
  Child(std::string_view role, const fs::path& folder, int index)
      : m_log(folder / ("child-" + std::to_string(index) + ".log")),
        m_process(kChildTest,
                  {std::string(kRoleVariable) + "=" + std::string(role),
                   std::string(kFolderVariable) + "=" + folder.string(),
                   std::string(kIndexVariable) + "=" + std::to_string(index)},
                  m_log.string(), kReadyVariable) {}

  bool Started() const { return m_process.Started(); }
  // Waits until the child says it is ready; false when it ended first.
  bool WaitReady() { return m_process.WaitReady(std::chrono::seconds(kChildSeconds)); }
  bool Running() { return m_process.Running(); }
  int Wait() { return m_process.Wait(); }
  void Signal(int stop) { m_process.Signal(stop); }
  std::string Log() const { return "\nchild log:\n" + NReadFileBytes(m_log); }

 private:
  fs::path m_log;
  NChildProcess m_process;
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

class NIniFileKeyProcessesTest : public testing::Test {
 protected:
  void SetUp() override {
    // CFGDECK_PROCESS_TEST_DIR puts the files on another file system, a tmpfs say.
    const char* base = std::getenv("CFGDECK_PROCESS_TEST_DIR");
    const fs::path parent = base && *base ? fs::path(base) : fs::path(testing::TempDir());
    std::random_device device;
    for (int attempt = 0; attempt < 100 && m_folder.empty(); ++attempt) {
      const fs::path candidate = parent / ("cfgdeck_processes_" + std::to_string(device()));
      if (fs::create_directory(candidate)) m_folder = candidate;
    }
    ASSERT_FALSE(m_folder.empty());
  }
  void TearDown() override {
    m_children.clear();
    std::error_code ignored;
    if (!m_folder.empty()) fs::remove_all(m_folder, ignored);
  }

  Child& Start(std::string_view role, int index) {
    m_children.push_back(std::make_unique<Child>(role, m_folder, index));
    return *m_children.back();
  }
  void Forget(const Child& child) {
    std::erase_if(m_children, [&child](const std::unique_ptr<Child>& owned) { return owned.get() == &child; });
  }

  // Saves content `which` of `generation` with a store of its own.
  void Save(int which, std::uint32_t generation) {
    auto store = MakeStore(m_folder);
    NReportMessageParams params;
    auto key = OpenKey(*store, false, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    ASSERT_TRUE(SetContent(*key, which, generation));
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  }

  // Starts an alternating writer `runs` times and stops it after a random
  // pause with the next of `signals`; `check` sees what each stop left.
  void RunStops(const std::vector<int>& signals, int runs, std::array<int, 5>* tally,
                const std::function<void(NOutcome, const std::string&, int)>& check) {
    // The two contents, as the writer saves them.
    Save(0, 1);
    const std::string small = NReadFileBytes(KeyFile(m_folder));
    Save(1, 2);
    const std::string large = NReadFileBytes(KeyFile(m_folder));
    ASSERT_GT(large.size(), 4 * small.size());

    std::mt19937 random(kStopSeed);
    std::uniform_int_distribution<int> pause(0, 20000);
    for (int run = 0; run < runs; ++run) {
      NWriteFileBytes(KeyFile(m_folder), small);
      NWriteFileBytes(m_folder / "progress", std::string(sizeof(std::int32_t), '\0'));
      Child& child = Start(kAlternatingWriter, 0);
      ASSERT_TRUE(child.Started()) << std::strerror(errno);
      ASSERT_TRUE(child.WaitReady()) << "run " << run << child.Log();
      std::this_thread::sleep_for(std::chrono::microseconds(pause(random)));
      const int stop = signals[static_cast<std::size_t>(run) % signals.size()];
      child.Signal(stop);
      const int status = child.Wait();
      ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == stop)
          << "run " << run << ": " << DescribeWait(status) << child.Log();
      Forget(child);

      std::int32_t target = 0;
      const std::string progress = NReadFileBytes(m_folder / "progress");
      ASSERT_EQ(progress.size(), sizeof target);
      std::memcpy(&target, progress.data(), sizeof target);
      ASSERT_TRUE(target == 1 || target == 2) << "run " << run;
      const std::string bytes = NReadFileBytes(KeyFile(m_folder));
      const NOutcome outcome = target == 1 ? Classify(bytes, small, large) : Classify(bytes, large, small);
      ++(*tally)[static_cast<std::size_t>(outcome)];
      check(outcome, bytes, run);
      if (HasFatalFailure()) return;
    }
  }

  static std::string Rates(const std::array<int, 5>& tally, int runs) {
    std::ostringstream out;
    for (std::size_t i = 0; i < tally.size(); ++i) {
      out << (i ? ", " : "") << kOutcomeNames[i] << " " << tally[i] << " (" << 100.0 * tally[i] / runs << "%)";
    }
    return out.str();
  }

  fs::path m_folder;
  std::vector<std::unique_ptr<Child>> m_children;
};

TEST_F(NIniFileKeyProcessesTest, LoadsDuringAnotherProcessesSavesAreAlwaysWhole) {
  Save(0, 0);
  Child& writer = Start(kCountingWriter, 0);
  ASSERT_TRUE(writer.Started()) << std::strerror(errno);
  ASSERT_TRUE(writer.WaitReady()) << writer.Log();

  auto store = MakeStore(m_folder);
  std::set<std::size_t> sizes;
  std::set<std::uint32_t> generations;
  int loads = 0;
  for (const auto end = Clock::now() + 2s; Clock::now() < end; ++loads) {
    NReportMessageParams params;
    auto key = OpenKey(*store, true, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    const std::string problem = WholeContentProblem(*key);
    ASSERT_EQ(problem, "") << "load " << loads;
    std::uint32_t generation = 0;
    key->GetDwordValue(u"generation", &generation);
    generations.insert(generation);
    sizes.insert(key->Values().ValueCount() - 1);
  }
  ASSERT_TRUE(writer.Running()) << DescribeWait(writer.Wait()) << writer.Log();
  writer.Signal(SIGTERM);
  const int status = writer.Wait();
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << DescribeWait(status) << writer.Log();
  // Not vacuous: the loads met saves of both sizes.
  EXPECT_EQ(sizes.size(), 2u);
  EXPECT_GT(generations.size(), 2u);
  std::cout << "[ loads ] " << loads << " whole loads, " << generations.size() << " generations seen\n";
}

TEST_F(NIniFileKeyProcessesTest, ProcessesChangingTheirOwnValuesOfOneKeyAllKeepTheirChanges) {
  {
    auto store = MakeStore(m_folder);
    NReportMessageParams params;
    auto key = OpenKey(*store, false, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    ASSERT_TRUE(key->SetStringValue(u"seed", u"kept"));
    ASSERT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
  }
  std::vector<Child*> mergers;
  for (int k = 0; k < kMergers; ++k) {
    mergers.push_back(&Start(kMerger, k));
    ASSERT_TRUE(mergers.back()->Started()) << std::strerror(errno);
  }
  for (Child* merger : mergers) ASSERT_TRUE(merger->WaitReady()) << merger->Log();
  NWriteFileBytes(m_folder / "go", "");
  for (Child* merger : mergers) {
    const int status = merger->Wait();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << DescribeWait(status) << merger->Log();
  }

  auto store = MakeStore(m_folder);
  NReportMessageParams params;
  auto key = OpenKey(*store, true, params);
  ASSERT_TRUE(key) << params.GetText().ToUtf8();
  for (int k = 0; k < kMergers; ++k) {
    std::uint32_t value = 0;
    EXPECT_TRUE(key->GetDwordValue(NUnicodeString::FromUtf8("child-" + std::to_string(k)), &value)) << k;
    EXPECT_EQ(value, kMergeSteps) << "child " << k;
  }
  NUnicodeString text;
  EXPECT_TRUE(key->GetStringValue(u"seed", &text));
  EXPECT_EQ(text, u"kept");
  EXPECT_EQ(key->Values().ValueCount(), static_cast<std::size_t>(kMergers) + 1);
  EXPECT_EQ(key->LoadReport().invalidLine, 0u);
}

TEST_F(NIniFileKeyProcessesTest, PoliteStopsNeverLeaveAFileCutOrEmpty) {
  const int runs = EnvironmentNumber("CFGDECK_SIGNAL_RUNS", kDefaultSignalRuns);
  const std::vector<int> signals = {SIGTERM, SIGINT, SIGHUP};
  std::array<int, 5> tally{};
  auto store = MakeStore(m_folder);
  int intact = 0;
  const auto start = Clock::now();
  RunStops(signals, runs, &tally, [&](NOutcome outcome, const std::string& bytes, int run) {
    NReportMessageParams params;
    auto key = OpenKey(*store, true, params);
    ASSERT_TRUE(key) << params.GetText().ToUtf8();
    const std::string problem = WholeContentProblem(*key);
    const bool whole = outcome == NOutcome::kOld || outcome == NOutcome::kNew;
    EXPECT_TRUE(whole && problem.empty()) << "run " << run << ": " << kOutcomeNames[static_cast<std::size_t>(outcome)]
                                          << " file of " << bytes.size() << " bytes; " << problem;
    if (whole && problem.empty()) ++intact;
  });
  const auto seconds = std::chrono::duration<double>(Clock::now() - start).count();
  std::cout << "[ stops ] " << intact << " of " << runs << " intact (" << Rates(tally, runs) << ") in " << seconds
            << " s\n";
  EXPECT_EQ(intact, runs);
}

TEST_F(NIniFileKeyProcessesTest, KilledSaveLeavesOldNewEmptyOrCutContentButNeverAMix) {
  const int runs = EnvironmentNumber("CFGDECK_SIGNAL_RUNS", kDefaultSignalRuns);
  std::array<int, 5> tally{};
  const auto start = Clock::now();
  RunStops({SIGKILL}, runs, &tally, [](NOutcome outcome, const std::string& bytes, int run) {
    EXPECT_NE(outcome, NOutcome::kMixed) << "run " << run << ": " << bytes.size() << " bytes";
  });
  const auto seconds = std::chrono::duration<double>(Clock::now() - start).count();
  std::cout << "[ kills ] " << runs << " runs in " << m_folder.parent_path().string() << ": " << Rates(tally, runs)
            << " in " << seconds << " s\n";
  EXPECT_EQ(tally[static_cast<std::size_t>(NOutcome::kMixed)], 0);
}

}  // namespace
