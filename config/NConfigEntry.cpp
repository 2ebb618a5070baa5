#include "config/NConfigEntry.h"

#include <memory>
#include <mutex>

#include "base/NUnknown.h"
#include "config/NGlobalConfigStore.h"
#include "config/NInstallation.h"
#include "config/NLibraryState.h"
#include "platform/NIcon.h"
#include "platform/NPlatform.h"
#include "uicore/NAppName.h"

namespace {

using NLock = std::lock_guard<std::recursive_mutex>;

NLibraryState& State() { return NLibraryState::Get(); }

// The folder of the running program, where the companion applications are
// installed beside it.
NUnicodeString ProgramFolder() {
  const std::u16string path = NPlatform::Default().ExecutablePath();
  const std::size_t slash = path.find_last_of(u"\\/");
  return NUnicodeString(slash == std::u16string::npos ? std::u16string() : path.substr(0, slash));
}

void BuildEmulations(int productId) { State().emulations = NInstallation::EmulationsFor(productId); }

// The global record with an extra reference, or null; the caller releases.
GlobalConfig* AcquireGlobal() {
  NLock lock(State().mutex);
  GlobalConfig* config = State().global;
  if (config) config->AddRef();
  return config;
}

}  // namespace

void CfgdeckInit(NReportMessageRouterGetter routerGetter, int cacheArgument) {
  NLibraryState& state = State();
  {
    NLock lock(state.mutex);
    state.routerGetter = routerGetter;
    state.colorProvider = &GetPlatformColors;
  }
  NSetReportMessageRouterGetter(routerGetter);
  const NUnicodeString appName = NGetAppName();
  const bool migrating = appName.size() == 7 && NUnicodeString::CompareIgnoreCase(appName, u"Migrate") == 0;
  BuildEmulations(migrating ? -1 : NInstallation::AppProductId());
  {
    NLock lock(state.mutex);
    state.statusIcons.clear();
    for (const int id : {5018, 5019, 5021, 5020}) state.statusIcons.Add(NLoadLibraryIcon(id));
  }
  NInstallation::Detect(ProgramFolder());
  const NStringArray cacheNames = NInstallation::SharedCacheNames();
  NLock lock(state.mutex);
  state.sharedCacheNames = cacheNames;
  state.sharedCacheArgument = cacheArgument;
}

void CfgdeckInitGUI(NGuiMessageCallback message, NImageListCallback imageList) {
  {
    NLock lock(State().mutex);
    State().guiMessage = message;
    State().imageList = imageList;
  }
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, -1);
  BuildEmulations(NInstallation::AppProductId());
}

void CfgdeckCleanupForUnload() {
  NLock lock(State().mutex);
  State().sharedCacheNames.clear();
  State().sharedCacheArgument = 0;
  State().statusIcons.clear();
}

void GetGlobalConfig(GlobalConfig*& config, int productId) {
  NLock lock(State().mutex);
  if (!State().global) State().global = NGlobalConfigStore::Create(productId);
  config = State().global;
}

void FreeGlobalConfig() {
  GlobalConfig* config;
  {
    NLock lock(State().mutex);
    config = State().global;
    State().global = nullptr;  // cleared first: a release callback must not find it
  }
  if (config) config->Release();
}

void ResetGlobalConfig(GlobalConfig*& config) {
  GlobalConfig* current = AcquireGlobal();
  if (!current) {
    config = nullptr;
    return;
  }
  current->Lock();
  {
    NLock lock(State().mutex);
    if (State().global == current) {
      State().global = nullptr;
      current->Release();  // the process-wide reference
    }
  }
  config = nullptr;
  current->Unlock();
  current->Release();
}

void ReloadGlobalConfig(GlobalConfig*& config) {
  GlobalConfig* old = AcquireGlobal();
  if (old) old->Lock();
  GlobalConfig* fresh = NGlobalConfigStore::Create(-1);
  {
    NLock lock(State().mutex);
    GlobalConfig* replaced = State().global;
    State().global = fresh;
    if (replaced) replaced->Release();  // the process-wide reference of the old record
  }
  config = fresh;
  if (old) {
    old->Unlock();
    old->Release();
  }
}

