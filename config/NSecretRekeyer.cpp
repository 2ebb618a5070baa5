#include "config/NSecretRekeyer.h"

#include <algorithm>
#include <memory>

#include "location/NStatusReport.h"
#include "platform/NStatus.h"
#include "store/NProfileKey.h"
#include "store/NProfileKeyIterator.h"

NSecretRekeyer::NSecretRekeyer(const NSecretKey& target, std::vector<NSecretKey> known)
    : m_target(target), m_known(std::move(known)) {}

void NSecretRekeyer::Run(NProfileKey& root, const std::function<void(std::size_t)>& progress) {
  Visit(root, progress);
}

bool NSecretRekeyer::Reseal(NProfileKey& key, const NUnicodeString& name, NReportMessageParams& params) {
  NUnicodeString stored;
  if (!key.GetStringValue(name, &stored) || !NIsSealedSecret(stored)) return false;
  const std::optional<NSecretKeyId> id = NSealedSecretKeyId(stored);
  if (!id || *id == m_target.id) return false;
  const auto known = std::find_if(m_known.begin(), m_known.end(), [&](const NSecretKey& k) { return k.id == *id; });
  if (known == m_known.end()) {
    ++m_unknown;
    return false;
  }
  const NUnicodeString place = NSecretPlace(key.GetPath(), name);
  NUnicodeString plain, resealed;
  if (!NOpenSecret(*known, place, stored, &plain, params) || !NSealSecret(m_target, place, plain, &resealed, params)) {
    return false;
  }
  std::fill(plain.begin(), plain.end(), u'\0');
  if (key.SetStringValue(name, resealed)) return true;
  NReportStatus(NStatus::Error(NStatus::kInvalidParameter, "store the value", place), params);
  return false;
}

void NSecretRekeyer::Visit(NProfileKey& key, const std::function<void(std::size_t)>& progress) {
  // The names first: the values change under the iterator otherwise.
  std::vector<NUnicodeString> names;
  NUnicodeString name;
  std::uint32_t kind = 0;
  for (auto values = key.CreateIterator(true); values->Next(&name, &kind);) names.push_back(name);
  std::size_t changed = 0;
  NReportMessageParams params;
  for (const NUnicodeString& value : names) {
    if (Reseal(key, value, params)) ++changed;
    if (params.GetCode() != 0) {
      m_failures.push_back({NSecretPlace(key.GetPath(), value), params.GetText()});
      params.Clear();
    }
  }
  if (changed > 0) {
    if (key.Flush(params)) {
      m_resealed += changed;
    } else {
      m_failures.push_back({key.GetPath(), params.GetText()});
      params.Clear();
    }
  }
  if (progress) progress(++m_keys);

  std::vector<NUnicodeString> children;
  for (auto subKeys = key.CreateIterator(false); subKeys->NextName(&name);) children.push_back(name);
  for (const NUnicodeString& child : children) {
    std::unique_ptr<NProfileKey> sub = key.OpenSubKey(child, params);
    if (!sub) {
      m_failures.push_back({key.GetPath() + u"\\" + child, params.GetText()});
      params.Clear();
      continue;
    }
    Visit(*sub, progress);
  }
}
