#include "store/NIniFileStore.h"

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"

NIniFileStore::NIniFileStore(NUnicodeString root, NUnicodeString privateRoot)
    : NIniFileStore(std::move(root), std::move(privateRoot), NPlatform::Default()) {}

namespace {

// Key files are opened refusing symbolic links anywhere on their path, so
// that no link inside the store leads out of it. Links above the root are
// the user's own business: they are resolved here, once.
NUnicodeString Resolved(NPlatform& platform, NUnicodeString folder, const NIniFileStoreOptions& options) {
  if (options.rootsResolved) return folder;
  std::u16string canonical;
  if (!folder.empty() && platform.CanonicalPath(folder, &canonical)) return NUnicodeString(std::move(canonical));
  return folder;
}

}  // namespace

NIniFileStore::NIniFileStore(NUnicodeString root, NUnicodeString privateRoot, NPlatform& platform,
                             NIniFileStoreOptions options)
    : m_root(Resolved(platform, std::move(root), options)),
      m_privateRoot(Resolved(platform, std::move(privateRoot), options)),
      m_platform(platform),
      m_options(options) {}

NIniFileStore::~NIniFileStore() = default;

std::unique_ptr<NProfileKey> NIniFileStore::OpenRootKey(bool readOnly, NReportMessageParams& params) {
  return NIniFileKey::Open(*this, NKeyPath(), readOnly, params);
}
