#include "printing/Printer.h"

#include <gtest/gtest.h>

#include "platform/testing/NFakePrinterDevices.h"
#include "printing/NPrinterTestDoubles.h"

namespace {

constexpr NPrinterPageArea kLetter{8.5, 11.0, 0.25, 0.2, 8.0, 10.5};
constexpr NPrinterPageArea kA4{8.27, 11.69, 0.17, 0.17, 7.93, 11.35};

std::string Text(const NReportMessageParams& params) { return params.GetText().ToUtf8(); }

class PrinterTest : public testing::Test {
 protected:
  void SetUp() override {
    devices.Add(u"Office Laser", kLetter);
    devices.Add(u"Label/Wide", kA4);
    devices.SetDefault(u"Office Laser");
  }

  std::string Current() {
    const NUnknownPointer<Printer> current = Printer::GetCurrentPrinter();
    return current ? current->GetName().ToUtf8() : "(none)";
  }

  NFakePrinterDevices devices;
};

TEST_F(PrinterTest, ProbeStartsTheBackEndAndSaysWhyItCannot) {
  NReportMessageParams params;
  EXPECT_TRUE(Printer::Probe(devices, params));
  EXPECT_EQ(params.GetCode(), 0u);

  devices.FailStart({NPrinterError::Kind::kCupsDestinations, 1282, u"Bad file descriptor"});
  EXPECT_FALSE(Printer::Probe(devices, params));
  EXPECT_EQ(params.GetCode(), kMsgPrinterCupsDestinations);
  EXPECT_EQ(Text(params), "CUPS destinations: Bad file descriptor\r\n");

  NReportMessageParams system;
  devices.FailStart({NPrinterError::Kind::kSystem, 5, {}});
  EXPECT_FALSE(Printer::Probe(devices, system));
  EXPECT_EQ(system.GetCode(), 5u) << "a system code reads as the system's text";
}

TEST_F(PrinterTest, FailingProbeShowsItsDetailInTheServiceStatus) {
  devices.FailStart({NPrinterError::Kind::kCupsDestinations, 1282, u"Bad file descriptor"});
  const auto startup = NPrinterStartup::Create();
  const auto log = NNotifierLog::Create();
  startup->Initialize(
      600000, [this](NReportMessageParams& params) { return Printer::Probe(devices, params); }, log->Notifier());
  ASSERT_TRUE(log->WaitForCalls(1));
  EXPECT_EQ(startup->GetState(), NPrinterStartup::kFailed);
  EXPECT_EQ(Text(startup->GetStatus()), "Printer initialization failed: CUPS destinations: Bad file descriptor\r\n");
}

TEST_F(PrinterTest, DefaultPrinter) {
  NUnicodeString name;
  NReportMessageParams params;
  EXPECT_TRUE(Printer::HasDefaultPrinter(devices));
  EXPECT_TRUE(Printer::GetDefaultPrinterW(name, params, devices));
  EXPECT_EQ(name, u"Office Laser");

  devices.SetDefault(u"");
  EXPECT_FALSE(Printer::HasDefaultPrinter(devices));
  NUnicodeString kept(u"kept");
  EXPECT_FALSE(Printer::GetDefaultPrinterW(kept, params, devices));
  EXPECT_EQ(kept, u"kept");
  EXPECT_EQ(params.GetCode(), kMsgNoDefaultPrinter);
  EXPECT_EQ(Text(params), "There is no default printer.\r\n");
}

TEST_F(PrinterTest, SelectByName) {
  NReportMessageParams params;
  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"Label/Wide", false, params, devices));
  EXPECT_EQ(Current(), "Label/Wide");
  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"", false, params, devices));
  EXPECT_EQ(Current(), "Office Laser") << "no name is the default printer";
  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"Label/Wide", false, params, devices));
  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"Gone", true, params, devices));
  EXPECT_EQ(Current(), "Office Laser") << "a missing printer gives way to the default";
  EXPECT_EQ(params.GetCode(), 0u);

  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"Label/Wide", false, params, devices));
  EXPECT_FALSE(Printer::SelectCurrentPrinter(u"Gone", false, params, devices));
  EXPECT_EQ(Text(params), "There is no printer named 'Gone'.\r\n");
  EXPECT_EQ(Current(), "Label/Wide") << "a failed selection keeps the current printer";

  devices.SetDefault(u"");
  NReportMessageParams noDefault;
  EXPECT_FALSE(Printer::SelectCurrentPrinter(u"Gone", true, noDefault, devices));
  EXPECT_EQ(noDefault.GetCode(), kMsgNoDefaultPrinter);
  EXPECT_EQ(Current(), "Label/Wide");
}

