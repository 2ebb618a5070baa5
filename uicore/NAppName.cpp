#include "uicore/NAppName.h"

#include <mutex>

#include "platform/NPlatform.h"

namespace {

std::mutex g_mutex;  // guards g_name
NUnicodeString g_name;

NUnicodeString ExecutableName() {
  const std::u16string path = NPlatform::Default().ExecutablePath();
  std::size_t begin = path.find_last_of(u"\\/");
  begin = begin == std::u16string::npos ? 0 : begin + 1;
  std::size_t end = path.size();
  if (end - begin > 4) {
    if (NUnicodeString::CompareIgnoreCase(std::u16string_view(path).substr(end - 4), u".exe") == 0) end -= 4;
  }
  return NUnicodeString(std::u16string_view(path).substr(begin, end - begin));
}

}  // namespace

NUnicodeString NGetAppName() {
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    if (!g_name.empty()) return g_name;
  }
  return ExecutableName();
}

void NSetAppName(std::u16string_view name) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_name = NUnicodeString(name);
}
