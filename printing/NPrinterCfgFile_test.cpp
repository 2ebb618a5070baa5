#include "printing/NPrinterCfgFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFiles.h"

namespace {

namespace fs = std::filesystem;

TEST(NPrinterCfgFileTest, ReadsEveryValue) {
  NPrinterSettings settings;
  NPrinterCfgFile::Parse(
      "S:\"Printer Name\"=\\\\print01\\Office Laser\r\n"
      "D:\"Orientation\"=00000002\r\n"
      "D:\"Paper Size\"=00000009\r\n"
      "S:\"Paper Source\"=15\r\n"
      "S:\"Left Margin\"=0.75\r\n"
      "S:\"Right Margin\"=0,5\r\n"
      "S:\"Top Margin\"=1\r\n"
      "S:\"Bottom Margin\"=0.625\r\n"
      "S:\"Printer Font\"=90,-12,0,0,0,700,1,0,0,0,3,2,1,49,Lucida Console\r\n",
      &settings);
  EXPECT_EQ(settings.printerName, u"\\\\print01\\Office Laser");
  EXPECT_EQ(settings.orientation, 2u);
  EXPECT_EQ(settings.paperSize, 9u);
  EXPECT_EQ(settings.paperSource, 15u);
  EXPECT_EQ(settings.margins, (NMarginData{0.75, 0.5, 1, 0.625}));
  EXPECT_EQ(settings.fontPointSize, 90);
  NLogFont expected = NLogFont::Make(u"Lucida Console", -12, 700);
  expected.italic = 1;
  expected.charSet = 0;
  expected.outPrecision = 3;
  expected.clipPrecision = 2;
  expected.quality = 1;
  expected.pitchAndFamily = 49;
  EXPECT_EQ(settings.font, expected);
}

TEST(NPrinterCfgFileTest, DefaultFontIsTheDocumentedOne) {
  std::int32_t size = 0;
  NLogFont font;
  ASSERT_TRUE(NPrinterCfgFile::ParseFont(NPrinterCfgFile::kDefaultFont, &size, &font));
  const NPrinterSettings defaults;
  EXPECT_EQ(size, defaults.fontPointSize);
  EXPECT_EQ(font, defaults.font);
  EXPECT_EQ(font.height, -13);
  EXPECT_EQ(font.weight, 400);
  EXPECT_EQ(std::u16string(font.faceName.data()), u"Courier");
}

TEST(NPrinterCfgFileTest, FontsThatDoNotReadLeaveTheFontAsItWas) {
  const char* const bad[] = {
      "100,-13,0,0,0,400,0,0,0,0,0,0,0,Courier",                             // thirteen numbers
      "100,-13,0,0,0,400,0,0,0,256,0,0,0,0,Courier",                         // a byte field out of range
      "100,-13,0,0,0,400,0,0,0,-1,0,0,0,0,Courier",                          // a negative byte
      "100,-13,0,0,x,400,0,0,0,0,0,0,0,0,Courier",                           // no number
      "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,",                                  // no face
      "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,ABCDEFGHIJKLMNOPQRSTUVWXYZabcdef",  // 32 characters: no room for the end
      "",
  };
  for (const char* text : bad) {
    std::int32_t size = 7;
    NLogFont font = NLogFont::Make(u"Kept", 1);
    EXPECT_FALSE(NPrinterCfgFile::ParseFont(text, &size, &font)) << text;
    EXPECT_EQ(size, 7) << text;
    EXPECT_EQ(font, NLogFont::Make(u"Kept", 1)) << text;
  }
  std::int32_t size = 0;
  NLogFont font;
  ASSERT_TRUE(NPrinterCfgFile::ParseFont("120,-16,0,0,0,400,0,0,0,0,0,0,0,0,Face, with commas", &size, &font));
  EXPECT_EQ(std::u16string(font.faceName.data()), u"Face, with commas");
}

TEST(NPrinterCfgFileTest, ValuesOfTheWrongKindOrFormAreIgnored) {
  NPrinterSettings settings;
  settings.printerName = u"kept";
  settings.margins = {0.5, 0.5, 0.5, 0.5};
  NPrinterCfgFile::Parse(
      "D:\"Printer Name\"=00000001\r\n"
      "S:\"Orientation\"=landscape\r\n"
      "S:\"Left Margin\"=0.75in\r\n"
      "D:\"Right Margin\"=00000001\r\n"
      "S:\"Top Margin\"=nan\r\n"
      "S:\"Bottom Margin\"=0.25\r\n"
      "x:\"Paper Size\"=00000009\r\n"  // invalid: ends the reading
      "S:\"Paper Source\"=7\r\n",
      &settings);
  EXPECT_EQ(settings.printerName, u"kept");
  EXPECT_EQ(settings.orientation, 0u);
  EXPECT_EQ(settings.margins, (NMarginData{0.5, 0.5, 0.5, 0.25}));
  EXPECT_EQ(settings.paperSize, 0u);
  EXPECT_EQ(settings.paperSource, 0u);
}

class NPrinterCfgFileReadTest : public testing::Test {
 protected:
  void SetUp() override {
    // One folder per test and run: tests of several build trees run at once.
    m_dir = fs::path(testing::TempDir()) /
            ("cfgdeck_printer_cfg_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
             std::to_string(std::random_device()()));
    fs::remove_all(m_dir);
    fs::create_directories(m_dir);
  }
  void TearDown() override { fs::remove_all(m_dir); }

