#include "printing/PrinterBase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <thread>
#include <tuple>
#include <vector>

#include "base/NUnknownPointer.h"
#include "platform/testing/NFakePrinterDevices.h"
#include "printing/NFormatInches.h"
#include "printing/NPrinterTestDoubles.h"
#include "printing/Printer.h"

namespace {

using enum PrinterBase::Margin;
using enum PrinterBase::MarginValidationResult;

// A device's limits, and the minimum margins they make: left, right, top,
// bottom.
struct Device {
  PrinterBase::MarginLimits limits;
  double minima[4];
};
// Letter paper: the device cannot print the outer 0.25 in left and right,
// 0.2 in at the top and 0.3 in at the bottom.
constexpr Device kLetter{{0.25, 8.0, 0.2, 10.5, 8.5, 11.0}, {0.25, 0.25, 0.2, 0.3}};
constexpr Device kBorderless{{0, 8.5, 0, 11, 8.5, 11}, {0, 0, 0, 0}};
// More than its paper, which still holds it: no minimum below zero.
constexpr Device kOversized{{-0.1, 9.0, 0, 12.0, 8.5, 11}, {0, 0, 0, 0}};

const std::string kLeftMin = "The minimum left margin is 0.25\r\n";
const std::string kRightMin = "The minimum right margin is 0.25\r\n";
const std::string kTopMin = "The minimum top margin is 0.2\r\n";
const std::string kBottomMin = "The minimum bottom margin is 0.3\r\n";
const std::string kOffPage = "Margins are either off the page or overlap\r\n";
const std::string kInvalidHead = "Please modify the print margin value(s) to adhere to the following:\r\n\r\n";

std::string Text(const NReportMessageParams& params) { return params.GetText().ToUtf8(); }

// A device with the given limits, or, once `failure` is set, without any.
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

TEST(PrinterBaseTest, RoundMarginKeepsThreeDecimalsAndInchesShowThem) {
  const std::tuple<const char*, double, double, std::string> rows[] = {
      {"three decimals", 0.12345, 0.123, "0.123"},
      {"half up", 0.1235, 0.124, "0.124"},
      {"half up again", 0.0625, 0.063, "0.063"},
      {"below half", 0.0624999, 0.062, "0.062"},
      {"one decimal", 1.5, 1.5, "1.5"},
      {"zero", 0, 0, "0"},
      {"two decimals", 0.25, 0.25, "0.25"},
      {"not exact in binary", 0.3, 0.3, "0.3"},
      {"whole", 1.0, 1, "1"},
      {"tens", 10.2, 10.2, "10.2"},
      // A negative value is truncated toward zero after the half is added.
      {"tiny negative", -0.0004, 0, "0"},
      {"negative rounding to zero", -0.0006, 0, "0"},
      {"small negative", -0.0016, -0.001, "-0.001"},
      {"negative half, not away from zero", -0.5, -0.499, "-0.499"},
      {"negative", -1.25, -1.249, "-1.249"},
      // Saturates where the 32-bit value ends.
      {"huge", 1e300, 2147483.647, "2147483.647"},
      {"hugely negative", -1e300, -2147483.648, "-2147483.648"},
      {"not a number", std::numeric_limits<double>::quiet_NaN(), 0, "0"},
  };
  for (const auto& [name, value, rounded, shown] : rows) {
    SCOPED_TRACE(name);
    EXPECT_DOUBLE_EQ(PrinterBase::RoundMargin(value), rounded);
    EXPECT_EQ(NFormatInches(value).ToUtf8(), shown);
  }
}

TEST(PrinterBaseTest, CalculateMarginsGivesThePrintedAreasEdgesOrWhyTheLimitsAreMissing) {
  const auto printer = FakePrinter::Make(kLetter.limits);
  PrinterBase::Margins margins{1.0, 0.75, 0.5, 0.6};
  PrinterBase::MarginLimits limits;
  NReportMessageParams params, single, all;
  const auto edgesOf = [&] { return std::vector{margins.left, margins.right, margins.top, margins.bottom}; };
  ASSERT_TRUE(printer->CalculateMargins(margins, limits, params));
  // 1 - 0.25, 8.5 - 0.75 - 0.25, 0.5 - 0.2, 11 - 0.6 - 0.2
  const std::vector<double> edges{0.75, 7.5, 0.3, 10.2};
  EXPECT_THAT(edgesOf(), testing::Pointwise(testing::DoubleEq(), edges));
  EXPECT_DOUBLE_EQ(limits.pageWidth, 8.5);
  EXPECT_DOUBLE_EQ(limits.printableHeight, 10.5);
  EXPECT_EQ(params.GetCode(), 0u);

  printer->failure = NReportMessageParams(5);
  EXPECT_FALSE(printer->CalculateMargins(margins, limits, params));
  EXPECT_EQ(params.GetCode(), 5u);
  EXPECT_THAT(edgesOf(), testing::Pointwise(testing::DoubleEq(), edges)) << "the margins stay as they were";
  double minimum = -1;
  EXPECT_EQ(printer->ValidateMargin(NMarginData{1, 1, 1, 1}, kLeft, minimum, single), kNoLimits);
  EXPECT_EQ(single.GetCode(), 5u);
  EXPECT_EQ(minimum, -1);
  EXPECT_EQ(printer->ValidateMargins(NMarginData{1, 1, 1, 1}, all), kNoLimits);
  EXPECT_EQ(all.GetCode(), 5u);
}

// Each margin against its minimum, then the printable area; one margin's
// check is not about the others. ValidateMargins finds the same.
TEST(PrinterBaseTest, ValidateMarginChecksOneMinimumAndThePrintableArea) {
  // What the check of the margin that fails, or of every margin, says.
  const std::tuple<const char*, NMarginData, PrinterBase::MarginValidationResult, std::string, Device> rows[] = {
      {"left below", {0.2, 1, 1, 1}, kLeftBelowMinimum, kLeftMin, kLetter},
      {"right below", {1, 0.249, 1, 1}, kRightBelowMinimum, kRightMin, kLetter},
      {"top below", {1, 1, 0, 1}, kTopBelowMinimum, kTopMin, kLetter},
      {"bottom below", {1, 1, 1, 0.29}, kBottomBelowMinimum, kBottomMin, kLetter},
      // Margins compare at three decimals.
      {"exactly every minimum", {0.25, 0.25, 0.2, 0.3}, kValid, "", kLetter},
      {"a hair below, rounding to it", {0.2496, 1, 1, 1}, kValid, "", kLetter},
      {"rounding below it", {0.2494, 1, 1, 1}, kLeftBelowMinimum, kLeftMin, kLetter},
      // 11 - 0.2 - 10.5 is not exactly 0.3 in binary.
      {"an inexact minimum", {1, 1, 1, 0.3}, kValid, "", kLetter},
      {"negative, borderless", {-0.5, 0, 0, 0}, kLeftBelowMinimum, "The minimum left margin is 0\r\n", kBorderless},
      {"tiny negative rounding to none", {-0.0004, 0, 0, 0}, kValid, "", kBorderless},
      {"a device claiming more than its paper", {0, 0, 0, 0}, kValid, "", kOversized},
      {"left and right meet", {4.25, 4.25, 1, 1}, kNoPrintableArea, kOffPage, kLetter},
      {"left and right overlap", {5, 4, 1, 1}, kNoPrintableArea, kOffPage, kLetter},
      {"top and bottom meet", {1, 1, 6, 5}, kNoPrintableArea, kOffPage, kLetter},
      {"top and bottom overlap", {1, 1, 6, 6}, kNoPrintableArea, kOffPage, kLetter},
      {"left beyond the paper", {9, 0.5, 1, 1}, kNoPrintableArea, kOffPage, kLetter},
      {"bottom beyond the paper", {1, 1, 1, 12}, kNoPrintableArea, kOffPage, kLetter},
      {"left and right nearly meet", {4.249, 4.25, 1, 1}, kValid, "", kLetter},
  };
  const PrinterBase::MarginValidationResult below[] = {kLeftBelowMinimum, kRightBelowMinimum, kTopBelowMinimum,
                                                       kBottomBelowMinimum};
  const char* const sides[] = {"left", "right", "top", "bottom"};
  for (const auto& [name, margins, result, text, device] : rows) {
    SCOPED_TRACE(name);
    const auto printer = FakePrinter::Make(device.limits);
    for (const int i : {0, 1, 2, 3}) {
      SCOPED_TRACE(testing::Message() << "the " << sides[i] << " margin");
      const bool named = result == kNoPrintableArea || result == below[i];
      double minimum = -1;
      NReportMessageParams params;
      EXPECT_EQ(printer->ValidateMargin(margins, PrinterBase::Margin(i), minimum, params), named ? result : kValid);
      EXPECT_DOUBLE_EQ(minimum, device.minima[i]);
      EXPECT_EQ(params.GetCode() == 0 ? "" : Text(params), named ? text : "");
    }
    NReportMessageParams all;
    EXPECT_EQ(printer->ValidateMargins(margins, all), result);
    EXPECT_EQ(all.GetCode() == 0 ? "" : Text(all), text.empty() ? "" : kInvalidHead + text);
  }
}

TEST(PrinterBaseTest, ValidateMarginsListsEveryFailureInOneMessage) {
  const auto printer = FakePrinter::Make(kLetter.limits);
  NReportMessageParams some, all;
  EXPECT_EQ(printer->ValidateMargins({0.1, 0.5, 0.5, 0.1}, some), kLeftBelowMinimum);
  EXPECT_EQ(some.GetCode(), kMsgMarginsInvalid);
  EXPECT_EQ(Text(some), kInvalidHead + kLeftMin + kBottomMin);
  EXPECT_EQ(printer->ValidateMargins({0, 9, 0, 0}, all), kLeftBelowMinimum);
  EXPECT_EQ(Text(all), kInvalidHead + kLeftMin + kTopMin + kBottomMin + kOffPage);
  EXPECT_EQ(printer->calls, 2) << "the device is asked once a call";
}

// The process's own service, reached through the static interface. The
// only test of this executable that starts it: it starts once per process.
TEST(PrinterBaseTest, ProcessServiceRunsTheWholeCycle) {
  const auto gate = NProbeGate::Create();
  const auto log = NNotifierLog::Create();
  PrinterBase::Resume();
  EXPECT_EQ(PrinterBase::GetState(), 0) << "nothing to resume yet";
  EXPECT_EQ(PrinterBase::GetStatus().GetCode(), kMsgPrinterPreparing);
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
  EXPECT_EQ(PrinterBase::GetStatus().GetCode(), kMsgPrinterSuspendedForHibernation);
  PrinterBase::Resume();
  ASSERT_TRUE(log->WaitForCalls(3));
  EXPECT_TRUE(PrinterBase::HasInitializationSucceeded());
  EXPECT_EQ(gate->Calls(), 2);
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

// Exits while the probe never returns, or while it returns once the exit
// has begun: the worker must then neither look up texts nor call the notifier.
void ExitWhileTheServiceStarts(bool probeReturnsDuringExit) {
  g_exitGate = NProbeGate::Create();
  if (probeReturnsDuringExit) std::atexit(&OpenGateDuringExit);
  PrinterBase::Initialize(600000, g_exitGate->Probe(), [](bool, const NReportMessageParams&) { std::_Exit(3); });
  if (probeReturnsDuringExit) g_exitGate->WaitForCalls(1);
  std::exit(0);
}

TEST(PrinterBaseDeathTest, ProcessThatExitsWhileTheServiceStartsExitsCleanly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWhileTheServiceStarts(false), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(ExitWhileTheServiceStarts(true), testing::ExitedWithCode(0), "");
}

constexpr NPrinterPageArea kLetterPaper{8.5, 11.0, 0.25, 0.2, 8.0, 10.5};
const std::string kGone = "There is no printer named 'Gone'.\r\n";

class PrinterTest : public testing::Test {
 protected:
  void SetUp() override {
    devices.Add(u"Office Laser", kLetterPaper);
    devices.Add(u"Label/Wide", {8.27, 11.69, 0.17, 0.17, 7.93, 11.35});
    devices.SetDefault(u"Office Laser");
  }

  std::string Current() {
    const NUnknownPointer<Printer> current = Printer::GetCurrentPrinter();
    return current ? current->GetName().ToUtf8() : "(none)";
  }
  bool Select(std::u16string_view name, bool useDefaultWhenMissing = false) {
    return Printer::SelectCurrentPrinter(name, useDefaultWhenMissing, params, devices);
  }

  NFakePrinterDevices devices;
  NReportMessageParams params;
};

TEST_F(PrinterTest, ProbeStartsTheBackEndAndSaysWhyItCannot) {
  EXPECT_TRUE(Printer::Probe(devices, params));
  EXPECT_EQ(params.GetCode(), 0u);
  devices.FailStart({NPrinterError::Kind::kCupsDestinations, 1282, u"Bad file descriptor"});
  EXPECT_FALSE(Printer::Probe(devices, params));
  EXPECT_EQ(params.GetCode(), kMsgPrinterCupsDestinations);
  EXPECT_EQ(Text(params), "CUPS destinations: Bad file descriptor\r\n");
  devices.FailStart({NPrinterError::Kind::kSystem, 5, {}});
  EXPECT_FALSE(Printer::Probe(devices, params));
  EXPECT_EQ(params.GetCode(), 5u) << "a system code reads as the system's text";
}

TEST_F(PrinterTest, DefaultPrinter) {
  NUnicodeString name, kept(u"kept");
  EXPECT_TRUE(Printer::HasDefaultPrinter(devices));
  EXPECT_TRUE(Printer::GetDefaultPrinterW(name, params, devices));
  EXPECT_EQ(name, u"Office Laser");
  devices.SetDefault(u"");
  EXPECT_FALSE(Printer::HasDefaultPrinter(devices));
  EXPECT_FALSE(Printer::GetDefaultPrinterW(kept, params, devices));
  EXPECT_EQ(kept, u"kept");
  EXPECT_EQ(params.GetCode(), kMsgNoDefaultPrinter);
  EXPECT_EQ(Text(params), "There is no default printer.\r\n");
}

TEST_F(PrinterTest, SelectByName) {
  ASSERT_TRUE(Select(u"Label/Wide"));
  EXPECT_EQ(Current(), "Label/Wide");
  ASSERT_TRUE(Select(u""));
  EXPECT_EQ(Current(), "Office Laser") << "no name is the default printer";
  ASSERT_TRUE(Select(u"Label/Wide"));
  ASSERT_TRUE(Select(u"Gone", true));
  EXPECT_EQ(Current(), "Office Laser") << "a missing printer gives way to the default";
  EXPECT_EQ(params.GetCode(), 0u);
  ASSERT_TRUE(Select(u"Label/Wide"));
  EXPECT_FALSE(Select(u"Gone"));
  EXPECT_EQ(Text(params), kGone);
  EXPECT_EQ(Current(), "Label/Wide") << "a failed selection keeps the current printer";
  devices.SetDefault(u"");
  EXPECT_FALSE(Select(u"Gone", true));
  EXPECT_EQ(params.GetCode(), kMsgNoDefaultPrinter);
  EXPECT_EQ(Current(), "Label/Wide");
}

TEST_F(PrinterTest, SelectBySessionAndGlobalSettings) {
  // A session or none, whether it uses the global settings, its printer, the
  // global printer; then the printer selected, where "Label/Wide" was not.
  const std::tuple<const char*, bool, bool, const char16_t*, const char16_t*, std::string> rows[] = {
      {"no session, no global printer: the default", false, true, u"", u"", "Office Laser"},
      {"no session: the global printer", false, true, u"", u"Label/Wide", "Label/Wide"},
      {"a session using the global settings", true, true, u"Office Laser", u"Label/Wide", "Label/Wide"},
      {"a session's own printer", true, false, u"Label/Wide", u"Office Laser", "Label/Wide"},
      {"its printer gone: the default, not the global one", true, false, u"Gone", u"Label/Wide", "Office Laser"},
  };
  for (const auto& [name, hasSession, useGlobal, own, globalName, selected] : rows) {
    SCOPED_TRACE(name);
    ASSERT_TRUE(Select(selected == "Label/Wide" ? u"Office Laser" : u"Label/Wide"));
    NSessionPrinterSettings session{useGlobal, {}};
    session.settings.printerName = own;
    NPrinterSettings global;
    global.printerName = globalName;
    ASSERT_TRUE(Printer::SelectCurrentPrinter(hasSession ? &session : nullptr, global, params, devices));
    EXPECT_EQ(Current(), selected);
    EXPECT_EQ(params.GetCode(), 0u);
  }
}

TEST_F(PrinterTest, MarginLimitsComeFromThePrintersPaperOrSayWhyNot) {
  PrinterBase::MarginLimits limits;
  ASSERT_TRUE(Printer::Create(u"Office Laser", devices)->CalculateMarginLimits(limits, params));
  EXPECT_EQ((std::vector{limits.leftOffset, limits.printableWidth, limits.topOffset, limits.printableHeight,
                         limits.pageWidth, limits.pageHeight}),
            (std::vector{0.25, 8.0, 0.2, 10.5, 8.5, 11.0}));
  devices.AddWithoutPaper(u"Plotter", {NPrinterError::Kind::kCupsDestinations, 1030, u"No media information"});
  EXPECT_FALSE(Printer::Create(u"Plotter", devices)->CalculateMarginLimits(limits, params));
  EXPECT_EQ(Text(params), "CUPS destinations: No media information\r\n");
  EXPECT_FALSE(Printer::Create(u"Gone", devices)->CalculateMarginLimits(limits, params));
  EXPECT_EQ(Text(params), kGone);
}

}  // namespace
