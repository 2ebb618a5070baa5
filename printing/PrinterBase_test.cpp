#include "printing/PrinterBase.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <thread>

#include "base/NUnknownPointer.h"
#include "printing/NFormatInches.h"
#include "printing/NPrinterTestDoubles.h"

namespace {

// Letter paper: the device cannot print the outer 0.25 in left and right,
// 0.2 in at the top and 0.3 in at the bottom.
constexpr PrinterBase::MarginLimits kLetter{0.25, 8.0, 0.2, 10.5, 8.5, 11.0};

class FakePrinter final : public PrinterBase {
 public:
  static NUnknownPointer<FakePrinter> Make(const MarginLimits& limits) {
    return NUnknownPointer<FakePrinter>::Adopt(new FakePrinter(limits));
  }
  bool CalculateMarginLimits(MarginLimits& limits, NReportMessageParams& params) override {
    ++calls;
    if (failure.GetCode() != 0) {
      params = failure;
      return false;
    }
    limits = m_limits;
    return true;
  }

  NReportMessageParams failure;
  int calls = 0;

 private:
  explicit FakePrinter(const MarginLimits& limits) : m_limits(limits) {}
  MarginLimits m_limits;
};

std::string Text(const NReportMessageParams& params) { return params.GetText().ToUtf8(); }

TEST(PrinterBaseTest, RoundMarginKeepsThreeDecimalsRoundingHalfUp) {
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(0.12345), 0.123);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(0.1235), 0.124);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(0.0625), 0.063);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(0.0624999), 0.062);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(1.5), 1.5);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(0), 0);
}

TEST(PrinterBaseTest, RoundMarginTruncatesNegativeValuesTowardZeroAfterAddingAHalf) {
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(-0.0004), 0);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(-0.0006), 0);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(-0.0016), -0.001);
  // Not half away from zero: -500 + 0.5 truncates to -499.
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(-0.5), -0.499);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(-1.25), -1.249);
}

TEST(PrinterBaseTest, RoundMarginSaturatesWhereThe32BitValueEnds) {
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(1e300), 2147483.647);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(-1e300), -2147483.648);
  EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(PrinterBaseTest, InchesShowAtMostThreeDecimals) {
  EXPECT_EQ(NFormatInches(0.25).ToUtf8(), "0.25");
  EXPECT_EQ(NFormatInches(0.3).ToUtf8(), "0.3");
  EXPECT_EQ(NFormatInches(1.0).ToUtf8(), "1");
  EXPECT_EQ(NFormatInches(0.1235).ToUtf8(), "0.124");
  EXPECT_EQ(NFormatInches(-0.0004).ToUtf8(), "0");
  EXPECT_EQ(NFormatInches(-0.5).ToUtf8(), "-0.499");
  EXPECT_EQ(NFormatInches(10.2).ToUtf8(), "10.2");
}

TEST(PrinterBaseTest, CalculateMarginsGivesThePrintedAreasEdgesInsideThePrintableArea) {
  const auto printer = FakePrinter::Make(kLetter);
  PrinterBase::Margins margins{1.0, 0.75, 0.5, 0.6};
  PrinterBase::MarginLimits limits;
  NReportMessageParams params;
  ASSERT_TRUE(printer->CalculateMargins(margins, limits, params));
  EXPECT_DOUBLE_EQ(margins.left, 0.75);    // 1 - 0.25
  EXPECT_DOUBLE_EQ(margins.right, 7.5);    // 8.5 - 0.75 - 0.25
  EXPECT_DOUBLE_EQ(margins.top, 0.3);      // 0.5 - 0.2
  EXPECT_DOUBLE_EQ(margins.bottom, 10.2);  // 11 - 0.6 - 0.2
  EXPECT_DOUBLE_EQ(limits.pageWidth, 8.5);
  EXPECT_DOUBLE_EQ(limits.printableHeight, 10.5);
  EXPECT_EQ(params.GetCode(), 0u);
}

