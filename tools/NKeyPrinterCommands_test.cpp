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
  const std::pair<const char*, const char*> rows[] = {
      {"0x5E00002E", "Alt-Ctrl-Shift-Extended-Windows-\t46\n"},
      {"335544366", "Alt-Ctrl-\t46\n"},  // 0x1400002E
      {"0", "\t0\n"},
      {"0xFFFFFFFF", "Alt-Ctrl-Shift-Extended-Windows-\t2717908991\n"}};
  for (const auto& [value, printed] : rows) {
    EXPECT_EQ(Run({"key-string", value}), 0) << value;
    EXPECT_EQ(out, printed);
  }
  for (const char* bad : {"0x100000000", "-1", "12abc", "0x"}) {
    EXPECT_EQ(Run({"key-string", bad}), 2) << bad;
    EXPECT_EQ(out, "") << bad;
    EXPECT_NE(err.find("is not a 32-bit value"), std::string::npos) << err;
  }
}

TEST_F(NKeyPrinterCommandsTest, MarginsPrintTheRoundedMarginsAndTheEdgesOrTheWholeReasonForARefusal) {
  const std::string refused =
      "cfgdeck: 0xe138020f: Please modify the print margin value(s) to adhere to the following:\r\n\r\n";
  const struct {
    const char* name;
    std::u16string_view printer;  // the default one
    std::vector<std::string> args;
    int status;
    std::string out, err;
  } rows[] = {
      {"rounded", u"Office Laser", {"printer", "margins", "1", "0.75", "0.5", "0.6004"}, 0,
       "left\t1\t0.75\nright\t0.75\t7.5\ntop\t0.5\t0.3\nbottom\t0.6\t10.2\n", ""},
      {"below the minimums", u"Office Laser", {"printer", "margins", "0.1", "0.25", "0.2", "0.2994"}, 1, "",
       refused + "The minimum left margin is 0.25\r\nThe minimum bottom margin is 0.3\n"},
      {"negative, rounded toward zero", u"Borderless", {"printer", "margins", "-0.0004", "0", "0", "0"}, 0,
       "left\t0\t0\nright\t0\t8.5\ntop\t0\t0\nbottom\t0\t11\n", ""},
      {"negative", u"Borderless", {"printer", "margins", "-0.5", "0", "0", "0"}, 1, "",
       refused + "The minimum left margin is 0\n"},
      {"no default printer", u"", {"printer", "margins", "1", "1", "1", "1"}, 1, "",
       "cfgdeck: 0xe138f040: There is no default printer.\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    devices.SetDefault(row.printer);
    EXPECT_EQ(Run(row.args), row.status);
    EXPECT_EQ(out, row.out);
    EXPECT_EQ(err, row.err);
  }
}

TEST_F(NKeyPrinterCommandsTest, BadUsage) {
  EXPECT_EQ(Run({"printer", "margins", "1", "1", "1"}), -1);
  EXPECT_EQ(Run({"printer", "margins", "1", "1", "1", "x"}), -1);
  EXPECT_EQ(Run({"printer"}), -1);
  EXPECT_EQ(Run({"printer", "status", "--timeout", "-5"}), -1);
  EXPECT_EQ(Run({"key-string"}), -1);
}

}  // namespace
