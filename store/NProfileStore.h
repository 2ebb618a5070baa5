#pragma once

#include <memory>

#include "store/NProfileKey.h"

// A store: a tree of keys. Owned by whoever created it (through its
// factory), destroyed through the virtual destructor; it must outlive the
// keys opened from it. Keys opened from one store may be used by different
// threads at once.
class NProfileStore {
 public:
  NProfileStore() = default;
  NProfileStore(const NProfileStore&) = delete;
  NProfileStore& operator=(const NProfileStore&) = delete;

  // The slot order is fixed.
  virtual ~NProfileStore() = default;
  // Opens the root key; a key opened read-only stays read-only, and so do
  // the sub-keys opened from it. Null on failure (params say why).
  virtual std::unique_ptr<NProfileKey> OpenRootKey(bool readOnly, NReportMessageParams& params) = 0;
};
