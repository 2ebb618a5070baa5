#include "tools/NPathCommands.h"

#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>

#include "location/NRegistryBase.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NTestFolder.h"
#include "uicore/NAppName.h"

namespace {

namespace fs = std::filesystem;
constexpr std::string_view kBom = "\xEF\xBB\xBF";

class NPathCommandsTest : public NTestFolderTest {
 protected:
  void SetUp() override {
    NTestFolderTest::SetUp();
    m_registryDir.emplace("CFGDECK_REGISTRY_DIR", (m_folder / "registry").u16string());
    NResetRegistryBase();
    NSetAppName(u"Skeldon");
  }
  void TearDown() override {
    NSetAppName(u"");
    NResetRegistryBase();
    m_registryDir.reset();
    NTestFolderTest::TearDown();
  }

  // Runs "cfgdeck ARGS" with only the path commands; -1 for a parse error.
  int Run(std::vector<std::string> args) {
    out.clear();
    err.clear();
    CLI::App app("test", "cfgdeck");
    NPathCommands commands(
        app, [this](std::string_view text) { out += text; }, [this](std::string_view text) { err += text; });
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

  std::optional<NScopedEnvironment> m_registryDir;
  std::string out, err;
};

TEST_F(NPathCommandsTest, UnderExeAndCommandLinePrintTheFolderOrWhyNot) {
  NWriteFileBytes(m_folder / "app/Config/global.ini", "");
  EXPECT_EQ(Run({"path", "under-exe", (m_folder / "app").string()}), 0);
  EXPECT_EQ(out, (m_folder / "app" / "Config").string() + "\n");
  EXPECT_EQ(Run({"path", "under-exe", m_folder.string()}), 1);
  EXPECT_EQ(out, "");
  EXPECT_NE(err.find("global.ini"), std::string::npos) << err;
  EXPECT_EQ(Run({"path", "command-line", (m_folder / "app/Config/").string()}), 0);
  EXPECT_EQ(out, fs::canonical(m_folder / "app/Config").string() + "\n");
  const std::string missing = (m_folder / "k\xc3\xb6nig").string();
  EXPECT_EQ(Run({"path", "command-line", missing}), 1);
  EXPECT_EQ(out, "");
  EXPECT_EQ(err, "cfgdeck: 0xe1380009: The folder specified using /F on the command line is not valid:\r\n\r\n'" +
                     missing + "'\r\n");
}

TEST_F(NPathCommandsTest, RedirectReportsTheNoticeAndSaveAndRememberedRoundTrip) {
  const fs::path old = m_folder / "old";
  NWriteFileBytes(old / "Global.ini", std::string(kBom) + "S:\"Version\"=2.0\r\n");
  NWriteFileBytes(old / "NSWRedirect.ini", std::string(kBom) + "S:\"New Config Path\"=/srv/new\r\n");
  EXPECT_EQ(Run({"path", "remembered"}), 1);
  EXPECT_NE(err.find("'Skeldon'"), std::string::npos) << err;
  EXPECT_EQ(Run({"path", "redirect", "--save", old.string()}), 0);
  EXPECT_EQ(out, "/srv/new\n");
  EXPECT_TRUE(err.starts_with("cfgdeck: 0x61380017: The configuration was migrated from: \r\n'" + old.string())) << err;
  EXPECT_EQ(Run({"path", "remembered"}), 0);
  EXPECT_EQ(out, "/srv/new\n");
  EXPECT_EQ(Run({"path", "save", "/srv/other"}), 0);
  EXPECT_EQ(out, "/srv/other\n");
  EXPECT_EQ(Run({"path", "remembered", "skeldon"}), 0);
  EXPECT_EQ(out, "/srv/other\n");
  EXPECT_EQ(Run({"path", "remembered", "Parrow"}), 1);
  // An old folder without a redirect has its global file moved aside.
  fs::remove(old / "NSWRedirect.ini");
  EXPECT_EQ(Run({"path", "redirect", old.string()}), 0);
  EXPECT_EQ(out, old.string() + "\n");
  EXPECT_EQ(err, "");
  EXPECT_FALSE(fs::exists(old / "Global.ini"));
}

TEST_F(NPathCommandsTest, EachCommandHasHelpAndNeedsItsArgument) {
  for (const char* command : {"under-exe", "command-line", "redirect", "remembered", "save"}) {
    EXPECT_EQ(Run({"path", command, "--help"}), 0) << command;
    EXPECT_NE(out.find(command), std::string::npos) << out;
  }
  EXPECT_EQ(Run({"path", "redirect", "--help"}), 0);
  EXPECT_NE(out.find("--save"), std::string::npos) << out;
  EXPECT_EQ(Run({"path", "save"}), -1);
  EXPECT_EQ(Run({"path"}), -1);
}

}  // namespace
