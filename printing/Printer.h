#pragma once

#include <cstdint>
#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "base/NUnknownPointer.h"
#include "location/NReportMessageParams.h"
#include "platform/NPrinterDevices.h"
#include "printing/NPrinterSettings.h"
#include "printing/PrinterBase.h"

// The back ends' details and the selection's failures.
inline constexpr std::uint32_t kMsgPrinterCupsDestinations = 0xE1380208;  // %1: CUPS's text
inline constexpr std::uint32_t kMsgNoDefaultPrinter = 0xE138F040;
inline constexpr std::uint32_t kMsgPrinterNotFound = 0xE138F041;  // %1: the printer's name

// One printer of the system, and the process's current printer. The
// printer service's probe starts the system's printing back end; a
// printer's margin limits come from its default paper. Devices are reached
// through NPrinterDevices, which tests replace.
class CFGDECK_API Printer final : public PrinterBase {
 public:
  // PrinterBase::Initialize with the system's probe.
  static void Initialize(std::uint64_t timeout, Notifier notifier);
  // The probe: starts the back end of `devices`.
  static bool Probe(NPrinterDevices& devices, NReportMessageParams& params);

  // The printer selected last; null before the first selection.
  static NUnknownPointer<Printer> GetCurrentPrinter();

  static bool GetDefaultPrinterW(NUnicodeString& name, NReportMessageParams& params,
                                 NPrinterDevices& devices = NPrinterDevices::Default());
  static bool HasDefaultPrinter(NPrinterDevices& devices = NPrinterDevices::Default());

  // Makes the printer named `name` current; an empty name means the default
  // printer, and so does a name no printer has when `useDefaultWhenMissing`.
  // False, with params, and the current printer kept, when there is no such
  // printer.
  static bool SelectCurrentPrinter(std::u16string_view name, bool useDefaultWhenMissing, NReportMessageParams& params,
                                   NPrinterDevices& devices = NPrinterDevices::Default());
  // Selects by a session's settings, or by `global` when there is no
  // session or it uses the global settings. A printer that has gone away
  // gives way to the default printer.
  static bool SelectCurrentPrinter(const NSessionPrinterSettings* session, const NPrinterSettings& global,
                                   NReportMessageParams& params, NPrinterDevices& devices = NPrinterDevices::Default());

  // A printer object for `name`, which is not checked.
  static NUnknownPointer<Printer> Create(std::u16string_view name,
                                         NPrinterDevices& devices = NPrinterDevices::Default());

  const NUnicodeString& GetName() const { return m_name; }

  // The printer's default paper and its printable area.
  bool CalculateMarginLimits(MarginLimits& limits, NReportMessageParams& params) override;

 private:
  Printer(std::u16string_view name, NPrinterDevices& devices) : m_name(name), m_devices(devices) {}

  static NUnknownPointer<Printer> m_pCurrentPrinter;

  const NUnicodeString m_name;
  NPrinterDevices& m_devices;
};
