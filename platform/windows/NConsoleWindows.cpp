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
