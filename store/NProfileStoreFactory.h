#pragma once

#include <memory>

#include "base/NExport.h"
#include "store/NProfileStore.h"

// Makes the stores of one backend. The host chooses the backend by handing
// the library, at start-up, a function that returns its factory; every
// store the library creates afterwards comes from it.
class NProfileStoreFactory {
 public:
  NProfileStoreFactory() = default;
  NProfileStoreFactory(const NProfileStoreFactory&) = delete;
  NProfileStoreFactory& operator=(const NProfileStoreFactory&) = delete;

  // The slot order is fixed.
  virtual ~NProfileStoreFactory() = default;
  virtual std::unique_ptr<NProfileStore> CreateStore() = 0;
};

// The host's factory getter.
using NProfileStoreFactoryGetter = NProfileStoreFactory* (*)();

// Registers the host's factory getter; the host's first call into the
// library. Thread-safe.
CFGDECK_EXTERN_C void CfgdeckInitProfileFactory(NProfileStoreFactoryGetter getter);

// The registered factory, or null before registration (or when the getter
// returns null).
NProfileStoreFactory* NGetProfileStoreFactory();

// A new store from the registered factory; null when there is none.
std::unique_ptr<NProfileStore> NCreateProfileStore();
