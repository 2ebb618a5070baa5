#include "printing/NPrinterStartup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "printing/NPrinterTestDoubles.h"

namespace {

constexpr std::uint64_t kLongTimeout = 600000;  // never reached by a test
const std::string kSucceeded = "Printer initialization succeeded\r\n";
const std::string kFailed = "Printer initialization failed\r\n";
const std::string kTimedOut = "Printer initialization timed out\r\n";
const std::string kInitializing = "Initializing printer\r\n";

std::string StatusText(const NPrinterStartup& startup) { return startup.GetStatus().GetText().ToUtf8(); }

// A failure detail the way a back end reports one.
NReportMessageParams CupsFailure() {
  NReportMessageParams params(0xE1380208);
  params.AddArgument(u"Bad file descriptor");
  return params;
}

class NPrinterStartupTest : public testing::Test {
 protected:
  void TearDown() override {
    // No thread stays blocked in a probe, and none that returns after the
    // test looks anything up while the process may be exiting.
    if (startup) startup->Abandon();
    gate->Open(true);
  }

  // Waits until the object's shares come to `count`: the test's own, and
  // one for each thread still running. A watchdog holds its share until its
  // timeout has passed, so with long timeouts this counts the starts.
  bool SharesSettleAt(long count) {
    return NEventually([&] { return startup.use_count() == count; });
  }

  void StartAndSucceed() {
    startup->Initialize(kLongTimeout, gate->Probe(), log->Notifier());
    gate->Open(true);
    ASSERT_TRUE(log->WaitForCalls(1));
    ASSERT_EQ(startup->GetState(), NPrinterStartup::kSucceeded);
  }

  std::shared_ptr<NPrinterStartup> startup = NPrinterStartup::Create();
  std::shared_ptr<NProbeGate> gate = NProbeGate::Create();
  std::shared_ptr<NNotifierLog> log = NNotifierLog::Create();
};

TEST_F(NPrinterStartupTest, BeforeInitializeNothingRuns) {
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterPreparing);
  EXPECT_EQ(StatusText(*startup), "Preparing to initialize printer\r\n");
  startup->Resume();
  startup->Suspend(NReportMessageParams(kMsgPrinterSuspendedForHibernation));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterPreparing);
  EXPECT_EQ(startup.use_count(), 1) << "no thread was started";
  // Without a probe there is nothing to remember, so a later call starts.
  startup->Initialize(kLongTimeout, nullptr, log->Notifier());
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
  startup->Initialize(kLongTimeout, gate->Probe(), log->Notifier());
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kInitializing);
}

TEST_F(NPrinterStartupTest, ProbeThatSucceeds) {
  startup->Initialize(kLongTimeout, gate->Probe(), log->Notifier());
  ASSERT_TRUE(gate->WaitForCalls(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kInitializing);
  EXPECT_EQ(StatusText(*startup), kInitializing);
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSucceeded);
  EXPECT_EQ(StatusText(*startup), kSucceeded);
  ASSERT_TRUE(SharesSettleAt(2)) << "the worker has ended, the watchdog waits on";
  const auto calls = log->Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_TRUE(calls[0].succeeded);
  EXPECT_EQ(calls[0].code, kMsgPrinterInitSucceeded);
  EXPECT_EQ(calls[0].text, kSucceeded);
  EXPECT_NE(calls[0].thread, std::this_thread::get_id()) << "the worker tells";
}

TEST_F(NPrinterStartupTest, ProbeThatFailsWithADetailShowsBoth) {
  startup->Initialize(kLongTimeout, gate->Probe(), log->Notifier());
  gate->Open(false, CupsFailure());
  ASSERT_TRUE(log->WaitForCalls(1));
  const std::string expected = "Printer initialization failed: CUPS destinations: Bad file descriptor\r\n";
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterStatusDetail);
  EXPECT_EQ(StatusText(*startup), expected);
  const auto calls = log->Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_FALSE(calls[0].succeeded);
  EXPECT_EQ(calls[0].text, expected);
}

TEST_F(NPrinterStartupTest, ProbeWithoutAnythingToSayFailsPlainly) {
  // "Status information unavailable", no message at all, and an exception.
  const std::vector<NPrinterStartup::Probe> probes = {
      [](NReportMessageParams& params) {
        params.SetCode(kMsgPrinterStatusUnavailable);
        return false;
      },
      [](NReportMessageParams&) { return false; },
      [](NReportMessageParams& params) -> bool {
        params.SetCode(0xE1380208);
        throw std::runtime_error("back end crashed");
      },
  };
  for (std::size_t i = 0; i < probes.size(); ++i) {
    const auto each = NPrinterStartup::Create();
    const auto calls = NNotifierLog::Create();
    each->Initialize(kLongTimeout, probes[i], calls->Notifier());
    ASSERT_TRUE(calls->WaitForCalls(1)) << i;
    EXPECT_EQ(each->GetState(), NPrinterStartup::kFailed) << i;
    EXPECT_EQ(each->GetStatus().GetCode(), kMsgPrinterInitFailed) << i;
    EXPECT_EQ(calls->Calls()[0].text, kFailed) << i;
  }
}

