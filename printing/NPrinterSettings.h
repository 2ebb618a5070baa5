#pragma once

#include <cstdint>

#include "base/NUnicodeString.h"
#include "config/NConfigTypes.h"
#include "config/NMarginData.h"

// What a set of printer settings holds: the printer and how to print on
// it. The global settings and each session's own have this form; the older
// "PRINTER.CFG" file keeps it too (NPrinterCfgFile).
struct NPrinterSettings {
  // Empty: the default printer.
  NUnicodeString printerName;
  // 0: the printer's own default; else the Windows DMORIENT_, DMPAPER_ and
  // DMBIN_ numbers.
  std::uint32_t orientation = 0;
  std::uint32_t paperSize = 0;
  std::uint32_t paperSource = 0;
  NMarginData margins;
  // In tenths of a point, with the font it describes.
  std::int32_t fontPointSize = 100;
  NLogFont font = DefaultFont();

  // 10-point Courier, as "100,-13,0,0,0,400,0,0,0,0,0,0,0,0,Courier" says.
  static NLogFont DefaultFont() {
    NLogFont font = NLogFont::Make(u"Courier", -13);
    font.charSet = 0;
    return font;
  }
};

// The printer settings a session supplies to the printer selection.
struct NSessionPrinterSettings {
  // "Use Global Print Settings": the session's own settings are ignored.
  bool useGlobalPrintSettings = true;
  NPrinterSettings settings;
};
