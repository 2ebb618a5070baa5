#include <signal.h>

#include <cstring>

#include "platform/NTerminationSignalGuard.h"

static_assert(sizeof(sigset_t) <= 128, "the saved mask must fit");

NTerminationSignalGuard::NTerminationSignalGuard() {
  sigset_t hold;
  sigemptyset(&hold);
  sigaddset(&hold, SIGTERM);
  sigaddset(&hold, SIGINT);
  sigaddset(&hold, SIGHUP);
  sigset_t previous;
  if (pthread_sigmask(SIG_BLOCK, &hold, &previous) == 0) {
    std::memcpy(m_saved, &previous, sizeof previous);
    m_active = true;
  }
}

NTerminationSignalGuard::~NTerminationSignalGuard() {
  if (!m_active) return;
  sigset_t previous;
  std::memcpy(&previous, m_saved, sizeof previous);
  pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}
