#include "printing/NPrinterCfgFile.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "platform/testing/NFaultPlatform.h"
#include "platform/testing/NTestFolder.h"

namespace {

// A font as the file writes it.
std::string FontText(std::int32_t size, const NLogFont& f) {
  const int numbers[] = {size,           f.height,        f.width,     f.escapement,    f.orientation,
                         f.weight,       f.italic,        f.underline, f.strikeOut,     f.charSet,
                         f.outPrecision, f.clipPrecision, f.quality,   f.pitchAndFamily};
  std::string text;
  for (const int number : numbers) text += std::to_string(number) + ",";
  return text + NUnicodeString(f.faceName.data()).ToUtf8();
}

TEST(NPrinterCfgFileTest, ReadsEveryValue) {
  NPrinterSettings settings;
  NPrinterCfgFile::Parse(
      "S:\"Printer Name\"=\\\\print01\\Office Laser\r\nD:\"Orientation\"=00000002\r\n"
      "D:\"Paper Size\"=00000009\r\nS:\"Paper Source\"=15\r\n"
      "S:\"Left Margin\"=0.75\r\nS:\"Right Margin\"=0,5\r\nS:\"Top Margin\"=1\r\nS:\"Bottom Margin\"=0.625\r\n"
      "S:\"Printer Font\"=90,-12,1,2,3,700,1,0,1,0,3,2,1,49,Lucida Console\r\n",
      &settings);
  EXPECT_EQ(settings.printerName, u"\\\\print01\\Office Laser");
  EXPECT_EQ(settings.orientation, 2u);
  EXPECT_EQ(settings.paperSize, 9u);
  EXPECT_EQ(settings.paperSource, 15u);
  EXPECT_EQ(settings.margins, (NMarginData{0.75, 0.5, 1, 0.625}));
  EXPECT_EQ(FontText(settings.fontPointSize, settings.font), "90,-12,1,2,3,700,1,0,1,0,3,2,1,49,Lucida Console");
}

TEST(NPrinterCfgFileTest, DefaultFontIsTheDocumentedOne) {
  const NPrinterSettings defaults;
  EXPECT_EQ(FontText(defaults.fontPointSize, defaults.font), "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,Courier");
  EXPECT_EQ(FontText(defaults.fontPointSize, defaults.font), NPrinterCfgFile::kDefaultFont);
}

TEST(NPrinterCfgFileTest, FontsAreReadWholeOrNotAtAll) {
  // A face of 32 characters leaves no room for the end.
  const std::tuple<const char*, std::string, bool> rows[] = {
      {"the default", std::string(NPrinterCfgFile::kDefaultFont), true},
      {"a face with commas", "120,-16,0,0,0,400,0,0,0,0,0,0,0,0,Face, with commas", true},
      {"thirteen numbers", "100,-13,0,0,0,400,0,0,0,0,0,0,0,Courier", false},
      {"a byte field out of range", "100,-13,0,0,0,400,0,0,0,256,0,0,0,0,Courier", false},
      {"a negative byte", "100,-13,0,0,0,400,0,0,0,-1,0,0,0,0,Courier", false},
      {"no number", "100,-13,0,0,x,400,0,0,0,0,0,0,0,0,Courier", false},
      {"no face", "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,", false},
      {"a face too long", "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,ABCDEFGHIJKLMNOPQRSTUVWXYZabcdef", false},
      {"empty", "", false},
  };
  const NLogFont kept = NLogFont::Make(u"Kept", 1);
  for (const auto& [name, text, read] : rows) {
    SCOPED_TRACE(name);
    std::int32_t size = 7;
    NLogFont font = kept;
    EXPECT_EQ(NPrinterCfgFile::ParseFont(text, &size, &font), read);
    EXPECT_EQ(FontText(size, font), read ? text : FontText(7, kept));
    EXPECT_EQ(font == kept, !read) << "untouched unless read";
  }
}

TEST(NPrinterCfgFileTest, ValuesOfTheWrongKindOrFormAreIgnored) {
  NPrinterSettings settings;
  settings.printerName = u"kept";
  settings.margins = {0.5, 0.5, 0.5, 0.5};
  NPrinterCfgFile::Parse(
      "D:\"Printer Name\"=00000001\r\nS:\"Orientation\"=landscape\r\n"
      "S:\"Left Margin\"=0.75in\r\nD:\"Right Margin\"=00000001\r\nS:\"Top Margin\"=nan\r\nS:\"Bottom Margin\"=0.25\r\n"
      "x:\"Paper Size\"=00000009\r\n"  // invalid: ends the reading
      "S:\"Paper Source\"=7\r\n",
      &settings);
  EXPECT_EQ(settings.printerName, u"kept");
  EXPECT_EQ(settings.orientation, 0u);
  EXPECT_EQ(settings.margins, (NMarginData{0.5, 0.5, 0.5, 0.25}));
  EXPECT_EQ(settings.paperSize, 0u);
  EXPECT_EQ(settings.paperSource, 0u);
}

class NPrinterCfgFileReadTest : public NTestFolderTest {
 protected:
  bool Read(NPlatform& platform = NPlatform::Default()) {
    return NPrinterCfgFile::Read(platform, m_folder.u16string(), &settings, params);
  }

  NPrinterSettings settings;
  NReportMessageParams params;
};

TEST_F(NPrinterCfgFileReadTest, FolderWithoutTheFileLeavesTheSettings) {
  settings.printerName = u"kept";
  EXPECT_TRUE(Read());
  EXPECT_EQ(settings.printerName, u"kept");
  EXPECT_EQ(params.GetCode(), 0u);
  EXPECT_TRUE(NPrinterCfgFile::Read(NPlatform::Default(), Path("missing"), &settings, params));
}

TEST_F(NPrinterCfgFileReadTest, FileIsFoundWhateverTheCaseOfItsNameAndInUtf16) {
  // UTF-16LE with its mark, as older Windows programs wrote it.
  const std::u16string text = u"\uFEFFS:\"Printer Name\"=K\u00F6nig\r\nS:\"Top Margin\"=0.4\r\n";
  WriteText("printer.cfg", std::string_view(reinterpret_cast<const char*>(text.data()), text.size() * 2));
  ASSERT_TRUE(Read());
  EXPECT_EQ(settings.printerName, u"K\u00F6nig");
  EXPECT_DOUBLE_EQ(settings.margins.top, 0.4);
}

TEST_F(NPrinterCfgFileReadTest, UnreadableFileIsAFailureWithItsReason) {
  WriteText("PRINTER.CFG", "S:\"Printer Name\"=Laser\r\n");
  NFaultPlatform platform(NPlatform::Default());
  platform.FailNth(NFaultKind::kRead, 1, NStatus::kAccessDenied);
  EXPECT_FALSE(Read(platform));
  EXPECT_EQ(params.GetCode(), 0xE138F001u);
  const std::string text = params.GetText().ToUtf8();
  EXPECT_NE(text.find("PRINTER.CFG"), std::string::npos) << text;
  EXPECT_NE(text.find(NReportMessageParams(NStatus::kAccessDenied).GetText().ToUtf8()), std::string::npos) << text;
  EXPECT_TRUE(settings.printerName.empty());
}

}  // namespace
