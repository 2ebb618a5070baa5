#include <process.h>
#include <windows.h>

#include <cstdint>
#include <memory>

#include "platform/NDetachedThread.h"

// Not std::thread::detach: MinGW's thread library can hand a new thread a
// freed start record when threads are started and detached on several
// threads at once. A thread of the C runtime's own, whose handle is closed
// at once, is detached by nature.

namespace {

unsigned __stdcall Run(void* argument) {
  const std::unique_ptr<std::function<void()>> work(static_cast<std::function<void()>*>(argument));
  (*work)();
  return 0;
}

}  // namespace

bool NStartDetachedThread(std::function<void()> work) {
  auto* argument = new std::function<void()>(std::move(work));
  const std::uintptr_t thread = _beginthreadex(nullptr, 0, &Run, argument, 0, nullptr);
  if (thread == 0) {
    delete argument;
    return false;
  }
  CloseHandle(reinterpret_cast<HANDLE>(thread));
  return true;
}
