#include "printing/NPrinterStartup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <vector>

#include "printing/NPrinterTestDoubles.h"

namespace {

using enum NPrinterStartup::State;

constexpr std::uint64_t kLong = 600000;  // never reached by a test
const std::string kSucceededText = "Printer initialization succeeded\r\n";
const std::string kFailedText = "Printer initialization failed\r\n";
const std::string kTimedOutText = "Printer initialization timed out\r\n";
const std::string kInitializingText = "Initializing printer\r\n";
const std::string kDetailText = "Printer initialization failed: CUPS destinations: Bad file descriptor\r\n";
const std::string kHibernateText = "The computer is about to hibernate. Printer functionality is being suspended.\r\n";
const std::string kSkeldonText =
    "The change to the Configuration Folder will take effect the next time you start Skeldon.\r\n";

// Made afresh for each use: threads must not share one lazily resolved text.
NReportMessageParams Message(std::uint32_t code, std::u16string_view argument = {}) {
  NReportMessageParams params(code);
  if (!argument.empty()) params.AddArgument(argument);
  return params;
}
// A failure detail the way a back end reports one.
NReportMessageParams CupsFailure() { return Message(0xE1380208, u"Bad file descriptor"); }
NReportMessageParams Hibernate() { return Message(kMsgPrinterSuspendedForHibernation); }

// What the notifier was told: the result, the status's code and text, and
// whether on the test's own thread.
using Words = std::vector<std::tuple<bool, std::uint32_t, std::string, bool>>;

// A start-up with a probe the test releases and a notifier that records.
struct Harness {
  // No thread stays blocked in a probe, and none that returns afterwards
  // looks anything up while the process may be exiting.
  ~Harness() {
    if (startup) startup->Abandon();
    gate->Open(true);
  }

  void Start(std::uint64_t timeout = kLong) { startup->Initialize(timeout, gate->Probe(), log->Notifier()); }
  std::string Status() const { return startup->GetStatus().GetText().ToUtf8(); }
  // The notifier's words from the `first`th on.
  Words Told(std::size_t first = 0) const {
    const auto calls = log->Calls();
    Words words;
    for (std::size_t i = first; i < calls.size(); ++i) {
      words.emplace_back(calls[i].succeeded, calls[i].code, calls[i].text,
                         calls[i].thread == std::this_thread::get_id());
    }
    return words;
  }
  // The harness's own share and one for each thread still running; with
  // long timeouts the watchdogs' shares count the starts.
  bool SharesSettleAt(long count) {
    return NEventually([&] { return startup.use_count() == count; });
  }

  std::shared_ptr<NPrinterStartup> startup = NPrinterStartup::Create();
  std::shared_ptr<NProbeGate> gate = NProbeGate::Create();
  std::shared_ptr<NNotifierLog> log = NNotifierLog::Create();
};

class NPrinterStartupTest : public testing::Test, protected Harness {};

TEST_F(NPrinterStartupTest, BeforeInitializeNothingRuns) {
  startup->Resume();
  startup->Suspend(Hibernate());
  EXPECT_EQ(startup->GetState(), kSuspended);
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterPreparing);
  EXPECT_EQ(Status(), "Preparing to initialize printer\r\n");
  EXPECT_EQ(startup.use_count(), 1) << "no thread was started";
  // Without a probe there is nothing to remember, so a later call starts.
  startup->Initialize(kLong, nullptr, log->Notifier());
  EXPECT_EQ(startup->GetState(), kSuspended);
  Start();
  EXPECT_EQ(startup->GetState(), kInitializing);
}

