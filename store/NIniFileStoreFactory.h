#pragma once

#include <memory>
#include <mutex>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "store/NProfileStoreFactory.h"

class NFolderListingCache;

// Makes INI folder stores on a root folder and a private root folder (empty
// when personal values stay with the others). A host creates one and
// registers a getter for it with CfgdeckInitProfileFactory.
class CFGDECK_API NIniFileStoreFactory final : public NProfileStoreFactory {
 public:
  NIniFileStoreFactory(NUnicodeString root, NUnicodeString privateRoot);
  ~NIniFileStoreFactory() override;

  std::unique_ptr<NProfileStore> CreateStore() override;

  const NUnicodeString& Root() const { return m_root; }
  const NUnicodeString& PrivateRoot() const { return m_privateRoot; }

 private:
  NUnicodeString m_root;
  NUnicodeString m_privateRoot;
  std::mutex m_mutex;  // guards the resolved roots
  bool m_resolved = false;
  NUnicodeString m_resolvedRoot;
  NUnicodeString m_resolvedPrivateRoot;
  std::shared_ptr<NFolderListingCache> m_listings;
};