TEST_F(NPrinterStartupTest, ProbeHangingPastTheTimeoutThenSucceedingLate) {
  startup->Initialize(50, gate->Probe(), log->Notifier());
  ASSERT_TRUE(NEventually([&] { return startup->GetState() == NPrinterStartup::kFailed; }));
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterInitTimedOut);
  EXPECT_EQ(StatusText(*startup), kTimedOut);
  EXPECT_FALSE(startup->GetState() == NPrinterStartup::kSucceeded);
  EXPECT_TRUE(log->Calls().empty()) << "the watchdog does not notify";
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  ASSERT_TRUE(SharesSettleAt(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSucceeded);
  EXPECT_EQ(StatusText(*startup), kSucceeded);
  const auto calls = log->Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_TRUE(calls[0].succeeded);
}

TEST_F(NPrinterStartupTest, ProbeHangingPastTheTimeoutThenFailingLate) {
  startup->Initialize(20, gate->Probe(), log->Notifier());
  ASSERT_TRUE(NEventually([&] { return startup->GetState() == NPrinterStartup::kFailed; }));
  EXPECT_EQ(StatusText(*startup), kTimedOut);
  gate->Open(false, CupsFailure());
  ASSERT_TRUE(log->WaitForCalls(1));
  ASSERT_TRUE(SharesSettleAt(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterStatusDetail);
  EXPECT_EQ(log->Calls().size(), 1u);
}

TEST_F(NPrinterStartupTest, TimeoutZeroTimesOutAtOnceAndALateSuccessStillCounts) {
  startup->Initialize(0, gate->Probe(), log->Notifier());
  ASSERT_TRUE(NEventually([&] { return startup->GetState() == NPrinterStartup::kFailed; }));
  EXPECT_EQ(StatusText(*startup), kTimedOut);
  // The probe may start only after the time-out; it is held until released.
  ASSERT_TRUE(gate->WaitForCalls(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSucceeded);
  EXPECT_TRUE(log->Calls()[0].succeeded);
}

TEST_F(NPrinterStartupTest, ASecondInitializeDoesNothing) {
  StartAndSucceed();
  const auto otherGate = NProbeGate::Create();
  otherGate->Open(false);
  const auto otherLog = NNotifierLog::Create();
  startup->Initialize(0, otherGate->Probe(), otherLog->Notifier());
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSucceeded);
  // Not even after a suspension: only Resume starts again.
  startup->Suspend(NReportMessageParams(kMsgPrinterSuspendedForHibernation));
  startup->Initialize(0, otherGate->Probe(), otherLog->Notifier());
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
  // The remembered parameters are the first call's.
  startup->Resume();
  ASSERT_TRUE(log->WaitForCalls(3));
  EXPECT_EQ(gate->Calls(), 2);
  EXPECT_EQ(otherGate->Calls(), 0);
  EXPECT_TRUE(otherLog->Calls().empty());
  ASSERT_TRUE(SharesSettleAt(3)) << "two starts, each with its watchdog";
}

TEST_F(NPrinterStartupTest, SuspendWorksOnlyFromAFinishedState) {
  const NReportMessageParams hibernate(kMsgPrinterSuspendedForHibernation);
  // Initialising: nothing changes and nobody is told.
  startup->Initialize(kLongTimeout, gate->Probe(), log->Notifier());
  ASSERT_TRUE(gate->WaitForCalls(1));
  startup->Suspend(hibernate);
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kInitializing);
  EXPECT_EQ(StatusText(*startup), kInitializing);
  EXPECT_TRUE(log->Calls().empty());
  // Succeeded: suspended, with the reason as the status, told on this thread.
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  startup->Suspend(hibernate);
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
  EXPECT_EQ(StatusText(*startup), "The computer is about to hibernate. Printer functionality is being suspended.\r\n");
  auto calls = log->Calls();
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_FALSE(calls[1].succeeded);
  EXPECT_EQ(calls[1].code, kMsgPrinterSuspendedForHibernation);
  EXPECT_EQ(calls[1].thread, std::this_thread::get_id());
  // Suspended: nothing again.
  startup->Suspend(NReportMessageParams(kMsgPrinterInitFailed));
  EXPECT_EQ(startup->GetStatus().GetCode(), kMsgPrinterSuspendedForHibernation);
  EXPECT_EQ(log->Calls().size(), 2u);
  // Failed: suspended and told, like a success.
  gate->Close();
  startup->Resume();
  ASSERT_TRUE(gate->WaitForCalls(2));
  gate->Open(false, CupsFailure());
  ASSERT_TRUE(log->WaitForCalls(3));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  NReportMessageParams other(0x61380022);
  other.AddArgument(u"Skeldon");
  startup->Suspend(other);
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
  EXPECT_EQ(startup->GetStatus().GetText(), other.GetText());
  calls = log->Calls();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_FALSE(calls[3].succeeded);
  EXPECT_EQ(calls[3].code, 0x61380022u);
  EXPECT_EQ(calls[3].text,
            "The change to the Configuration Folder will take effect the next time you start Skeldon.\r\n");
}

