#include "platform/testing/NScopedEnvironment.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <stdlib.h>

#include "platform/NUnicode.h"

#ifdef _WIN32

namespace {

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

}  // namespace

std::optional<std::u16string> NScopedEnvironment::Get(const std::string& name) {
  const std::wstring wideName = Wide(name);
  std::wstring value(64, L'\0');
  for (;;) {
    SetLastError(ERROR_SUCCESS);
    const DWORD n = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
    if (n == 0) {
      if (GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
      return std::u16string();
    }
    if (n < value.size()) return std::u16string(reinterpret_cast<const char16_t*>(value.data()), n);
    value.resize(n);
  }
}

void NScopedEnvironment::Set(const std::string& name, const std::optional<std::u16string>& value) {
  // The C runtime keeps a copy of its own, which getenv reads; an empty
  // value removes the variable there, so it does here as well.
  const std::wstring wideName = Wide(name);
  const std::wstring wideValue = value ? std::wstring(value->begin(), value->end()) : std::wstring();
  _wputenv_s(wideName.c_str(), wideValue.c_str());
  SetEnvironmentVariableW(wideName.c_str(), wideValue.empty() ? nullptr : wideValue.c_str());
}

#else

std::optional<std::u16string> NScopedEnvironment::Get(const std::string& name) {
  const char* value = ::getenv(name.c_str());
  if (!value) return std::nullopt;
  return NUtf8ToUtf16(value);
}

void NScopedEnvironment::Set(const std::string& name, const std::optional<std::u16string>& value) {
  if (value) {
    ::setenv(name.c_str(), NUtf16ToUtf8(*value).c_str(), 1);
  } else {
    ::unsetenv(name.c_str());
  }
}

#endif

NScopedEnvironment::NScopedEnvironment(std::string name, const std::optional<std::u16string>& value)
    : m_name(std::move(name)), m_old(Get(m_name)) {
  Set(m_name, value);
}

NScopedEnvironment::~NScopedEnvironment() { Set(m_name, m_old); }
