#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "base/NUnicodeString.h"
#include "config/NSecretFormat.h"

class NProfileKey;

// Re-seals, with one key, every sealed value of a tree of keys that another
// known key sealed, each key saved on its own as soon as its values are
// done. A value sealed with a key not known is left as it is; a key that
// fails is noted and the walk goes on. Not thread-safe.
class NSecretRekeyer {
 public:
  struct Failure {
    NUnicodeString key;
    NUnicodeString why;
  };

  NSecretRekeyer(const NSecretKey& target, std::vector<NSecretKey> known);

  // Walks `root` and everything under it; `progress` is told each key done.
  void Run(NProfileKey& root, const std::function<void(std::size_t keysDone)>& progress);

  std::size_t Resealed() const { return m_resealed; }
  // Values sealed with keys not known: unreadable before, and after.
  std::size_t Unknown() const { return m_unknown; }
  const std::vector<Failure>& Failures() const { return m_failures; }

 private:
  void Visit(NProfileKey& key, const std::function<void(std::size_t)>& progress);
  bool Reseal(NProfileKey& key, const NUnicodeString& name, NReportMessageParams& params);

  NSecretKey m_target;
  std::vector<NSecretKey> m_known;
  std::size_t m_keys = 0;
  std::size_t m_resealed = 0;
  std::size_t m_unknown = 0;
  std::vector<Failure> m_failures;
};
