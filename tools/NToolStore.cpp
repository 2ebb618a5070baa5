#include "tools/NToolStore.h"

#include "config/NConfigEntry.h"
#include "config/NSecretKeyring.h"
#include "config/NSecretKeys.h"
#include "location/NPersonalDataFolder.h"
#include "store/NIniFileStoreFactory.h"
#include "uicore/NAppName.h"

namespace {

std::unique_ptr<NIniFileStoreFactory> g_factory;
NProfileStoreFactory* Registered() { return g_factory.get(); }

}  // namespace

NToolStore::NToolStore(const std::string& folder, const std::string& appName) {
  NSetAppName(NUnicodeString::FromUtf8(appName));
  // Personal values are where the host keeps them: apart when it says so.
  const NUnicodeString app = NUnicodeString::FromUtf8(appName);
  const NUnicodeString root = NUnicodeString::FromUtf8(folder);
  NUnicodeString privateRoot;
  if (UsePersonalDataPath(app.c_str())) privateRoot = GetAppPersonalDataPath(app.c_str(), root.c_str());
  g_factory = std::make_unique<NIniFileStoreFactory>(root, privateRoot);
  CfgdeckInitProfileFactory(&Registered);
  // Encrypted values open and seal with the folder's keys; a passphrase,
  // when set, is asked for only by the commands that need it.
  NSecretKeyring::Use(root);
}

NToolStore::~NToolStore() {
  FreeGlobalConfig();
  NSetSecretKeySource({});
  CfgdeckInitProfileFactory(nullptr);
  g_factory.reset();
}

NIniFileStoreFactory& NToolStore::Factory() { return *g_factory; }
