#include <termios.h>
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

bool NReadStandardLine(std::string* line, bool echo) {
  termios saved{};
  const bool hide = !echo && ::isatty(STDIN_FILENO) == 1 && ::tcgetattr(STDIN_FILENO, &saved) == 0;
  if (hide) {
    termios quiet = saved;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  line->clear();
  bool any = false;
  char c;
  for (;;) {
    const ssize_t n = ::read(STDIN_FILENO, &c, 1);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0 || c == '\n') {
      any = any || n > 0;
      break;
    }
    any = true;
    line->push_back(c);
  }
  if (hide) {
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    NWriteStandard(NStandardStream::kError, "\n");  // the Enter that was not echoed
  }
  if (!line->empty() && line->back() == '\r') line->pop_back();
  return any;
}

std::vector<std::string> NCommandLineArguments(int argc, char** argv) { return {argv, argv + argc}; }
