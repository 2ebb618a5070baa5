#include "config/NFirewallConfig.h"

#include <memory>

#include "store/NProfileStoreFactory.h"

namespace {

std::unique_ptr<NProfileKey> OpenFirewallKey(NProfileStore& store, bool readOnly, NReportMessageParams& params) {
  std::unique_ptr<NProfileKey> root = store.OpenRootKey(readOnly, params);
  std::unique_ptr<NProfileKey> firewalls = root ? root->OpenSubKey(u"Firewalls", params) : nullptr;
  return firewalls ? firewalls->OpenSubKey(u"Default", params) : nullptr;
}

}  // namespace

void NFirewallConfig::Load() {
  NReportMessageParams ignored;
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return;
  if (std::unique_ptr<NProfileKey> key = OpenFirewallKey(*store, true, ignored)) ReadFields(*key);
}

bool NFirewallConfig::Save(NReportMessageParams& params) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  std::unique_ptr<NProfileKey> key = store ? OpenFirewallKey(*store, false, params) : nullptr;
  if (!key) {
    if (params.GetCode() == 0) params.SetCode(0x1F);  // ERROR_GEN_FAILURE: no store is registered
    return false;
  }
  return WriteFields(*key, false, params) && key->Flush(params);
}
