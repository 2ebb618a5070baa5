#include "platform/NPrinterDevices.h"

#include <gtest/gtest.h>

namespace {

// The real system's printers: whatever this machine has, the answers must
// agree with one another.

TEST(NPrinterDevicesTest, UnknownPrinterIsReportedAsSuch) {
  NPrinterDevices& devices = NPrinterDevices::Default();
  const std::u16string name = u"cfgdeck-no-such-printer-7f3a";
  EXPECT_FALSE(devices.HasPrinter(name));
  NPrinterPageArea area;
  NPrinterError error;
  EXPECT_FALSE(devices.GetPageArea(name, &area, &error));
  EXPECT_EQ(error.kind, NPrinterError::Kind::kNoSuchPrinter);
  EXPECT_EQ(error.detail, name);
  EXPECT_FALSE(devices.HasPrinter(u""));
  NPrinterError empty;
  EXPECT_FALSE(devices.GetPageArea(u"", &area, &empty));
  EXPECT_EQ(empty.kind, NPrinterError::Kind::kNoSuchPrinter);
}

TEST(NPrinterDevicesTest, DefaultPrinterExistsAndHasSanePaper) {
  NPrinterDevices& devices = NPrinterDevices::Default();
  std::u16string name;
  NPrinterError error;
  if (!devices.FindDefaultPrinter(&name, &error)) {
    EXPECT_NE(error.kind, NPrinterError::Kind::kNoSuchPrinter);
    EXPECT_TRUE(error.kind == NPrinterError::Kind::kNoDefaultPrinter || error.code != 0 || !error.detail.empty());
    GTEST_SKIP() << "this machine has no default printer";
  }
  EXPECT_FALSE(name.empty());
  EXPECT_TRUE(devices.HasPrinter(name));
  NPrinterPageArea area;
  if (!devices.GetPageArea(name, &area, &error)) {
    EXPECT_NE(error.kind, NPrinterError::Kind::kNoSuchPrinter);
    return;
  }
  EXPECT_GT(area.pageWidth, 0);
  EXPECT_GT(area.pageHeight, 0);
  EXPECT_GE(area.leftOffset, 0);
  EXPECT_GE(area.topOffset, 0);
  EXPECT_LE(area.leftOffset + area.printableWidth, area.pageWidth + 1e-9);
  EXPECT_LE(area.topOffset + area.printableHeight, area.pageHeight + 1e-9);
}

TEST(NPrinterDevicesTest, StartSucceedsOrSaysWhy) {
  NPrinterError error;
  if (NPrinterDevices::Default().Start(&error)) return;
  EXPECT_TRUE(error.code != 0 || !error.detail.empty());
  EXPECT_TRUE(error.kind == NPrinterError::Kind::kSystem || error.kind == NPrinterError::Kind::kCupsDestinations);
}

}  // namespace
