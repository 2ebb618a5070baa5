#include "printing/Printer.h"

#include <mutex>
#include <string>

namespace {

// Guards Printer::m_pCurrentPrinter.
std::mutex g_currentLock;

NReportMessageParams ReportOf(const NPrinterError& error) {
  switch (error.kind) {
    case NPrinterError::Kind::kCupsDestinations: {
      NReportMessageParams params(kMsgPrinterCupsDestinations);
      params.AddArgument(error.detail);
      return params;
    }
    case NPrinterError::Kind::kNoDefaultPrinter:
      return NReportMessageParams(kMsgNoDefaultPrinter);
    case NPrinterError::Kind::kNoSuchPrinter: {
      NReportMessageParams params(kMsgPrinterNotFound);
      params.AddArgument(error.detail);
      return params;
    }
    case NPrinterError::Kind::kSystem:
      break;
  }
  return NReportMessageParams(error.code);
}

}  // namespace

NUnknownPointer<Printer> Printer::m_pCurrentPrinter;

void Printer::Initialize(std::uint64_t timeout, Notifier notifier) {
  PrinterBase::Initialize(
      timeout, [](NReportMessageParams& params) { return Probe(NPrinterDevices::Default(), params); },
      std::move(notifier));
}

bool Printer::Probe(NPrinterDevices& devices, NReportMessageParams& params) {
  NPrinterError error;
  if (devices.Start(&error)) return true;
  params = ReportOf(error);
  return false;
}

NUnknownPointer<Printer> Printer::GetCurrentPrinter() {
  std::lock_guard lock(g_currentLock);
  return m_pCurrentPrinter;
}

bool Printer::GetDefaultPrinterW(NUnicodeString& name, NReportMessageParams& params, NPrinterDevices& devices) {
  std::u16string found;
  NPrinterError error;
  if (!devices.FindDefaultPrinter(&found, &error)) {
    params = ReportOf(error);
    return false;
  }
  name = std::move(found);
  return true;
}

bool Printer::HasDefaultPrinter(NPrinterDevices& devices) {
  std::u16string name;
  NPrinterError error;
  return devices.FindDefaultPrinter(&name, &error);
}

bool Printer::SelectCurrentPrinter(std::u16string_view name, bool useDefaultWhenMissing, NReportMessageParams& params,
                                   NPrinterDevices& devices) {
  NUnicodeString chosen(name);
  const bool exists = !name.empty() && devices.HasPrinter(name);
  if (!exists) {
    if (!name.empty() && !useDefaultWhenMissing) {
      params = ReportOf({NPrinterError::Kind::kNoSuchPrinter, 0, std::u16string(name)});
      return false;
    }
    if (!GetDefaultPrinterW(chosen, params, devices)) return false;
  }
  NUnknownPointer<Printer> selected = Create(chosen, devices);
  std::lock_guard lock(g_currentLock);
  // The one released here, if it is the last reference, is freed under the
  // lock; a printer's destruction takes no lock of its own.
  m_pCurrentPrinter = std::move(selected);
  return true;
}

bool Printer::SelectCurrentPrinter(const NSessionPrinterSettings* session, const NPrinterSettings& global,
                                   NReportMessageParams& params, NPrinterDevices& devices) {
  const NPrinterSettings& settings = session && !session->useGlobalPrintSettings ? session->settings : global;
  return SelectCurrentPrinter(settings.printerName, true, params, devices);
}

NUnknownPointer<Printer> Printer::Create(std::u16string_view name, NPrinterDevices& devices) {
  return NUnknownPointer<Printer>::Adopt(new Printer(name, devices));
}

bool Printer::CalculateMarginLimits(MarginLimits& limits, NReportMessageParams& params) {
  NPrinterPageArea area;
  NPrinterError error;
  if (!m_devices.GetPageArea(m_name, &area, &error)) {
    params = ReportOf(error);
    return false;
  }
  limits.leftOffset = area.leftOffset;
  limits.printableWidth = area.printableWidth;
  limits.topOffset = area.topOffset;
  limits.printableHeight = area.printableHeight;
  limits.pageWidth = area.pageWidth;
  limits.pageHeight = area.pageHeight;
  return true;
}