TEST(PrinterBaseTest, CalculateMarginsPassesOnWhyTheLimitsAreMissing) {
  const auto printer = FakePrinter::Make(kLetter);
  printer->failure = NReportMessageParams(5);
  PrinterBase::Margins margins{1.0, 0.75, 0.5, 0.6};
  PrinterBase::MarginLimits limits;
  NReportMessageParams params;
  EXPECT_FALSE(printer->CalculateMargins(margins, limits, params));
  EXPECT_EQ(params.GetCode(), 5u);
  EXPECT_DOUBLE_EQ(margins.right, 0.75) << "the margins stay as they were";

  double minimum = -1;
  NReportMessageParams single, all;
  EXPECT_EQ(printer->ValidateMargin(NMarginData{1, 1, 1, 1}, PrinterBase::Margin::kLeft, minimum, single),
            PrinterBase::MarginValidationResult::kNoLimits);
  EXPECT_EQ(single.GetCode(), 5u);
  EXPECT_EQ(minimum, -1);
  EXPECT_EQ(printer->ValidateMargins(NMarginData{1, 1, 1, 1}, all), PrinterBase::MarginValidationResult::kNoLimits);
  EXPECT_EQ(all.GetCode(), 5u);
}

TEST(PrinterBaseTest, ValidateMarginChecksEachMarginAgainstItsMinimum) {
  using Result = PrinterBase::MarginValidationResult;
  const auto printer = FakePrinter::Make(kLetter);
  const struct {
    PrinterBase::Margin margin;
    NMarginData tooSmall;
    Result failure;
    double minimum;
    std::string text;
  } cases[] = {
      {PrinterBase::Margin::kLeft,
       {0.2, 1, 1, 1},
       Result::kLeftBelowMinimum,
       0.25,
       "The minimum left margin is 0.25\r\n"},
      {PrinterBase::Margin::kRight,
       {1, 0.249, 1, 1},
       Result::kRightBelowMinimum,
       0.25,
       "The minimum right margin is 0.25\r\n"},
      {PrinterBase::Margin::kTop, {1, 1, 0, 1}, Result::kTopBelowMinimum, 0.2, "The minimum top margin is 0.2\r\n"},
      {PrinterBase::Margin::kBottom,
       {1, 1, 1, 0.29},
       Result::kBottomBelowMinimum,
       0.3,
       "The minimum bottom margin is 0.3\r\n"},
  };
  for (const auto& c : cases) {
    double minimum = 0;
    NReportMessageParams params;
    EXPECT_EQ(printer->ValidateMargin(c.tooSmall, c.margin, minimum, params), c.failure) << c.text;
    EXPECT_EQ(Text(params), c.text);
    EXPECT_DOUBLE_EQ(minimum, c.minimum) << c.text;
    // The other margins of the same data are not this check's business.
    NReportMessageParams fine;
    const PrinterBase::Margin other =
        c.margin == PrinterBase::Margin::kLeft ? PrinterBase::Margin::kTop : PrinterBase::Margin::kLeft;
    EXPECT_EQ(printer->ValidateMargin(c.tooSmall, other, minimum, fine), Result::kValid) << c.text;
    EXPECT_EQ(fine.GetCode(), 0u);
  }
}

TEST(PrinterBaseTest, MarginsCompareAtThreeDecimals) {
  using Result = PrinterBase::MarginValidationResult;
  const auto printer = FakePrinter::Make(kLetter);
  double minimum = 0;
  NReportMessageParams params;
  // Exactly the minimum, and a hair below it that rounds to it, pass.
  EXPECT_EQ(printer->ValidateMargin({0.25, 1, 1, 1}, PrinterBase::Margin::kLeft, minimum, params), Result::kValid);
  EXPECT_EQ(printer->ValidateMargin({0.2496, 1, 1, 1}, PrinterBase::Margin::kLeft, minimum, params), Result::kValid);
  EXPECT_EQ(printer->ValidateMargin({0.2494, 1, 1, 1}, PrinterBase::Margin::kLeft, minimum, params),
            Result::kLeftBelowMinimum);
  // The bottom minimum is 11 - 0.2 - 10.5, which is not exactly 0.3 in
  // binary; 0.3 still passes.
  NReportMessageParams bottom;
  EXPECT_EQ(printer->ValidateMargin({1, 1, 1, 0.3}, PrinterBase::Margin::kBottom, minimum, bottom), Result::kValid);
  EXPECT_EQ(bottom.GetCode(), 0u);
}