// However and whenever the probe ends, its result becomes the status and the
// worker tells it; the watchdog declares a time-out without a word, and
// abandoned threads end without one.
TEST_F(NPrinterStartupTest, ProbesResultIsTheStatusAndTheWorkerTellsIt) {
  enum Ending { kSucceeds, kFails, kThrows };
  // The probe's ending and what it says as it ends, then the status.
  const std::tuple<const char*, std::uint64_t, Ending, NReportMessageParams, std::uint32_t, std::string> rows[] = {
      {"success", kLong, kSucceeds, {}, kMsgPrinterInitSucceeded, kSucceededText},
      {"failure with a detail shows both", kLong, kFails, CupsFailure(), kMsgPrinterStatusDetail, kDetailText},
      // Nothing worth showing beside the failure.
      {"status unavailable", kLong, kFails, Message(kMsgPrinterStatusUnavailable), kMsgPrinterInitFailed, kFailedText},
      {"no message", kLong, kFails, {}, kMsgPrinterInitFailed, kFailedText},
      {"exception", kLong, kThrows, CupsFailure(), kMsgPrinterInitFailed, kFailedText},
      // A late result still counts; only abandoned threads leave the time-out standing.
      {"late success", 50, kSucceeds, {}, kMsgPrinterInitSucceeded, kSucceededText},
      {"late failure", 20, kFails, CupsFailure(), kMsgPrinterStatusDetail, kDetailText},
      {"timeout zero, late success", 0, kSucceeds, {}, kMsgPrinterInitSucceeded, kSucceededText},
      {"abandoned after the time-out", 0, kSucceeds, {}, kMsgPrinterInitTimedOut, kTimedOutText},
  };
  for (const auto& [name, timeout, ending, said, code, text] : rows) {
    SCOPED_TRACE(name);
    Harness run;
    const auto probe = [gated = run.gate->Probe(), ending, said](NReportMessageParams& params) {
      gated(params);
      params = said;
      if (ending == kThrows) throw std::runtime_error("back end crashed");
      return ending == kSucceeds;
    };
    run.startup->Initialize(timeout, probe, run.log->Notifier());
    // The probe may start only after a time-out; it is held until released.
    const bool timesOut = timeout != kLong;
    const bool abandon = code == kMsgPrinterInitTimedOut;
    ASSERT_TRUE(run.gate->WaitForCalls(1));
    ASSERT_TRUE(NEventually([&] { return run.startup->GetState() == (timesOut ? kFailed : kInitializing); }));
    EXPECT_EQ(run.Status(), timesOut ? kTimedOutText : kInitializingText);
    EXPECT_EQ(run.Told(), Words());
    if (abandon) run.startup->Abandon();
    run.gate->Open(true);
    ASSERT_TRUE(run.SharesSettleAt(timesOut ? 1 : 2)) << "the worker has ended; a long watchdog waits on";
    const bool succeeded = ending == kSucceeds && !abandon;
    EXPECT_EQ(run.startup->GetState(), succeeded ? kSucceeded : kFailed);
    EXPECT_EQ(run.startup->GetStatus().GetCode(), code);
    EXPECT_EQ(run.Status(), text);
    EXPECT_EQ(run.Told(), (abandon ? Words() : Words{{succeeded, code, text, false}}));
  }
}