void SaveGlobalConfig(bool all) {
  NReportMessageParams params;
  NGlobalConfigStore::Save(all, params);
}

void MergeGlobalConfig(const NProfileKey& key) {
  GlobalConfig* config = AcquireGlobal();
  if (!config) return;
  config->Lock();
  config->Merge(key);
  config->Unlock();
  config->Release();
}

void GetPlatformColors(std::uint32_t* colors, int count) {
  constexpr std::uint32_t kColors[] = {0x000000, 0xFFFFFF, 0xFFFFFF, 0xD77800};
  for (int i = 0; i < count && i < 4; ++i) colors[i] = kColors[i];
}

NArray<void*>& GetIconStatusArray() { return State().statusIcons; }

NArray<NUnicodeString> GetSharedCacheNames() {
  NLock lock(State().mutex);
  return State().sharedCacheNames;
}

void SetCurrentAppProductID(int productId) {
  NLock lock(State().mutex);
  State().currentProductId = productId;
}

int GetCurrentAppProductID() {
  NLock lock(State().mutex);
  return State().currentProductId;
}

int GetAppProductID() { return NInstallation::AppProductId(); }

int GetTransferAppProductID() { return GetAppProductID() == 9 ? 9 : 6; }

bool IsQuennInstalled() {
  NLock lock(State().mutex);
  return State().quennInstalled;
}

bool IsSkeldonInstalled() {
  NLock lock(State().mutex);
  return State().skeldonInstalled;
}

bool IsSkeldonOrQuennInstalled() {
  NLock lock(State().mutex);
  return State().skeldonInstalled || State().quennInstalled;
}

bool IsParrowInstalled() {
  NLock lock(State().mutex);
  return State().parrowInstalled;
}

// One function under several exported names.
bool CanLaunchTerminalApp() __attribute__((alias("IsSkeldonInstalled")));
bool HasSecureTerminalProtocols() __attribute__((alias("IsSkeldonInstalled")));
bool HasTerminalProtocols() __attribute__((alias("IsSkeldonOrQuennInstalled")));
bool CanLaunchFileTransferApp() __attribute__((alias("IsParrowInstalled")));

bool HasTransferProtocols() {
  NLock lock(State().mutex);
  return State().parrowInstalled || State().spareTransferInstalled;
}

bool HasIntegratedProtocols() {
  NLock lock(State().mutex);
  return (State().skeldonInstalled || State().quennInstalled) &&
         (State().parrowInstalled || State().spareTransferInstalled);
}

bool IsIntegrated() {
  const int product = GetAppProductID();
  if (product != 3 && product != 6) return false;
  NLock lock(State().mutex);
  return State().skeldonInstalled && State().parrowInstalled;
}

bool IsIntegrated(NUnicodeString& name) {
  if (!IsIntegrated()) return false;
  name += GetAppProductID() == 3 ? u"Parrow" : u"Skeldon";
  return true;
}

void SetSkeldonInstalled(bool installed) {
  NLock lock(State().mutex);
  State().skeldonInstalled = installed;
}

void SetParrowInstalled(bool installed) {
  NLock lock(State().mutex);
  State().parrowInstalled = installed;
}

namespace {

const char16_t* PathIf(bool installed, const NUnicodeString& path) { return installed ? path.c_str() : u""; }

}  // namespace

const char16_t* GetQuennPath() {
  NLock lock(State().mutex);
  return PathIf(State().quennInstalled, State().quennPath);
}

const char16_t* GetSkeldonPath() {
  NLock lock(State().mutex);
  return PathIf(State().skeldonInstalled, State().skeldonPath);
}

const char16_t* GetParrowPath() {
  NLock lock(State().mutex);
  return PathIf(State().parrowInstalled, State().parrowPath);
}

bool HasHolletEmulation() {
  NLock lock(State().mutex);
  return State().emulations[4] == u"Hollet";
}
