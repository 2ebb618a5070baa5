#include "config/NSecretKeys.h"

#include <mutex>
#include <optional>

namespace {

std::mutex g_mutex;  // guards g_source
NSecretKeySource g_source;
thread_local std::optional<NReportMessageParams> t_refusal;

bool Ask(const NSecretKeyId* wanted, NSecretKey* key, NReportMessageParams& params) {
  NSecretKeySource source;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    source = g_source;
  }
  // Unlocked: a source may take its time (a keyring asking the system).
  if (!source) {
    params.SetCode(kMsgNoSecretKey);
    return false;
  }
  return source(wanted, key, params);
}

}  // namespace

NSecretKeySource NSetSecretKeySource(NSecretKeySource source) {
  std::lock_guard<std::mutex> lock(g_mutex);
  std::swap(g_source, source);
  return source;
}

bool NHasSecretKeySource() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return static_cast<bool>(g_source);
}

bool NCurrentSecretKey(NSecretKey* key, NReportMessageParams& params) { return Ask(nullptr, key, params); }

bool NSecretKeyById(const NSecretKeyId& id, NSecretKey* key, NReportMessageParams& params) {
  return Ask(&id, key, params);
}

void NNoteSecretRefusal(const NReportMessageParams& params) { t_refusal = params; }

bool NTakeSecretRefusal(NReportMessageParams* params) {
  if (!t_refusal) return false;
  *params = *t_refusal;
  t_refusal.reset();
  return true;
}
