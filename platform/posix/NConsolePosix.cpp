#include <unistd.h>

#include <cerrno>

#include "platform/NConsole.h"

namespace {
int Descriptor(NStandardStream stream) { return stream == NStandardStream::kOutput ? STDOUT_FILENO : STDERR_FILENO; }
}  // namespace

bool NWriteStandard(NStandardStream stream, std::string_view bytes) {
  const int fd = Descriptor(stream);
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

bool NIsTerminal(NStandardStream stream) { return ::isatty(Descriptor(stream)) == 1; }

std::vector<std::string> NCommandLineArguments(int argc, char** argv) { return {argv, argv + argc}; }
