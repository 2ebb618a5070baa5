#pragma once

#include <string_view>

#include "platform/NConsole.h"

// Output of the cfgdeck tool: bytes to stdout and stderr exactly as given.
inline void NOut(std::string_view text) { NWriteStandard(NStandardStream::kOutput, text); }
inline void NErr(std::string_view text) { NWriteStandard(NStandardStream::kError, text); }

// Exit statuses of the tool.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;  // a refused or failed operation; the reason on stderr
inline constexpr int kExitUsage = 2;    // bad usage
