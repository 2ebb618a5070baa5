#include <windows.h>
#include <shellapi.h>

#include "platform/NConsole.h"
#include "platform/NUnicode.h"

namespace {
HANDLE Handle(NStandardStream stream) {
  return GetStdHandle(stream == NStandardStream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}
}  // namespace

bool NWriteStandard(NStandardStream stream, std::string_view bytes) {
  const HANDLE handle = Handle(stream);
  while (!bytes.empty()) {
    DWORD written = 0;
    const DWORD chunk = static_cast<DWORD>(bytes.size() > (1u << 30) ? (1u << 30) : bytes.size());
    if (!WriteFile(handle, bytes.data(), chunk, &written, nullptr)) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

bool NIsTerminal(NStandardStream stream) {
  DWORD mode = 0;
  return GetConsoleMode(Handle(stream), &mode) != 0;
}

bool NReadStandardLine(std::string* line, bool echo) {
  const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
  DWORD saved = 0;
  const bool console = GetConsoleMode(input, &saved) != 0;
  line->clear();
  if (console) {
    // A console hands out UTF-16; the echo is a mode of its own.
    if (!echo) SetConsoleMode(input, saved & ~static_cast<DWORD>(ENABLE_ECHO_INPUT));
    std::u16string wide;
    wchar_t c;
    DWORD read = 0;
    bool any = false;
    while (ReadConsoleW(input, &c, 1, &read, nullptr) && read == 1 && c != L'\n') {
      any = true;
      if (c != L'\r') wide.push_back(static_cast<char16_t>(c));
    }
    any = any || read == 1;
    if (!echo) {
      SetConsoleMode(input, saved);
      NWriteStandard(NStandardStream::kError, "\r\n");
    }
    *line = NUtf16ToUtf8(wide);
    return any;
  }
  bool any = false;
  char c;
  DWORD read = 0;
  while (ReadFile(input, &c, 1, &read, nullptr) && read == 1) {
    any = true;
    if (c == '\n') break;
    line->push_back(c);
  }
  if (!line->empty() && line->back() == '\r') line->pop_back();
  return any;
}

std::vector<std::string> NCommandLineArguments(int argc, char** argv) {
  // The narrow argv is in the ANSI code page and loses characters; read the
  // real UTF-16 command line instead.
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (!wide) return {argv, argv + argc};
  std::vector<std::string> args;
  for (int i = 0; i < count; ++i) {
    args.push_back(NUtf16ToUtf8(reinterpret_cast<const char16_t*>(wide[i])));
  }
  LocalFree(wide);
  return args;
}
