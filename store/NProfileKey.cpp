#include "store/NProfileKey.h"

#include "location/NReportMessageParams.h"

bool NProfileKey::Flush() {
  NReportMessageParams ignored;
  return Flush(ignored);
}

bool NProfileKey::Reload() {
  NReportMessageParams ignored;
  return Reload(ignored);
}

std::unique_ptr<NProfileKey> NProfileKey::OpenSubKey(std::u16string_view name) {
  NReportMessageParams ignored;
  return OpenSubKey(name, ignored);
}
