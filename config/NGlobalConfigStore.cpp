#include "config/NGlobalConfigStore.h"

#include <memory>
#include <mutex>

#include "config/NInstallation.h"
#include "config/NLibraryState.h"
#include "location/NReportMessageRouter.h"
#include "store/NProfileStoreFactory.h"

namespace {

// The key "Global". Spelled as its file is named in a configuration folder,
// "global.ini": a folder made on a case-sensitive system then looks like
// one made on Windows, and lookups without case find either spelling.
constexpr std::u16string_view kGlobalKey = u"global";

}  // namespace

GlobalConfig* NGlobalConfigStore::Create(int productId) {
  if (productId == -1) productId = NInstallation::AppProductId();
  auto* config = new GlobalConfig(productId);
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return config;
  NReportMessageParams params;
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params);
  if (!root) return config;
  std::unique_ptr<NProfileKey> global = root->OpenSubKey(kGlobalKey, params);
  std::unique_ptr<NProfileKey> quickSync = root->OpenSubKey(u"QuickSync", params);
  if (global) config->Load(*global, quickSync.get());
  return config;
}

bool NGlobalConfigStore::Save(bool all, NReportMessageParams& params) {
  GlobalConfig* config;
  {
    NLibraryState& state = NLibraryState::Get();
    std::lock_guard<std::recursive_mutex> lock(state.mutex);
    config = state.global;
    if (!config) return true;
    config->AddRef();
  }
  config->Lock();
  bool saved = false;
  if (std::unique_ptr<NProfileStore> store = NCreateProfileStore()) {
    if (std::unique_ptr<NProfileKey> root = store->OpenRootKey(false, params)) {
      if (std::unique_ptr<NProfileKey> global = root->OpenSubKey(kGlobalKey, params)) {
        saved = config->Save(*root, *global, all, params);
      }
    }
  } else {
    NTrace(u"SaveGlobalConfig: no store factory is registered\n");
  }
  config->Unlock();
  config->Release();
  return saved;
}
