#pragma once

#include <functional>

#include "config/NSecretFormat.h"

// %1 nothing. No key for encrypted values is set up in this process.
inline constexpr std::uint32_t kMsgNoSecretKey = 0xE138F086;

// Where the process's encrypted values get their key: the host (or the
// tool) sets a source for the configuration folder it works on, an
// NSecretKeyring's key as a rule. Without a source, plain values cannot be
// saved and sealed ones cannot be read. Thread-safe.
using NSecretKeySource = std::function<bool(NSecretKey* key, NReportMessageParams& params)>;

// Installs `source` (empty: none); returns the one it replaced.
NSecretKeySource NSetSecretKeySource(NSecretKeySource source);
// Whether a source is installed.
bool NHasSecretKeySource();
// The key from the installed source; kMsgNoSecretKey without one.
bool NCurrentSecretKey(NSecretKey* key, NReportMessageParams& params);
