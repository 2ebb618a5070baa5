#pragma once

#include <functional>

#include "config/NSecretFormat.h"

// %1 nothing. No key for encrypted values is set up in this process.
inline constexpr std::uint32_t kMsgNoSecretKey = 0xE138F086;

// Where the process's encrypted values get their keys: the host (or the
// tool) sets a source for the configuration folder it works on, the
// folder's NSecretKeyring as a rule. Without a source, plain values cannot
// be saved and sealed ones cannot be read. Thread-safe.
//
// A source is asked either for the key new values are sealed with
// (`wanted` null) or for the key of a stored value's id; a key it does not
// hold is kMsgSecretOtherKey.
using NSecretKeySource =
    std::function<bool(const NSecretKeyId* wanted, NSecretKey* key, NReportMessageParams& params)>;

// Installs `source` (empty: none); returns the one it replaced.
NSecretKeySource NSetSecretKeySource(NSecretKeySource source);
// Whether a source is installed.
bool NHasSecretKeySource();
// The key new values are sealed with; kMsgNoSecretKey without a source.
bool NCurrentSecretKey(NSecretKey* key, NReportMessageParams& params);
// The key of `id`, for opening a value sealed with it.
bool NSecretKeyById(const NSecretKeyId& id, NSecretKey* key, NReportMessageParams& params);

// Why the calling thread's last encrypted value was not stored, kept by the
// store's writer for the record's save to report; taking it clears it.
void NNoteSecretRefusal(const NReportMessageParams& params);
bool NTakeSecretRefusal(NReportMessageParams* params);
