#include <windows.h>

#include <vector>

#include "platform/NIcon.h"

namespace {

// Any object of this file: its address names the module that holds the code.
const char kModuleAnchor = 0;

HMODULE ThisModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&kModuleAnchor), &module);
  return module;
}

HICON Load(HMODULE module, const NLibraryIcon& icon) {
  const int pixels = GetSystemMetrics(SM_CXSMICON);
  // The DLL carries the icons as resources. The layers linked straight into
  // a program (the tests, the tool) have none there, and make the icon from
  // the embedded file instead.
  if (module != nullptr) {
    HANDLE loaded = LoadImageW(module, MAKEINTRESOURCEW(icon.resourceId), IMAGE_ICON, pixels, pixels, LR_DEFAULTCOLOR);
    if (loaded != nullptr) return static_cast<HICON>(loaded);
  }
  const std::string_view image = NIconImage(icon.bytes, pixels);
  if (image.empty()) return nullptr;
  return CreateIconFromResourceEx(reinterpret_cast<PBYTE>(const_cast<char*>(image.data())),
                                  static_cast<DWORD>(image.size()), TRUE, 0x00030000, pixels, pixels, LR_DEFAULTCOLOR);
}

}  // namespace

NIconHandle NLoadLibraryIcon(int resourceId) {
  // Loaded once, on first use, and kept for the process, like the handles
  // of the other systems; callers never destroy them.
  static const std::vector<HICON> icons = [] {
    const HMODULE module = ThisModule();
    std::vector<HICON> loaded;
    for (const NLibraryIcon& icon : NLibraryIcons()) loaded.push_back(Load(module, icon));
    return loaded;
  }();
  const std::span<const NLibraryIcon> all = NLibraryIcons();
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (all[i].resourceId == resourceId) return icons[i];
  }
  return nullptr;
}
