#include "store/NIniFileStore.h"

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"

NIniFileStore::NIniFileStore(NUnicodeString root, NUnicodeString privateRoot)
    : NIniFileStore(std::move(root), std::move(privateRoot), NPlatform::Default()) {}

NIniFileStore::NIniFileStore(NUnicodeString root, NUnicodeString privateRoot, NPlatform& platform,
                             NIniFileStoreOptions options)
    : m_root(std::move(root)), m_privateRoot(std::move(privateRoot)), m_platform(platform), m_options(options) {}

NIniFileStore::~NIniFileStore() = default;

std::unique_ptr<NProfileKey> NIniFileStore::OpenRootKey(bool readOnly, NReportMessageParams& params) {
  return NIniFileKey::Open(*this, NKeyPath(), readOnly, params);
}
