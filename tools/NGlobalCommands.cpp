#include "tools/NGlobalCommands.h"

#include <memory>

#include "config/GlobalConfig.h"
#include "config/NConfigEntry.h"
#include "config/NGlobalConfigStore.h"
#include "location/NConfigFolder.h"
#include "store/NIniFileStoreFactory.h"
#include "tools/NFieldPrinter.h"
#include "tools/NSecretCommands.h"
#include "tools/NToolOutput.h"
#include "uicore/NAppName.h"

namespace {

std::string YesNo(bool value) { return value ? "yes" : "no"; }

}  // namespace

NGlobalCommands::NGlobalCommands(std::string folder, std::string appName)
    : m_store(folder, appName), m_folder(std::move(folder)) {}

NGlobalCommands::~NGlobalCommands() = default;

int NGlobalCommands::Global(int productId, bool json, bool save, bool showSecrets) {
  if (showSecrets && !NSecretCommands::OpenSecrets(m_folder, false)) return kExitFailure;
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, productId);
  NOut(NFormatFields(config->Fields(), json, u"Global", showSecrets));
  if (!save) return kExitSuccess;
  NReportMessageParams params;
  if (!NGlobalConfigStore::Save(true, params)) {
    NErr("cfgdeck global: the global record was not saved: " + params.GetText().ToUtf8() + "\n");
    return kExitFailure;
  }
  return kExitSuccess;
}

int NGlobalCommands::Summary() {
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, -1);
  const NUnicodeString& version = config->m_version.Get();
  std::string text = "Format version: ";
  text += version.empty() ? "(none)" : version.ToUtf8();
  text += NIsCurrentConfigFormat(version) ? " (current)\n" : " (not the current format)\n";
  std::size_t stored = 0;
  if (std::unique_ptr<NProfileStore> store = m_store.Factory().CreateStore()) {
    NReportMessageParams params;
    if (std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params)) {
      if (std::unique_ptr<NProfileKey> global = root->OpenSubKey(u"Global", params)) {
        GlobalConfig counted(config->ProductId());
        stored = counted.ReadFields(*global);
      }
    }
  }
  text += "Global record: " + std::to_string(config->Fields().size()) + " fields, " + std::to_string(stored) +
          " stored, " + std::to_string(config->Fields().size() - stored) + " at their defaults\n";
  NOut(text);
  return kExitSuccess;
}

int NGlobalCommands::Product() {
  CfgdeckInit(nullptr, 0);
  std::string text;
  text += "Application name: " + NGetAppName().ToUtf8() + "\n";
  text += "Application product id: " + std::to_string(GetAppProductID()) + "\n";
  text += "Current product id: " + std::to_string(GetCurrentAppProductID()) + "\n";
  text += "Transfer product id: " + std::to_string(GetTransferAppProductID()) + "\n";
  auto application = [&](const char* name, bool installed, const char16_t* path) {
    text += std::string(name) + " installed: " + YesNo(installed);
    if (installed) text += " (" + NUnicodeString(path).ToUtf8() + ")";
    text += "\n";
  };
  application("Quenn", IsQuennInstalled(), GetQuennPath());
  application("Skeldon", IsSkeldonInstalled(), GetSkeldonPath());
  application("Parrow", IsParrowInstalled(), GetParrowPath());
  text += "Terminal protocols: " + YesNo(HasTerminalProtocols()) + "\n";
  text += "Transfer protocols: " + YesNo(HasTransferProtocols()) + "\n";
  text += "Integrated protocols: " + YesNo(HasIntegratedProtocols()) + "\n";
  text += "Integrated: " + YesNo(IsIntegrated()) + "\n";
  for (const NUnicodeString& name : GetSharedCacheNames()) text += "Shared cache: " + name.ToUtf8() + "\n";
  NOut(text);
  CfgdeckCleanupForUnload();
  return kExitSuccess;
}