TEST_F(PrinterTest, SelectBySessionAndGlobalSettings) {
  NPrinterSettings global;
  global.printerName = u"Label/Wide";
  NSessionPrinterSettings session;
  session.settings.printerName = u"Office Laser";
  NReportMessageParams params;

  devices.SetDefault(u"Label/Wide");
  ASSERT_TRUE(Printer::SelectCurrentPrinter(nullptr, NPrinterSettings(), params, devices));
  EXPECT_EQ(Current(), "Label/Wide") << "no session, no global printer: the default";
  devices.SetDefault(u"Office Laser");
  ASSERT_TRUE(Printer::SelectCurrentPrinter(nullptr, global, params, devices));
  EXPECT_EQ(Current(), "Label/Wide");
  session.useGlobalPrintSettings = true;
  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"Office Laser", false, params, devices));
  ASSERT_TRUE(Printer::SelectCurrentPrinter(&session, global, params, devices));
  EXPECT_EQ(Current(), "Label/Wide") << "the session's own printer is ignored";
  session.useGlobalPrintSettings = false;
  ASSERT_TRUE(Printer::SelectCurrentPrinter(&session, global, params, devices));
  EXPECT_EQ(Current(), "Office Laser");
  // A session's printer that has gone away: the default, not the global one.
  session.settings.printerName = u"Gone";
  devices.SetDefault(u"Office Laser");
  ASSERT_TRUE(Printer::SelectCurrentPrinter(u"Label/Wide", false, params, devices));
  ASSERT_TRUE(Printer::SelectCurrentPrinter(&session, global, params, devices));
  EXPECT_EQ(Current(), "Office Laser");
  EXPECT_EQ(params.GetCode(), 0u);
}

TEST_F(PrinterTest, MarginLimitsComeFromThePrintersPaper) {
  const NUnknownPointer<Printer> label = Printer::Create(u"Label/Wide", devices);
  PrinterBase::MarginLimits limits;
  NReportMessageParams params;
  ASSERT_TRUE(label->CalculateMarginLimits(limits, params));
  EXPECT_DOUBLE_EQ(limits.leftOffset, 0.17);
  EXPECT_DOUBLE_EQ(limits.printableWidth, 7.93);
  EXPECT_DOUBLE_EQ(limits.topOffset, 0.17);
  EXPECT_DOUBLE_EQ(limits.printableHeight, 11.35);
  EXPECT_DOUBLE_EQ(limits.pageWidth, 8.27);
  EXPECT_DOUBLE_EQ(limits.pageHeight, 11.69);

  // The printable-area arithmetic end to end.
  PrinterBase::Margins margins{1, 1, 1, 1};
  ASSERT_TRUE(label->CalculateMargins(margins, limits, params));
  EXPECT_NEAR(margins.left, 0.83, 1e-12);
  EXPECT_NEAR(margins.right, 7.1, 1e-12);  // 8.27 - 1 - 0.17
  EXPECT_NEAR(margins.top, 0.83, 1e-12);
  EXPECT_NEAR(margins.bottom, 10.52, 1e-12);  // 11.69 - 1 - 0.17
  NReportMessageParams invalid;
  EXPECT_EQ(label->ValidateMargins({0.1, 0.1, 0.5, 0.5}, invalid),
            PrinterBase::MarginValidationResult::kLeftBelowMinimum);
  EXPECT_EQ(Text(invalid),
            "Please modify the print margin value(s) to adhere to the following:\r\n\r\n"
            "The minimum left margin is 0.17\r\nThe minimum right margin is 0.17\r\n");
}

TEST_F(PrinterTest, MarginLimitsOfAPrinterThatCannotTell) {
  devices.AddWithoutPaper(u"Plotter", {NPrinterError::Kind::kCupsDestinations, 1030, u"No media information"});
  PrinterBase::MarginLimits limits;
  NReportMessageParams params;
  EXPECT_FALSE(Printer::Create(u"Plotter", devices)->CalculateMarginLimits(limits, params));
  EXPECT_EQ(Text(params), "CUPS destinations: No media information\r\n");
  NReportMessageParams gone;
  EXPECT_FALSE(Printer::Create(u"Gone", devices)->CalculateMarginLimits(limits, gone));
  EXPECT_EQ(Text(gone), "There is no printer named 'Gone'.\r\n");
}

}  // namespace
