#include "store/NIniFileStoreFactory.h"

#include "platform/NPlatform.h"
#include "store/NFolderListingCache.h"
#include "store/NIniFileStore.h"

NIniFileStoreFactory::NIniFileStoreFactory(NUnicodeString root, NUnicodeString privateRoot)
    : m_root(std::move(root)),
      m_privateRoot(std::move(privateRoot)),
      m_listings(std::make_shared<NFolderListingCache>()) {}

NIniFileStoreFactory::~NIniFileStoreFactory() = default;

std::unique_ptr<NProfileStore> NIniFileStoreFactory::CreateStore() {
  // Hosts make a store for every record they load; the roots are resolved
  // once, as soon as both exist, instead of at every store.
  std::lock_guard<std::mutex> lock(m_mutex);
  NPlatform& platform = NPlatform::Default();
  if (!m_resolved) {
    std::u16string root, privateRoot;
    if (platform.CanonicalPath(m_root, &root) &&
        (m_privateRoot.empty() || platform.CanonicalPath(m_privateRoot, &privateRoot))) {
      m_resolvedRoot = NUnicodeString(std::move(root));
      m_resolvedPrivateRoot = NUnicodeString(std::move(privateRoot));
      m_resolved = true;
    } else {
      return std::make_unique<NIniFileStore>(m_root, m_privateRoot);
    }
  }
  NIniFileStoreOptions options;
  options.rootsResolved = true;
  options.listings = m_listings;
  return std::make_unique<NIniFileStore>(m_resolvedRoot, m_resolvedPrivateRoot, platform, options);
}
