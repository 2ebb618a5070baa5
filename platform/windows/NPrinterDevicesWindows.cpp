#include <windows.h>
#include <winspool.h>

#include <string>
#include <vector>

#include "platform/NPrinterDevices.h"

namespace {

LPWSTR Wide(std::u16string& text) { return reinterpret_cast<LPWSTR>(text.data()); }

NPrinterError SystemError(DWORD code) { return NPrinterError{NPrinterError::Kind::kSystem, code, {}}; }

// The spooler's answer for a name that names no printer.
bool IsUnknownPrinter(DWORD code) { return code == ERROR_INVALID_PRINTER_NAME || code == ERROR_INVALID_NAME; }

class NWindowsPrinterDevices final : public NPrinterDevices {
 public:
  bool Start(NPrinterError* error) override {
    // Level 4 is the cheap listing: names and attributes from the registry.
    const DWORD flags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
    DWORD needed = 0, returned = 0;
    if (EnumPrintersW(flags, nullptr, 4, nullptr, 0, &needed, &returned)) return true;
    DWORD code = GetLastError();
    if (code == ERROR_INSUFFICIENT_BUFFER) {
      std::vector<BYTE> buffer(needed);
      if (EnumPrintersW(flags, nullptr, 4, buffer.data(), needed, &needed, &returned)) return true;
      code = GetLastError();
    }
    *error = SystemError(code);
    return false;
  }

  bool FindDefaultPrinter(std::u16string* name, NPrinterError* error) override {
    DWORD size = 0;
    ::GetDefaultPrinterW(nullptr, &size);
    DWORD code = GetLastError();
    if (code == ERROR_INSUFFICIENT_BUFFER && size > 0) {
      std::u16string buffer(size, u'\0');
      if (::GetDefaultPrinterW(Wide(buffer), &size)) {
        buffer.resize(buffer.find(u'\0'));
        *name = std::move(buffer);
        return true;
      }
      code = GetLastError();
    }
    if (code == ERROR_FILE_NOT_FOUND) {
      *error = NPrinterError{NPrinterError::Kind::kNoDefaultPrinter, code, {}};
    } else {
      *error = SystemError(code);
    }
    return false;
  }

  bool HasPrinter(std::u16string_view name) override {
    if (name.empty()) return false;
    std::u16string copy(name);
    HANDLE printer = nullptr;
    if (!OpenPrinterW(Wide(copy), &printer, nullptr)) return false;
    ClosePrinter(printer);
    return true;
  }

  bool GetPageArea(std::u16string_view name, NPrinterPageArea* area, NPrinterError* error) override {
    std::u16string copy(name);
    HDC dc = name.empty() ? nullptr : CreateDCW(L"WINSPOOL", Wide(copy), nullptr, nullptr);
    if (!dc) {
      const DWORD code = GetLastError();
      if (name.empty() || IsUnknownPrinter(code) || !HasPrinter(name)) {
        *error = NPrinterError{NPrinterError::Kind::kNoSuchPrinter, code, copy};
      } else {
        *error = SystemError(code);
      }
      return false;
    }
    const double dpiX = GetDeviceCaps(dc, LOGPIXELSX);
    const double dpiY = GetDeviceCaps(dc, LOGPIXELSY);
    const int pageWidth = GetDeviceCaps(dc, PHYSICALWIDTH);
    const int pageHeight = GetDeviceCaps(dc, PHYSICALHEIGHT);
    const int offsetX = GetDeviceCaps(dc, PHYSICALOFFSETX);
    const int offsetY = GetDeviceCaps(dc, PHYSICALOFFSETY);
    const int printableWidth = GetDeviceCaps(dc, HORZRES);
    const int printableHeight = GetDeviceCaps(dc, VERTRES);
    DeleteDC(dc);
    if (dpiX <= 0 || dpiY <= 0 || pageWidth <= 0 || pageHeight <= 0) {
      *error = SystemError(ERROR_INVALID_DATA);
      return false;
    }
    area->pageWidth = pageWidth / dpiX;
    area->pageHeight = pageHeight / dpiY;
    area->leftOffset = offsetX / dpiX;
    area->topOffset = offsetY / dpiY;
    area->printableWidth = printableWidth / dpiX;
    area->printableHeight = printableHeight / dpiY;
    return true;
  }
};

}  // namespace

NPrinterDevices& NPrinterDevices::Default() {
  static NPrinterDevices* const devices = new NWindowsPrinterDevices;
  return *devices;
}
