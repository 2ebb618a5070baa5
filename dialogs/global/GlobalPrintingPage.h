#pragma once

#include "config/GlobalConfig.h"
#include "printing/NPrinterSettings.h"
#include "uicore/NFieldBinding.h"
#include "uicore/NPropertyTreePage.h"

class NPlatform;
class NPrinterDevices;

// "Printing": the global print settings. The printer and its margins are
// those of "PRINTER.CFG" in the configuration folder, which the printer
// selection reads; OK checks the margins against the printer's printable
// area and writes them rounded as the printer service rounds them.
class GlobalPrintingPage final : public NPropertyTreePage {
 public:
  static constexpr std::u16string_view kPrinterLabel = u"Printer (empty: the default printer)";
  static constexpr std::u16string_view kMarginLabels[4] = {u"Left margin (inches)", u"Right margin (inches)",
                                                           u"Top margin (inches)", u"Bottom margin (inches)"};

  // `printerAvailable` false: the host has no printing back end running;
  // the printer settings are kept but not checked against a printer.
  GlobalPrintingPage(GlobalConfig& global, bool printerAvailable, NUnicodeString configFolder, NPlatform& platform,
                     NPrinterDevices& devices);

  bool OnValidate(NPageFailure& failure) override;
  bool OnOK() override;

 private:
  // The printer or a margin shows an edit.
  bool FileChanged() const;
  // The margins the controls show; false when one is not a number.
  bool ShownMargins(NMarginData* margins) const;

  bool m_printerAvailable;
  NUnicodeString m_configFolder;
  NPlatform& m_platform;
  NPrinterDevices& m_devices;
  NPrinterSettings m_settings;
  NPlainField<NUnicodeString> m_printerName;
  NPlainField<NUnicodeString> m_margins[4];
  NFormControl* m_marginControls[4] = {};
};
