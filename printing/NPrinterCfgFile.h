#pragma once

#include <cstdint>
#include <string_view>

#include "config/NConfigTypes.h"
#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "printing/NPrinterSettings.h"

// The older printer settings file, "PRINTER.CFG" in the configuration
// folder, in the record format of the key files:
//   S:"Printer Name"=Office Laser
//   D:"Orientation"=00000002            (likewise "Paper Size", "Paper Source")
//   S:"Left Margin"=0.75                (inches; "Right", "Top", "Bottom Margin")
//   S:"Printer Font"=100,-13,0,0,0,400,0,0,0,0,0,0,0,0,Courier
// The font is its size in tenths of a point, then the 13 numbers of a log
// font (height, width, escapement, orientation, weight, italic, underline,
// strike-out, character set, output precision, clip precision, quality,
// pitch and family), then the face name. A value that is missing or does
// not read as its kind leaves the setting as it was.
class NPrinterCfgFile {
 public:
  static constexpr std::u16string_view kFileName = u"PRINTER.CFG";
  static constexpr std::string_view kDefaultFont = "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,Courier";

  // Reads the file of `folder` (its name matched without case where the
  // file system tells cases apart) into *settings. A folder without one
  // leaves *settings as it is. False, with params, when the file is there
  // but cannot be read.
  static bool Read(NPlatform& platform, std::u16string_view folder, NPrinterSettings* settings,
                   NReportMessageParams& params);

  // Writes *settings as the file of `folder`, replacing it whole (UTF-8,
  // every setting a record), and flushes it to disk. False, with params
  // naming the file, when it cannot be written.
  static bool Write(NPlatform& platform, std::u16string_view folder, const NPrinterSettings& settings,
                    NReportMessageParams& params);
  // The file's text for *settings, lines ended by CR LF.
  static std::string Format(const NPrinterSettings& settings);

  // The records of the file's text (UTF-8).
  static void Parse(std::string_view text, NPrinterSettings* settings);

  // A font in the file's form; false, with both outputs untouched, unless
  // it has all fifteen fields with numbers in range.
  static bool ParseFont(std::string_view text, std::int32_t* pointSize, NLogFont* font);
};
