#include "dialogs/global/GlobalPrintingPage.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include "printing/NFormatInches.h"
#include "printing/NPrinterCfgFile.h"
#include "printing/Printer.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"

namespace {

bool ParseInches(const NControlValue& value, double* inches) {
  const NUnicodeString* text = std::get_if<NUnicodeString>(&value);
  if (!text) return false;
  const std::string utf8 = text->ToUtf8();
  const auto [end, error] = std::from_chars(utf8.data(), utf8.data() + utf8.size(), *inches);
  return error == std::errc() && end == utf8.data() + utf8.size() && std::isfinite(*inches) && *inches >= 0;
}

double* MarginOf(NMarginData& margins, std::size_t i) {
  double* const sides[] = {&margins.left, &margins.right, &margins.top, &margins.bottom};
  return sides[i];
}

}  // namespace

GlobalPrintingPage::GlobalPrintingPage(GlobalConfig& global, bool printerAvailable, NUnicodeString configFolder,
                                       NPlatform& platform, NPrinterDevices& devices)
    : NPropertyTreePage(u"Printing"),
      m_printerAvailable(printerAvailable),
      m_configFolder(std::move(configFolder)),
      m_platform(platform),
      m_devices(devices) {
  NReportMessageParams ignored;  // an unreadable file shows the defaults, and OK replaces it
  if (!m_configFolder.empty()) (void)NPrinterCfgFile::Read(m_platform, m_configFolder, &m_settings, ignored);
  m_printerName.value = m_settings.printerName;

  NForm& form = Form();
  if (!printerAvailable) form.Label(u"No printer is available now: the settings are kept for when one is.");
  form.Number(u"Eject page interval (seconds)", global.m_ejectPageInterval, 0, 3600);
  form.CheckBox(u"Print Screen key prints the screen", global.m_enablePrintScreenKey);
  form.Group(u"Printer");
  form.Text(NUnicodeString(kPrinterLabel), m_printerName);
  for (std::size_t i = 0; i < 4; ++i) {
    m_margins[i] = {NFormatInches(*MarginOf(m_settings.margins, i)), NFormatInches(0)};
    m_marginControls[i] =
        &form.Text(NUnicodeString(kMarginLabels[i]), m_margins[i])
             .Validate([](const NControlValue& value) -> std::optional<NUnicodeString> {
               double inches;
               if (ParseInches(value, &inches)) return std::nullopt;
               return NUnicodeString(u"A margin is a number of inches, as 0.5.");
             });
  }
  form.EndGroup();
  if (m_configFolder.empty()) form.Find(u"Printer")->EnabledWhen([] { return false; });
}

bool GlobalPrintingPage::FileChanged() const {
  return Form().Find(kPrinterLabel)->IsChanged() ||
         std::any_of(std::begin(m_marginControls), std::end(m_marginControls),
                     [](const NFormControl* control) { return control->IsChanged(); });
}

bool GlobalPrintingPage::ShownMargins(NMarginData* margins) const {
  for (std::size_t i = 0; i < 4; ++i) {
    if (!ParseInches(m_marginControls[i]->Value(), MarginOf(*margins, i))) return false;
  }
  return true;
}

bool GlobalPrintingPage::OnValidate(NPageFailure& failure) {
  if (!NPropertyTreePage::OnValidate(failure)) return false;
  // Settings as they were are not checked again: a printer changed since
  // must not keep the rest of the dialog from being stored.
  NMarginData margins;
  if (!m_printerAvailable || !FileChanged() || !ShownMargins(&margins)) return true;
  const NUnicodeString* name = std::get_if<NUnicodeString>(&Form().Find(kPrinterLabel)->Value());
  NReportMessageParams params;
  NUnicodeString printer = name ? *name : NUnicodeString();
  if (printer.empty() && !Printer::GetDefaultPrinterW(printer, params, m_devices)) return true;
  NUnknownPointer<Printer> device = Printer::Create(printer, m_devices);
  const PrinterBase::MarginValidationResult result = device->ValidateMargins(margins, params);
  // Without the printer's limits there is nothing to check against.
  if (result == PrinterBase::MarginValidationResult::kValid ||
      result == PrinterBase::MarginValidationResult::kNoLimits) {
    return true;
  }
  failure.code = params.GetCode();
  failure.text = params.GetText();
  failure.control = m_marginControls[0];
  return false;
}

bool GlobalPrintingPage::OnOK() {
  const bool fileChanged = FileChanged();  // the form forgets its edits once stored
  if (!NPropertyTreePage::OnOK()) return false;
  if (!fileChanged) return true;
  m_settings.printerName = m_printerName.value;
  for (std::size_t i = 0; i < 4; ++i) {
    double inches = 0;
    if (ParseInches(m_margins[i].value, &inches)) *MarginOf(m_settings.margins, i) = PrinterBase::RoundMargin(inches);
    m_margins[i].value = NFormatInches(*MarginOf(m_settings.margins, i));
  }
  NReportMessageParams params;
  if (!NPrinterCfgFile::Write(m_platform, m_configFolder, m_settings, params)) {
    NMessageBox(nullptr, params.GetCode(), params.GetText(), NGetAppName(), kMessageBoxOk | kMessageBoxIconError);
    return false;
  }
  Form().Load();  // the rounded margins
  return true;
}
