#include <windows.h>
#include <shlobj.h>

#include "platform/NUserFolders.h"

std::u16string NUserConfigRoot() {
  PWSTR folder = nullptr;
  std::u16string root;
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_RoamingAppData, 0, nullptr, &folder))) {
    root = reinterpret_cast<const char16_t*>(folder);
    root += u"\\Nerrin";
  }
  CoTaskMemFree(folder);
  return root;
}