  fs::path m_dir;
};

TEST_F(NPrinterCfgFileReadTest, FolderWithoutTheFileLeavesTheSettings) {
  NPrinterSettings settings;
  settings.printerName = u"kept";
  NReportMessageParams params;
  EXPECT_TRUE(NPrinterCfgFile::Read(NPlatform::Default(), m_dir.u16string(), &settings, params));
  EXPECT_EQ(settings.printerName, u"kept");
  EXPECT_EQ(params.GetCode(), 0u);
  EXPECT_TRUE(NPrinterCfgFile::Read(NPlatform::Default(), (m_dir / "missing").u16string(), &settings, params));
}

TEST_F(NPrinterCfgFileReadTest, FileIsFoundWhateverTheCaseOfItsNameAndInUtf16) {
  // UTF-16LE with its mark, as older Windows programs wrote it.
  const std::u16string text = u"\uFEFFS:\"Printer Name\"=K\u00F6nig\r\nS:\"Top Margin\"=0.4\r\n";
  NWriteFileBytes(m_dir / "printer.cfg", std::string_view(reinterpret_cast<const char*>(text.data()), text.size() * 2));
  NPrinterSettings settings;
  NReportMessageParams params;
  ASSERT_TRUE(NPrinterCfgFile::Read(NPlatform::Default(), m_dir.u16string(), &settings, params));
  EXPECT_EQ(settings.printerName, u"K\u00F6nig");
  EXPECT_DOUBLE_EQ(settings.margins.top, 0.4);
}

TEST_F(NPrinterCfgFileReadTest, UnreadableFileIsAFailureWithItsReason) {
  NWriteFileBytes(m_dir / "PRINTER.CFG", "S:\"Printer Name\"=Laser\r\n");
  NFaultPlatform platform(NPlatform::Default());
  platform.FailNth(NFaultKind::kRead, 1, NStatus::kAccessDenied);
  NPrinterSettings settings;
  NReportMessageParams params;
  EXPECT_FALSE(NPrinterCfgFile::Read(platform, m_dir.u16string(), &settings, params));
  EXPECT_EQ(params.GetCode(), 0xE138F001u);
  const std::string text = params.GetText().ToUtf8();
  EXPECT_NE(text.find("PRINTER.CFG"), std::string::npos) << text;
  EXPECT_NE(text.find(NReportMessageParams(NStatus::kAccessDenied).GetText().ToUtf8()), std::string::npos) << text;
  EXPECT_TRUE(settings.printerName.empty());
}

}  // namespace