TEST(PrinterBaseTest, NegativeMarginsAreBelowEveryMinimum) {
  using Result = PrinterBase::MarginValidationResult;
  // A borderless device: no minimum but zero.
  const auto printer = FakePrinter::Make({0, 8.5, 0, 11, 8.5, 11});
  double minimum = 1;
  NReportMessageParams params;
  EXPECT_EQ(printer->ValidateMargin({-0.5, 0, 0, 0}, PrinterBase::Margin::kLeft, minimum, params),
            Result::kLeftBelowMinimum);
  EXPECT_EQ(Text(params), "The minimum left margin is 0\r\n");
  EXPECT_DOUBLE_EQ(minimum, 0);
  // Rounded to zero, a tiny negative margin is none.
  NReportMessageParams tiny;
  EXPECT_EQ(printer->ValidateMargin({-0.0004, 0, 0, 0}, PrinterBase::Margin::kLeft, minimum, tiny), Result::kValid);
}

TEST(PrinterBaseTest, DeviceClaimingMoreThanItsPaperIsHeldToThePaper) {
  const auto printer = FakePrinter::Make({-0.1, 9.0, 0, 12.0, 8.5, 11});
  double minimum = 1;
  NReportMessageParams params;
  EXPECT_EQ(printer->ValidateMargin({0, 0, 0, 0}, PrinterBase::Margin::kRight, minimum, params),
            PrinterBase::MarginValidationResult::kValid);
  EXPECT_DOUBLE_EQ(minimum, 0);
  EXPECT_EQ(printer->ValidateMargin({0, 0, 0, 0}, PrinterBase::Margin::kLeft, minimum, params),
            PrinterBase::MarginValidationResult::kValid);
  EXPECT_DOUBLE_EQ(minimum, 0);
}

TEST(PrinterBaseTest, MarginsThatLeaveNoPrintableAreaAreRefused) {
  using Result = PrinterBase::MarginValidationResult;
  const auto printer = FakePrinter::Make(kLetter);
  const NMarginData overlapping[] = {
      {4.25, 4.25, 1, 1},  // left and right meet
      {5, 4, 1, 1},        // and overlap
      {1, 1, 6, 5},        // top and bottom meet
      {9, 0.5, 1, 1},      // left beyond the paper
      {1, 1, 1, 12},       // bottom beyond the paper
  };
  for (const NMarginData& margins : overlapping) {
    double minimum = 0;
    NReportMessageParams params;
    EXPECT_EQ(printer->ValidateMargin(margins, PrinterBase::Margin::kLeft, minimum, params), Result::kNoPrintableArea)
        << margins.left << " " << margins.right << " " << margins.top << " " << margins.bottom;
    EXPECT_EQ(Text(params), "Margins are either off the page or overlap\r\n");
  }
  double minimum = 0;
  NReportMessageParams params;
  EXPECT_EQ(printer->ValidateMargin({4.249, 4.25, 1, 1}, PrinterBase::Margin::kLeft, minimum, params), Result::kValid);
}

TEST(PrinterBaseTest, ValidateMarginsListsEveryFailureInOneMessage) {
  using Result = PrinterBase::MarginValidationResult;
  const auto printer = FakePrinter::Make(kLetter);
  NReportMessageParams params;
  EXPECT_EQ(printer->ValidateMargins({0.1, 0.5, 0.5, 0.1}, params), Result::kLeftBelowMinimum);
  EXPECT_EQ(params.GetCode(), kMsgMarginsInvalid);
  EXPECT_EQ(Text(params),
            "Please modify the print margin value(s) to adhere to the following:\r\n\r\n"
            "The minimum left margin is 0.25\r\n"
            "The minimum bottom margin is 0.3\r\n");

  NReportMessageParams all;
  EXPECT_EQ(printer->ValidateMargins({0, 9, 0, 0}, all), Result::kLeftBelowMinimum);
  EXPECT_EQ(Text(all),
            "Please modify the print margin value(s) to adhere to the following:\r\n\r\n"
            "The minimum left margin is 0.25\r\n"
            "The minimum top margin is 0.2\r\n"
            "The minimum bottom margin is 0.3\r\n"
            "Margins are either off the page or overlap\r\n");

  NReportMessageParams overlap;
  EXPECT_EQ(printer->ValidateMargins({1, 1, 6, 6}, overlap), Result::kNoPrintableArea);
  EXPECT_EQ(Text(overlap),
            "Please modify the print margin value(s) to adhere to the following:\r\n\r\n"
            "Margins are either off the page or overlap\r\n");

  NReportMessageParams untouched;
  EXPECT_EQ(printer->ValidateMargins({0.25, 0.25, 0.2, 0.3}, untouched), Result::kValid);
  EXPECT_EQ(untouched.GetCode(), 0u);
  EXPECT_EQ(printer->calls, 4);
}

