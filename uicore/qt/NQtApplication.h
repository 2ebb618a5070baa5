#pragma once

#include <memory>

// The Qt toolkit for a program that shows the dialogs: the application
// object and the Qt dialog backend, installed for the object's life (the
// headless backend is back afterwards). One per process, on the thread
// that will run the dialogs. Its header keeps Qt out of the program.
class NQtApplication {
 public:
  // `offscreen`: draw into memory, without a display (for screenshots).
  NQtApplication(int& argc, char** argv, bool offscreen);
  ~NQtApplication();
  NQtApplication(const NQtApplication&) = delete;
  NQtApplication& operator=(const NQtApplication&) = delete;

 private:
  struct Parts;
  std::unique_ptr<Parts> m_parts;
};
