#include "tools/NToolStore.h"

#include "config/NConfigEntry.h"
#include "store/NIniFileStoreFactory.h"
#include "uicore/NAppName.h"

namespace {

std::unique_ptr<NIniFileStoreFactory> g_factory;
NProfileStoreFactory* Registered() { return g_factory.get(); }

}  // namespace

NToolStore::NToolStore(const std::string& folder, const std::string& appName) {
  NSetAppName(NUnicodeString::FromUtf8(appName));
  g_factory = std::make_unique<NIniFileStoreFactory>(NUnicodeString::FromUtf8(folder), NUnicodeString());
  CfgdeckInitProfileFactory(&Registered);
}

NToolStore::~NToolStore() {
  FreeGlobalConfig();
  CfgdeckInitProfileFactory(nullptr);
  g_factory.reset();
}

NIniFileStoreFactory& NToolStore::Factory() { return *g_factory; }
