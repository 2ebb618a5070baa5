#include "store/NIniFileStoreFactory.h"

#include "store/NIniFileStore.h"

NIniFileStoreFactory::NIniFileStoreFactory(NUnicodeString root, NUnicodeString privateRoot)
    : m_root(std::move(root)), m_privateRoot(std::move(privateRoot)) {}

NIniFileStoreFactory::~NIniFileStoreFactory() = default;

std::unique_ptr<NProfileStore> NIniFileStoreFactory::CreateStore() {
  return std::make_unique<NIniFileStore>(m_root, m_privateRoot);
}
