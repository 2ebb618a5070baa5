#include <system_error>
#include <thread>

#include "platform/NDetachedThread.h"

bool NStartDetachedThread(std::function<void()> work) {
  try {
    std::thread(std::move(work)).detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}
