#pragma once

#include <functional>

// Runs `work` on a new thread that nobody joins; the thread ends when
// `work` returns. False, and `work` never runs, when the system cannot start
// a thread.
bool NStartDetachedThread(std::function<void()> work);
