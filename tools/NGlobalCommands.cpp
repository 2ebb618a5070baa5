#include "tools/NGlobalCommands.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "config/GlobalConfig.h"
#include "config/NConfigEntry.h"
#include "config/NGlobalConfigStore.h"
#include "location/NConfigFolder.h"
#include "store/NIniFileStoreFactory.h"
#include "tools/NToolOutput.h"
#include "uicore/NAppName.h"

namespace {

std::unique_ptr<NIniFileStoreFactory> g_factory;
NProfileStoreFactory* Factory() { return g_factory.get(); }

std::string Hex(const NBytes& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (const char byte : bytes) {
    hex += kDigits[static_cast<unsigned char>(byte) >> 4];
    hex += kDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return hex;
}

nlohmann::ordered_json Json(const NFieldValue& value) {
  switch (value.kind) {
    case NFieldValue::Kind::kBoolean:
      return value.boolean;
    case NFieldValue::Kind::kNumber:
      return value.number;
    case NFieldValue::Kind::kString:
      return value.text.ToUtf8();
    case NFieldValue::Kind::kStrings: {
      nlohmann::ordered_json strings = nlohmann::ordered_json::array();
      for (const NUnicodeString& text : value.strings) strings.push_back(text.ToUtf8());
      return strings;
    }
    case NFieldValue::Kind::kBytes:
      return Hex(value.bytes);
  }
  return nullptr;
}

// Booleans as true/false, numbers in decimal, strings as they are, string
// lists as a JSON array (one line whatever they hold), bytes in hex.
std::string Plain(const NFieldValue& value) {
  switch (value.kind) {
    case NFieldValue::Kind::kString:
      return value.text.ToUtf8();
    case NFieldValue::Kind::kBytes:
      return Hex(value.bytes);
    default:
      return Json(value).dump();
  }
}

std::string YesNo(bool value) { return value ? "yes" : "no"; }

}  // namespace

NGlobalCommands::NGlobalCommands(std::string folder, std::string appName) : m_folder(std::move(folder)) {
  NSetAppName(NUnicodeString::FromUtf8(appName));
  g_factory = std::make_unique<NIniFileStoreFactory>(NUnicodeString::FromUtf8(m_folder), NUnicodeString());
  CfgdeckInitProfileFactory(&Factory);
}

NGlobalCommands::~NGlobalCommands() {
  FreeGlobalConfig();
  CfgdeckInitProfileFactory(nullptr);
  g_factory.reset();
}

int NGlobalCommands::Global(int productId, bool json, bool save) {
  GlobalConfig* config = nullptr;
  GetGlobalConfig(config, productId);
  if (json) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const NProfileData* field : config->Fields()) object[NUnicodeString(field->Name()).ToUtf8()] = Json(field->Describe());
    NOut(object.dump(2) + "\n");
  } else {
    std::string lines;
    for (const NProfileData* field : config->Fields()) {
      lines += NUnicodeString(field->Name()).ToUtf8() + "=" + Plain(field->Describe()) + "\n";
    }
    NOut(lines);
  }
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
  if (std::unique_ptr<NProfileStore> store = g_factory->CreateStore()) {
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
