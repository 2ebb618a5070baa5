#include <windows.h>

#include <string>

#include "platform/NRegistry.h"

namespace {

const wchar_t* Wide(const char16_t* p) { return reinterpret_cast<const wchar_t*>(p); }

// Win32 wants NUL-terminated names.
std::wstring Terminated(std::u16string_view text) { return std::wstring(Wide(text.data()), text.size()); }

NStatus Failure(LSTATUS error, const char* operation, std::u16string_view path) {
  return NStatus::Error(static_cast<std::uint32_t>(error), operation, path);
}

class NWindowsRegistryKey final : public NRegistryKey {
 public:
  NWindowsRegistryKey(HKEY key, std::u16string path) : m_key(key), m_path(std::move(path)) {}
  ~NWindowsRegistryKey() override { RegCloseKey(m_key); }

  NStatus QueryString(std::u16string_view name, std::u16string* value) override {
    const std::wstring valueName = Terminated(name);
    DWORD type = 0;
    DWORD size = 0;
    LSTATUS error = RegQueryValueExW(m_key, valueName.c_str(), nullptr, &type, nullptr, &size);
    // The value may grow between the two calls: ask again until it fits.
    std::wstring buffer;
    while (error == ERROR_SUCCESS || error == ERROR_MORE_DATA) {
      if (type != REG_SZ && type != REG_EXPAND_SZ) return Failure(kWrongType, "read registry value", m_path);
      buffer.resize(size / sizeof(wchar_t) + 1);
      size = static_cast<DWORD>(buffer.size() * sizeof(wchar_t));
      error = RegQueryValueExW(m_key, valueName.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size);
      if (error == ERROR_SUCCESS) {
        if (type != REG_SZ && type != REG_EXPAND_SZ) return Failure(kWrongType, "read registry value", m_path);
        buffer.resize(size / sizeof(wchar_t));
        // Stored strings need not end in NUL, or may end in several.
        while (!buffer.empty() && buffer.back() == L'\0') buffer.pop_back();
        value->assign(reinterpret_cast<const char16_t*>(buffer.data()), buffer.size());
        return NStatus::Ok();
      }
    }
    return Failure(error, "read registry value", m_path);
  }

  NStatus QueryDword(std::u16string_view name, std::uint32_t* value) override {
    const std::wstring valueName = Terminated(name);
    DWORD type = 0;
    DWORD data = 0;
    DWORD size = sizeof data;
    LSTATUS error = RegQueryValueExW(m_key, valueName.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&data), &size);
    if (error == ERROR_MORE_DATA || (error == ERROR_SUCCESS && (type != REG_DWORD || size != sizeof data))) {
      return Failure(kWrongType, "read registry value", m_path);
    }
    if (error != ERROR_SUCCESS) return Failure(error, "read registry value", m_path);
    *value = data;
    return NStatus::Ok();
  }

  NStatus SetString(std::u16string_view name, std::u16string_view value) override {
    const std::wstring valueName = Terminated(name);
    const std::wstring data = Terminated(value);
    const LSTATUS error =
        RegSetValueExW(m_key, valueName.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()),
                       static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t)));
    return error == ERROR_SUCCESS ? NStatus::Ok() : Failure(error, "write registry value", m_path);
  }

  NStatus SetDword(std::u16string_view name, std::uint32_t value) override {
    const std::wstring valueName = Terminated(name);
    const DWORD data = value;
    const LSTATUS error =
        RegSetValueExW(m_key, valueName.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data), sizeof data);
    return error == ERROR_SUCCESS ? NStatus::Ok() : Failure(error, "write registry value", m_path);
  }

 private:
  HKEY m_key;
  std::u16string m_path;
};

class NWindowsRegistry final : public NRegistry {
 public:
  NStatus OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                  std::unique_ptr<NRegistryKey>* key) override {
    HKEY root = hive == NRegistryHive::kCurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    const std::wstring subKey = Terminated(path);
    HKEY opened = nullptr;
    LSTATUS error;
    if (create) {
      error = RegCreateKeyExW(root, subKey.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr,
                              &opened, nullptr);
    } else {
      error = RegOpenKeyExW(root, subKey.c_str(), 0, KEY_READ, &opened);
    }
    if (error != ERROR_SUCCESS) return Failure(error, create ? "create registry key" : "open registry key", path);
    *key = std::make_unique<NWindowsRegistryKey>(opened, std::u16string(path));
    return NStatus::Ok();
  }
};

}  // namespace

NStatus NRegistryFolder(NRegistryHive hive, std::u16string* folder) {
  folder->clear();
  std::wstring value(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = GetEnvironmentVariableW(L"CFGDECK_REGISTRY_DIR", value.data(), static_cast<DWORD>(value.size()));
    if (n == 0) return NStatus::Ok();  // unset or empty: the native registry
    if (n < value.size()) {
      value.resize(n);
      break;
    }
    value.resize(n);
  }
  value += hive == NRegistryHive::kCurrentUser ? L"\\HKEY_CURRENT_USER" : L"\\HKEY_LOCAL_MACHINE";
  folder->assign(reinterpret_cast<const char16_t*>(value.data()), value.size());
  return NStatus::Ok();
}

NRegistry* NNativeRegistry() {
  static NWindowsRegistry registry;
  return &registry;
}
