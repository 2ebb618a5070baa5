#pragma once

#include <cstdint>

// The Win32 error code Windows reports in the situation that made a POSIX call
// fail with `err`, so that callers and reports see the same codes on every
// platform. 0 stays 0.
std::uint32_t NWin32ErrorFromErrno(int err);
