#include <cups/cups.h>

#include <memory>
#include <string>

#include "platform/NPrinterDevices.h"
#include "platform/NUnicode.h"

namespace {

// CUPS measures paper in hundredths of a millimetre.
constexpr double kUnitsPerInch = 2540.0;

struct DestDeleter {
  void operator()(cups_dest_t* dest) const { cupsFreeDests(1, dest); }
};
using DestPointer = std::unique_ptr<cups_dest_t, DestDeleter>;

struct InfoDeleter {
  void operator()(cups_dinfo_t* info) const { cupsFreeDestInfo(info); }
};

// What CUPS said last on this thread (its error state is per thread).
void CupsFailure(NPrinterError* error) {
  error->kind = NPrinterError::Kind::kCupsDestinations;
  error->code = static_cast<std::uint32_t>(cupsLastError());
  const char* text = cupsLastErrorString();
  error->detail = NUtf8ToUtf16(text ? text : "");
}

// "queue" or "queue/instance", as lpstat names them; no name is the default.
DestPointer NamedDest(std::u16string_view name) {
  if (name.empty()) return DestPointer(cupsGetNamedDest(CUPS_HTTP_DEFAULT, nullptr, nullptr));
  const std::string full = NUtf16ToUtf8(name);
  const std::size_t slash = full.find('/');
  const std::string queue = full.substr(0, slash);
  const std::string instance = slash == std::string::npos ? std::string() : full.substr(slash + 1);
  return DestPointer(cupsGetNamedDest(CUPS_HTTP_DEFAULT, queue.c_str(), instance.empty() ? nullptr : instance.c_str()));
}

class NCupsPrinterDevices final : public NPrinterDevices {
 public:
  bool Start(NPrinterError* error) override {
    cups_dest_t* dests = nullptr;
    const int count = cupsGetDests2(CUPS_HTTP_DEFAULT, &dests);
    cupsFreeDests(count, dests);
    // No destinations with no error is a scheduler without printers.
    if (count == 0 && cupsLastError() > IPP_STATUS_OK_EVENTS_COMPLETE) {
      CupsFailure(error);
      return false;
    }
    return true;
  }

  bool FindDefaultPrinter(std::u16string* name, NPrinterError* error) override {
    const DestPointer dest = NamedDest({});
    if (!dest) {
      if (cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND) {
        *error = NPrinterError{NPrinterError::Kind::kNoDefaultPrinter, 0, {}};
      } else {
        CupsFailure(error);
      }
      return false;
    }
    std::string full = dest->name;
    if (dest->instance) full += std::string("/") + dest->instance;
    *name = NUtf8ToUtf16(full);
    return true;
  }

  bool HasPrinter(std::u16string_view name) override { return !name.empty() && NamedDest(name) != nullptr; }

  bool GetPageArea(std::u16string_view name, NPrinterPageArea* area, NPrinterError* error) override {
    const DestPointer dest = name.empty() ? nullptr : NamedDest(name);
    if (!dest) {
      if (name.empty() || cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND) {
        *error = NPrinterError{NPrinterError::Kind::kNoSuchPrinter, 0, std::u16string(name)};
      } else {
        CupsFailure(error);
      }
      return false;
    }
    const std::unique_ptr<cups_dinfo_t, InfoDeleter> info(cupsCopyDestInfo(CUPS_HTTP_DEFAULT, dest.get()));
    cups_size_t size{};
    if (!info || !cupsGetDestMediaDefault(CUPS_HTTP_DEFAULT, dest.get(), info.get(), 0, &size) || size.width <= 0 ||
        size.length <= 0) {
      CupsFailure(error);
      return false;
    }
    area->pageWidth = size.width / kUnitsPerInch;
    area->pageHeight = size.length / kUnitsPerInch;
    area->leftOffset = size.left / kUnitsPerInch;
    area->topOffset = size.top / kUnitsPerInch;
    area->printableWidth = (size.width - size.left - size.right) / kUnitsPerInch;
    area->printableHeight = (size.length - size.top - size.bottom) / kUnitsPerInch;
    return true;
  }
};

}  // namespace

NPrinterDevices& NPrinterDevices::Default() {
  static NPrinterDevices* const devices = new NCupsPrinterDevices;
  return *devices;
}
