#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A printer's default paper and where on it the printable area lies, in
// inches.
struct NPrinterPageArea {
  double pageWidth = 0;
  double pageHeight = 0;
  double leftOffset = 0;  // from the paper's left edge to the printable area
  double topOffset = 0;   // from the paper's top edge to the printable area
  double printableWidth = 0;
  double printableHeight = 0;
};

// Why a printer operation failed, in the terms of the back end.
struct NPrinterError {
  enum class Kind {
    kSystem,            // `code` is a Win32 error code
    kCupsDestinations,  // `detail` is CUPS's own text
    kNoDefaultPrinter,  // the system names no default printer
    kNoSuchPrinter,     // no printer has the name asked for
  };
  Kind kind = Kind::kSystem;
  std::uint32_t code = 0;
  std::u16string detail;
};

// The system's printers: CUPS on POSIX, the print spooler and the printer's
// device context on Windows. Tests substitute their own. Implementations are
// thread-safe.
class NPrinterDevices {
 public:
  NPrinterDevices() = default;
  NPrinterDevices(const NPrinterDevices&) = delete;
  NPrinterDevices& operator=(const NPrinterDevices&) = delete;
  virtual ~NPrinterDevices() = default;

  // The real system's. Never destroyed: the printer service's detached
  // start-up thread may still be inside it while the process exits.
  static NPrinterDevices& Default();

  // Starts the printing back end and has it list its printers; false when
  // it cannot. Having no printers is no failure. May take long.
  virtual bool Start(NPrinterError* error) = 0;
  // The default printer's name; false when there is none or it cannot be
  // asked for.
  virtual bool FindDefaultPrinter(std::u16string* name, NPrinterError* error) = 0;
  virtual bool HasPrinter(std::u16string_view name) = 0;
  // The printer's default paper and its printable area.
  virtual bool GetPageArea(std::u16string_view name, NPrinterPageArea* area, NPrinterError* error) = 0;
};
