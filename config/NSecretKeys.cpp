#include "config/NSecretKeys.h"

#include <mutex>

namespace {

std::mutex g_mutex;  // guards g_source
NSecretKeySource g_source;

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

bool NCurrentSecretKey(NSecretKey* key, NReportMessageParams& params) {
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
  return source(key, params);
}
