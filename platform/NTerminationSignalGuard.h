#pragma once

// Holds back the requests to stop politely (SIGTERM, SIGINT and SIGHUP on
// POSIX) for the calling thread while it lives; a request that arrives
// meanwhile is delivered when the guard goes. The store holds one from
// cutting a key file to writing its last byte, so that a polite shutdown
// never leaves a cut file. SIGKILL cannot be held back. On Windows console
// control events run on a thread of their own and are not held.
class NTerminationSignalGuard {
 public:
  NTerminationSignalGuard();
  ~NTerminationSignalGuard();
  NTerminationSignalGuard(const NTerminationSignalGuard&) = delete;
  NTerminationSignalGuard& operator=(const NTerminationSignalGuard&) = delete;

 private:
  alignas(8) unsigned char m_saved[128];  // the previous signal mask
  bool m_active = false;
};
