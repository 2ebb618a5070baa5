#include "store/NProfileStoreFactory.h"

#include <atomic>

namespace {
std::atomic<NProfileStoreFactoryGetter> g_factoryGetter{nullptr};
}  // namespace

void CfgdeckInitProfileFactory(NProfileStoreFactoryGetter getter) {
  g_factoryGetter.store(getter, std::memory_order_release);
}

NProfileStoreFactory* NGetProfileStoreFactory() {
  const NProfileStoreFactoryGetter getter = g_factoryGetter.load(std::memory_order_acquire);
  return getter ? getter() : nullptr;
}

std::unique_ptr<NProfileStore> NCreateProfileStore() {
  NProfileStoreFactory* factory = NGetProfileStoreFactory();
  return factory ? factory->CreateStore() : nullptr;
}
