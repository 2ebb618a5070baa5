#include "tools/NKeyPrinterCommands.h"

#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <algorithm>

#include "platform/testing/NFakePrinterDevices.h"

namespace {

class NKeyPrinterCommandsTest : public testing::Test {
 protected:
  void SetUp() override {
    devices.Add(u"Office Laser", {8.5, 11.0, 0.25, 0.2, 8.0, 10.5});
    devices.Add(u"Borderless", {8.5, 11.0, 0, 0, 8.5, 11.0});
    devices.SetDefault(u"Office Laser");
  }

  // Runs "cfgdeck ARGS" with only these commands; -1 for a parse error.
  int Run(std::vector<std::string> args) {
    out.clear();
    err.clear();
    CLI::App app("test", "cfgdeck");
    NKeyPrinterCommands commands(
        app, [this](std::string_view text) { out += text; }, [this](std::string_view text) { err += text; }, devices);
    std::reverse(args.begin(), args.end());
    try {
      app.parse(args);
    } catch (const CLI::CallForHelp&) {
      out = app.help();
      return 0;
    } catch (const CLI::ParseError& e) {
      err = e.what();
      return -1;
    }
    EXPECT_TRUE(commands.Parsed());
    return commands.Run();
  }

  NFakePrinterDevices devices;
  std::string out, err;
};

TEST_F(NKeyPrinterCommandsTest, KeyStringPrintsModifiersTabAndKey) {
  EXPECT_EQ(Run({"key-string", "0x5E00002E"}), 0);
  EXPECT_EQ(out, "Alt-Ctrl-Shift-Extended-Windows-\t46\n");
  EXPECT_EQ(Run({"key-string", "335544366"}), 0);  // 0x1400002E
  EXPECT_EQ(out, "Alt-Ctrl-\t46\n");
  EXPECT_EQ(Run({"key-string", "0"}), 0);
  EXPECT_EQ(out, "\t0\n");
  EXPECT_EQ(Run({"key-string", "0xFFFFFFFF"}), 0);
  EXPECT_EQ(out, "Alt-Ctrl-Shift-Extended-Windows-\t2717908991\n");
  for (const char* bad : {"0x100000000", "-1", "12abc", "0x"}) {
    EXPECT_EQ(Run({"key-string", bad}), 2) << bad;
    EXPECT_EQ(out, "") << bad;
    EXPECT_NE(err.find("is not a 32-bit value"), std::string::npos) << err;
  }
}

TEST_F(NKeyPrinterCommandsTest, MarginsPrintTheRoundedMarginsAndTheEdges) {
  EXPECT_EQ(Run({"printer", "margins", "1", "0.75", "0.5", "0.6004"}), 0);
  EXPECT_EQ(out, "left\t1\t0.75\nright\t0.75\t7.5\ntop\t0.5\t0.3\nbottom\t0.6\t10.2\n");
  EXPECT_EQ(err, "");
}

TEST_F(NKeyPrinterCommandsTest, MarginsBelowTheMinimumsAreRefusedWithTheWholeText) {
  EXPECT_EQ(Run({"printer", "margins", "0.1", "0.25", "0.2", "0.2994"}), 1);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err,
            "cfgdeck: 0xe138020f: Please modify the print margin value(s) to adhere to the following:\r\n\r\n"
            "The minimum left margin is 0.25\r\n"
            "The minimum bottom margin is 0.3\n");
}

TEST_F(NKeyPrinterCommandsTest, NegativeMarginsRoundTowardZero) {
  devices.SetDefault(u"Borderless");
  EXPECT_EQ(Run({"printer", "margins", "-0.0004", "0", "0", "0"}), 0);
  EXPECT_EQ(out, "left\t0\t0\nright\t0\t8.5\ntop\t0\t0\nbottom\t0\t11\n");
  EXPECT_EQ(Run({"printer", "margins", "-0.5", "0", "0", "0"}), 1);
  EXPECT_EQ(err,
            "cfgdeck: 0xe138020f: Please modify the print margin value(s) to adhere to the following:\r\n\r\n"
            "The minimum left margin is 0\n");
}

TEST_F(NKeyPrinterCommandsTest, MarginsWithoutADefaultPrinter) {
  devices.SetDefault(u"");
  EXPECT_EQ(Run({"printer", "margins", "1", "1", "1", "1"}), 1);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err, "cfgdeck: 0xe138f040: There is no default printer.\n");
}

TEST_F(NKeyPrinterCommandsTest, BadUsage) {
  EXPECT_EQ(Run({"printer", "margins", "1", "1", "1"}), -1);
  EXPECT_EQ(Run({"printer", "margins", "1", "1", "1", "x"}), -1);
  EXPECT_EQ(Run({"printer"}), -1);
  EXPECT_EQ(Run({"printer", "status", "--timeout", "-5"}), -1);
  EXPECT_EQ(Run({"key-string"}), -1);
}

}  // namespace