// Suspend ends only a finished start, and says so on its caller's thread;
// Resume starts again, with the first parameters, unless a start is under
// way; a second Initialize does nothing at all. A start under way runs to
// its end.
TEST_F(NPrinterStartupTest, LaterCallsFromEachState) {
  enum Call { kSuspend, kResume };
  // From, the call, then the state and the status right after it, and how
  // many starts there have been in all.
  const std::tuple<const char*, NPrinterStartup::State, Call, NPrinterStartup::State, std::string, int> rows[] = {
      {"suspend while initialising", kInitializing, kSuspend, kInitializing, kInitializingText, 1},
      {"suspend a success", kSucceeded, kSuspend, kSuspended, kSkeldonText, 1},
      {"suspend a failure", kFailed, kSuspend, kSuspended, kSkeldonText, 1},
      {"suspend again", kSuspended, kSuspend, kSuspended, kHibernateText, 1},
      {"resume while initialising", kInitializing, kResume, kInitializing, kInitializingText, 1},
      {"resume a suspension", kSuspended, kResume, kInitializing, kInitializingText, 2},
      {"resume a failure", kFailed, kResume, kInitializing, kInitializingText, 2},
      {"resume a success", kSucceeded, kResume, kInitializing, kInitializingText, 2},
  };
  for (const auto& [name, from, call, state, text, starts] : rows) {
    SCOPED_TRACE(name);
    Harness run, other;
    run.Start();
    ASSERT_TRUE(run.gate->WaitForCalls(1));
    if (from != kInitializing) {
      run.gate->Open(from != kFailed);
      ASSERT_TRUE(run.log->WaitForCalls(1));
    }
    if (from == kSuspended) run.startup->Suspend(Hibernate());
    const std::size_t before = run.Told().size();
    run.gate->Close();
    other.gate->Open(false);
    run.startup->Initialize(0, other.gate->Probe(), other.log->Notifier());
    if (call == kSuspend) run.startup->Suspend(Message(0x61380022, u"Skeldon"));
    if (call == kResume) run.startup->Resume();
    EXPECT_EQ(run.startup->GetState(), state);
    EXPECT_EQ(run.Status(), text);
    const bool told = call == kSuspend && state != from;
    EXPECT_EQ(run.Told(before), (told ? Words{{false, 0x61380022u, kSkeldonText, true}} : Words()));
    ASSERT_TRUE(run.gate->WaitForCalls(starts));
    run.gate->Open(true);
    ASSERT_TRUE(run.SharesSettleAt(1 + starts)) << "each start has its watchdog";
    EXPECT_EQ(run.gate->Calls(), starts);
    EXPECT_EQ(other.gate->Calls(), 0);
    EXPECT_EQ(other.Told(), Words());
    const Words finished{{true, kMsgPrinterInitSucceeded, kSucceededText, false}};
    EXPECT_EQ(run.Told(before + (told ? 1 : 0)), state == kInitializing ? finished : Words());
  }
}

TEST_F(NPrinterStartupTest, WorksWithoutANotifier) {
  startup->Initialize(kLong, gate->Probe(), nullptr);
  gate->Open(true);
  ASSERT_TRUE(NEventually([&] { return startup->GetState() == kSucceeded; }));
  startup->Suspend(Hibernate());
  EXPECT_EQ(startup->GetState(), kSuspended);
}

TEST_F(NPrinterStartupTest, ThreadsKeepTheObjectAliveAfterItsOwnerLetsGo) {
  Start();
  ASSERT_TRUE(gate->WaitForCalls(1));
  const std::weak_ptr<NPrinterStartup> watch = startup;
  startup.reset();
  EXPECT_FALSE(watch.expired());
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  EXPECT_TRUE(log->Calls()[0].succeeded);
  // The watchdog waits out its long timeout; the worker has let go.
  EXPECT_TRUE(NEventually([&] { return watch.use_count() <= 1; }));
}

TEST_F(NPrinterStartupTest, ConcurrentCallersSeeConsistentStates) {
  startup->Initialize(
      1, [](NReportMessageParams&) { return true; }, log->Notifier());
  std::atomic<bool> stop = false;
  std::vector<std::thread> callers;
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([&, t] {
      for (int i = 0; i < 200 && !stop; ++i) {
        if ((i + t) % 3 == 0) startup->Suspend(Hibernate());
        if ((i + t) % 3 == 1) startup->Resume();
        const NPrinterStartup::State state = startup->GetState();
        if (state < kSuspended || state > kFailed || startup->GetStatus().GetCode() == 0) stop = true;
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_FALSE(stop) << "a state out of range or an empty status";
  ASSERT_TRUE(SharesSettleAt(1));
  EXPECT_NE(startup->GetState(), kInitializing);
  // Every word is one of the two kinds, and successes say so.
  for (const auto& call : log->Calls()) EXPECT_EQ(call.text, call.succeeded ? kSucceededText : kHibernateText);
}

}  // namespace