TEST_F(NPrinterStartupTest, ResumeRestartsFromEveryStateButInitializing) {
  // Suspended after a success.
  StartAndSucceed();
  startup->Suspend(NReportMessageParams(kMsgPrinterSuspendedForHibernation));
  gate->Close();
  startup->Resume();
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kInitializing);
  EXPECT_EQ(StatusText(*startup), kInitializing);
  ASSERT_TRUE(gate->WaitForCalls(2));
  // Initialising: a second Resume starts nothing.
  startup->Resume();
  gate->Open(false);
  ASSERT_TRUE(log->WaitForCalls(3));
  ASSERT_TRUE(SharesSettleAt(3)) << "two starts, each with its watchdog";
  EXPECT_EQ(gate->Calls(), 2);
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  // Failed: straight back to initialising.
  gate->Close();
  startup->Resume();
  ASSERT_TRUE(gate->WaitForCalls(3));
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(4));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSucceeded);
  // Succeeded: likewise.
  gate->Close();
  startup->Resume();
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kInitializing);
  ASSERT_TRUE(gate->WaitForCalls(4));
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(5));
  ASSERT_TRUE(SharesSettleAt(5));
  const auto calls = log->Calls();
  const std::vector<bool> results = {true, false, false, true, true};
  ASSERT_EQ(calls.size(), results.size());
  for (std::size_t i = 0; i < calls.size(); ++i) EXPECT_EQ(calls[i].succeeded, results[i]) << i;
  EXPECT_EQ(calls[1].code, kMsgPrinterSuspendedForHibernation);
  EXPECT_EQ(calls[2].text, kFailed);
}

TEST_F(NPrinterStartupTest, WorksWithoutANotifier) {
  startup->Initialize(kLongTimeout, gate->Probe(), nullptr);
  gate->Open(true);
  ASSERT_TRUE(NEventually([&] { return startup->GetState() == NPrinterStartup::kSucceeded; }));
  startup->Suspend(NReportMessageParams(kMsgPrinterSuspendedForHibernation));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kSuspended);
}

TEST_F(NPrinterStartupTest, AbandonedThreadsEndWithoutAWord) {
  startup->Initialize(0, gate->Probe(), log->Notifier());
  ASSERT_TRUE(NEventually([&] { return startup->GetState() == NPrinterStartup::kFailed; }));
  startup->Abandon();
  gate->Open(true);
  ASSERT_TRUE(SharesSettleAt(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  EXPECT_EQ(StatusText(*startup), kTimedOut);
  EXPECT_TRUE(log->Calls().empty());
}

TEST_F(NPrinterStartupTest, ThreadsKeepTheObjectAliveAfterItsOwnerLetsGo) {
  startup->Initialize(kLongTimeout, gate->Probe(), log->Notifier());
  ASSERT_TRUE(gate->WaitForCalls(1));
  const std::weak_ptr<NPrinterStartup> watch = startup;
  startup.reset();
  EXPECT_FALSE(watch.expired());
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  EXPECT_TRUE(log->Calls()[0].succeeded);
  // The watchdog waits out its long timeout; the worker has let go.
  EXPECT_TRUE(NEventually([&] { return watch.use_count() <= 1; }));
  startup = NPrinterStartup::Create();
}

TEST_F(NPrinterStartupTest, ConcurrentCallersSeeConsistentStates) {
  startup->Initialize(
      1, [](NReportMessageParams&) { return true; }, log->Notifier());
  std::atomic<bool> stop = false;
  std::vector<std::thread> callers;
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([&, t] {
      for (int i = 0; i < 200 && !stop; ++i) {
        if ((i + t) % 3 == 0) startup->Suspend(NReportMessageParams(kMsgPrinterSuspendedForHibernation));
        if ((i + t) % 3 == 1) startup->Resume();
        const NPrinterStartup::State state = startup->GetState();
        const std::uint32_t code = startup->GetStatus().GetCode();
        if (state < NPrinterStartup::kSuspended || state > NPrinterStartup::kFailed) stop = true;
        if (code == 0) stop = true;
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_FALSE(stop) << "a state out of range or an empty status";
  ASSERT_TRUE(SharesSettleAt(1));
  EXPECT_NE(startup->GetState(), NPrinterStartup::kInitializing);
  // Every word is one of the two kinds, and successes say so.
  for (const NNotifierLog::Call& call : log->Calls()) {
    if (call.succeeded) {
      EXPECT_EQ(call.text, kSucceeded);
    } else {
      EXPECT_EQ(call.code, kMsgPrinterSuspendedForHibernation);
    }
  }
}

}  // namespace