// The process's own service, reached through the static interface. The
// only test of this executable that starts it: it starts once per process.
TEST(PrinterBaseTest, ProcessServiceRunsTheWholeCycle) {
  const auto gate = NProbeGate::Create();
  const auto log = NNotifierLog::Create();
  EXPECT_EQ(PrinterBase::GetState(), 0);
  EXPECT_EQ(PrinterBase::GetStatus().GetCode(), kMsgPrinterPreparing);
  PrinterBase::Resume();
  EXPECT_EQ(PrinterBase::GetState(), 0);

  PrinterBase::Initialize(600000, gate->Probe(), log->Notifier());
  EXPECT_EQ(PrinterBase::GetState(), 1);
  EXPECT_FALSE(PrinterBase::HasInitializationSucceeded());
  EXPECT_EQ(Text(PrinterBase::GetStatus()), "Initializing printer\r\n");
  gate->Open(true);
  ASSERT_TRUE(log->WaitForCalls(1));
  EXPECT_TRUE(PrinterBase::HasInitializationSucceeded());

  PrinterBase::Initialize(
      0, [](NReportMessageParams&) { return false; }, nullptr);
  EXPECT_TRUE(PrinterBase::HasInitializationSucceeded()) << "a second Initialize does nothing";

  PrinterBase::Suspend(NReportMessageParams(kMsgPrinterSuspendedForHibernation));
  EXPECT_EQ(PrinterBase::GetState(), 0);
  EXPECT_FALSE(PrinterBase::HasInitializationSucceeded());
  EXPECT_EQ(Text(PrinterBase::GetStatus()),
            "The computer is about to hibernate. Printer functionality is being suspended.\r\n");
  PrinterBase::Resume();
  ASSERT_TRUE(log->WaitForCalls(3));
  EXPECT_TRUE(PrinterBase::HasInitializationSucceeded());
  EXPECT_EQ(gate->Calls(), 2);
  const auto calls = log->Calls();
  EXPECT_TRUE(calls[0].succeeded);
  EXPECT_FALSE(calls[1].succeeded);
  EXPECT_TRUE(calls[2].succeeded);
}

// Set before Initialize, so it runs after the service's own exit hook: the
// probe returns while the process is exiting.
std::shared_ptr<NProbeGate> g_exitGate;
void OpenGateDuringExit() {
  g_exitGate->Open(false, NReportMessageParams(0xE1380208));
  g_exitGate->WaitForReturns(1);
  // Time for the worker to reach the point where it would report.
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

TEST(PrinterBaseDeathTest, ProcessThatExitsWhileTheServiceStartsExitsCleanly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // A probe that never returns.
  EXPECT_EXIT(
      {
        const auto gate = NProbeGate::Create();
        PrinterBase::Initialize(600000, gate->Probe(), [](bool, const NReportMessageParams&) { std::_Exit(3); });
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
  // A probe that returns once the exit has begun: the worker must neither
  // look up texts nor call the notifier then.
  EXPECT_EXIT(
      {
        g_exitGate = NProbeGate::Create();
        std::atexit(&OpenGateDuringExit);
        PrinterBase::Initialize(600000, g_exitGate->Probe(), [](bool, const NReportMessageParams&) { std::_Exit(3); });
        g_exitGate->WaitForCalls(1);
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
