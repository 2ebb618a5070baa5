#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <mutex>

#include "platform/NTerminationSignalGuard.h"

static_assert(sizeof(sigset_t) <= 128, "the saved mask must fit");

namespace {

constexpr int kHeld[] = {SIGTERM, SIGINT, SIGHUP};

// Blocking the signals in the saving thread is not enough: the system hands
// a signal sent to the process to any thread that does not block it, and
// the default action ends the whole process. So while any guard lives, the
// process's action for these signals is a handler that only notes the
// request; the last guard puts the previous actions back and then raises
// what was noted.
std::mutex g_mutex;  // guards g_guards and g_previous
int g_guards = 0;
struct sigaction g_previous[3];
volatile sig_atomic_t g_pending = 0;

extern "C" void NoteRequest(int signal) { g_pending = signal; }

sigset_t HeldSet() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kHeld) sigaddset(&set, signal);
  return set;
}

}  // namespace

NTerminationSignalGuard::NTerminationSignalGuard() {
  const sigset_t hold = HeldSet();
  sigset_t previous;
  if (pthread_sigmask(SIG_BLOCK, &hold, &previous) != 0) return;
  std::memcpy(m_saved, &previous, sizeof previous);
  m_active = true;
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_guards++ > 0) return;
  struct sigaction note = {};
  note.sa_handler = NoteRequest;
  note.sa_flags = SA_RESTART;
  sigfillset(&note.sa_mask);
  for (size_t i = 0; i < std::size(kHeld); ++i) sigaction(kHeld[i], &note, &g_previous[i]);
}

NTerminationSignalGuard::~NTerminationSignalGuard() {
  if (!m_active) return;
  int pending = 0;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    if (--g_guards == 0) {
      for (size_t i = 0; i < std::size(kHeld); ++i) sigaction(kHeld[i], &g_previous[i], nullptr);
      pending = g_pending;
      g_pending = 0;
    }
  }
  sigset_t previous;
  std::memcpy(&previous, m_saved, sizeof previous);
  // Requests sent to this thread while it was blocked arrive here, under
  // the previous actions.
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  if (pending != 0) kill(getpid(), pending);
}
