#include "location/NPersonalDataFolder.h"

#include <exception>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

#include "location/NConfigFolder.h"
#include "location/NMessageFormatter.h"
#include "location/NPersonalDataMover.h"
#include "location/NRegistryBase.h"
#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "store/NIniFileStoreFactory.h"
#include "store/NProfileStoreFactory.h"
#include "store/NRegistryAccess.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "uicore/NProgressDialog.h"
#include "uicore/PersonalDataFolderDialog.h"

namespace {

constexpr std::uint32_t kInternalError = 1359;  // ERROR_INTERNAL_ERROR

std::u16string_view View(const char16_t* text) { return text ? std::u16string_view(text) : std::u16string_view(); }

bool IsSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

std::unique_ptr<NRegistryKey> OpenProductKey(std::u16string_view product) {
  if (product.empty()) return nullptr;
  const NRegistryBase base = NGetRegistryBase();
  std::unique_ptr<NRegistryKey> key;
  if (!NGetRegistry().OpenKey(base.hive, base.ProductKey(product), false, &key)) return nullptr;
  return key;
}

bool ReadSwitch(const char16_t* productKey, std::u16string_view name) {
  std::unique_ptr<NRegistryKey> key = OpenProductKey(View(productKey));
  std::uint32_t value = 0;
  return key && key->QueryDword(name, &value) && value != 0;
}

// The trace line of every setter of a remembered setting.
void TraceSave(bool force, bool changed, std::uint32_t code, std::u16string_view value) {
  const NFormatArgument arguments[] = {NFormatArgument::Signed(force ? 1 : 0), NFormatArgument::Signed(changed ? 1 : 0),
                                       NFormatArgument::Signed(static_cast<std::int32_t>(code)), value};
  std::u16string line;
  NMessageFormatter::Format(u"Save: %1!d! %2!d! %3!d! %4\n", arguments, &line);
  NTrace(line);
}

bool Reported(const NStatus& status, NReportMessageParams& params) {
  if (status) return true;
  NReportStatus(status, params);
  return false;
}

NStatus OpenAppKey(std::unique_ptr<NRegistryKey>* key) {
  const NRegistryBase base = NGetRegistryBase();
  return NGetRegistry().OpenKey(base.hive, base.ProductKey(NGetAppName()), true, key);
}

bool SaveSwitch(std::u16string_view name, bool value, bool force, NReportMessageParams& params) {
  const std::uint32_t wanted = value ? 1 : 0;
  std::unique_ptr<NRegistryKey> key;
  NStatus status = OpenAppKey(&key);
  bool changed = true;
  if (status) {
    std::uint32_t stored = 0;
    changed = !key->QueryDword(name, &stored) || stored != wanted;
    if (force || changed) status = key->SetDword(name, wanted);
  }
  TraceSave(force, changed, status.Code(), value ? u"1" : u"0");
  return Reported(status, params);
}

// The registered factory when it makes INI folder stores; null otherwise.
const NIniFileStoreFactory* IniFactory() {
  return dynamic_cast<const NIniFileStoreFactory*>(NGetProfileStoreFactory());
}

// Runs `job` on a worker while a progress dialog with `text` runs modally;
// the worker closes the dialog when the job ends and is joined afterwards.
bool RunWithProgress(std::uint32_t textCode, const NPersonalDataRunOptions& options,
                     const std::function<bool(NPersonalDataMover::Step, NReportMessageParams&)>& job,
                     NReportMessageParams& params) {
  NReportMessageParams text(textCode);
  text.AddArgument(NGetAppName());
  NProgressDialog dialog(text.GetText());
  bool done = false;
  NReportMessageParams why;
  auto work = [&] {
    const NPersonalDataMover::Step step = [&](std::size_t count, std::size_t total) {
      dialog.SetProgress(count, total);
      return !options.step || options.step(count, total);
    };
    // Whatever happens, the dialog must end and the worker be joined.
    try {
      done = job(step, why);
    } catch (const std::bad_alloc&) {
      NReportStatus(NStatus::Error(NStatus::kNotEnoughMemory, "move the personal data"), why);
    } catch (...) {
      NReportStatus(NStatus::Error(kInternalError, "move the personal data"), why);
    }
    dialog.PostClose();
  };
  std::thread worker;
  try {
    worker = std::thread(work);
  } catch (const std::system_error&) {
    // No thread to be had: the job runs here, without the dialog.
    work();
  }
  if (worker.joinable()) {
    dialog.Run();
    worker.join();
  }
  if (!done) params = why;
  return done;
}

void ShowFailure(const NReportMessageParams& params) {
  (void)NMessageBox(nullptr, params.GetText(), NGetAppName(), kMessageBoxOk | kMessageBoxIconError);
}

}  // namespace

NUnicodeString GetAppPersonalDataPathStored(const char16_t* productKey) {
  std::unique_ptr<NRegistryKey> key = OpenProductKey(View(productKey));
  NUnicodeString path;
  if (!key || !key->QueryString(kPersonalDataPathValue, &path)) return {};
  return path;
}

NUnicodeString GetAppPersonalDataPathDefault(const char16_t* configFolder) {
  std::u16string_view folder = View(configFolder);
  // "D:\cfg\" is the folder D:\cfg; a root keeps its separator.
  while (folder.size() > 1 && IsSeparator(folder.back()) && folder[folder.size() - 2] != u':') folder.remove_suffix(1);
  if (folder.empty()) return {};
  NUnicodeString path(folder);
  path += kPersonalDataSuffix;
  return path;
}

NUnicodeString GetAppPersonalDataPath(const char16_t* productKey, const char16_t* configFolder) {
  NUnicodeString stored = GetAppPersonalDataPathStored(productKey);
  return stored.empty() ? GetAppPersonalDataPathDefault(configFolder) : stored;
}

bool UsePersonalDataPath(const char16_t* productKey) { return ReadSwitch(productKey, kUsePersonalDataPathValue); }

bool DoPersonalDataMigration(const char16_t* productKey) {
  return ReadSwitch(productKey, kDoPersonalDataMigrationValue);
}

bool DoPersonalDataMerge(const char16_t* productKey) { return ReadSwitch(productKey, kDoPersonalDataMergeValue); }

bool NSaveAppPersonalDataPath(std::u16string_view path, bool force, NReportMessageParams& params) {
  std::unique_ptr<NRegistryKey> key;
  NStatus status = OpenAppKey(&key);
  bool changed = true;
  if (status) {
    NUnicodeString stored;
    changed = !key->QueryString(kPersonalDataPathValue, &stored) || stored != path;
    if (force || changed) status = key->SetString(kPersonalDataPathValue, path);
  }
  TraceSave(force, changed, status.Code(), path);
  return Reported(status, params);
}

bool NSaveUsePersonalDataPath(bool value, bool force, NReportMessageParams& params) {
  return SaveSwitch(kUsePersonalDataPathValue, value, force, params);
}

bool NSaveDoPersonalDataMigration(bool value, bool force, NReportMessageParams& params) {
  return SaveSwitch(kDoPersonalDataMigrationValue, value, force, params);
}

bool NSaveDoPersonalDataMerge(bool value, bool force, NReportMessageParams& params) {
  return SaveSwitch(kDoPersonalDataMergeValue, value, force, params);
}

void SaveAppPersonalDataPath(const char16_t* path, bool force) {
  NReportMessageParams ignored;
  (void)NSaveAppPersonalDataPath(View(path), force, ignored);
}

void SaveUsePersonalDataPath(bool value, bool force) {
  NReportMessageParams ignored;
  (void)NSaveUsePersonalDataPath(value, force, ignored);
}

void SaveDoPersonalDataMigration(bool value, bool force) {
  NReportMessageParams ignored;
  (void)NSaveDoPersonalDataMigration(value, force, ignored);
}

void SaveDoPersonalDataMerge(bool value, bool force) {
  NReportMessageParams ignored;
  (void)NSaveDoPersonalDataMerge(value, force, ignored);
}

bool GetPersonalDataFolderAsk(const char16_t* configFolder, NUnicodeString& folder) {
  if (folder.empty()) folder = GetAppPersonalDataPathDefault(configFolder);
  PersonalDataFolderDialog dialog(folder, kMessageBoxIconQuestion);
  if (dialog.DoModal() == kMessageBoxIdOk) {
    folder = dialog.Folder();
    return true;
  }
  folder.clear();
  return false;
}

bool NMigrateToPersonalDataLocation(NReportMessageParams& params, const NPersonalDataRunOptions& options) {
  NPlatform& platform = options.platform ? *options.platform : NPlatform::Default();
  const NUnicodeString appName = NGetAppName();
  NUnicodeString config = options.configFolder;
  NUnicodeString personal = options.personalFolder;
  const NIniFileStoreFactory* factory = IniFactory();
  if (config.empty()) config = factory ? factory->Root() : GetAppConfigPath(appName.c_str());
  if (personal.empty() && factory && config == factory->Root()) personal = factory->PrivateRoot();
  if (personal.empty()) personal = GetAppPersonalDataPath(appName.c_str(), config.c_str());
  return RunWithProgress(
      kMsgPersonalDataMigrating, options,
      [&](const NPersonalDataMover::Step& step, NReportMessageParams& why) {
        NPersonalDataMover mover(config, personal, platform);
        mover.SetStep(step);
        return mover.Migrate(why) && NSaveDoPersonalDataMigration(false, false, why);
      },
      params);
}

bool NMergeFromPersonalDataLocation(std::u16string_view productKey, NReportMessageParams& params,
                                    const NPersonalDataRunOptions& options) {
  NPlatform& platform = options.platform ? *options.platform : NPlatform::Default();
  NUnicodeString config = options.configFolder;
  if (config.empty()) config = GetAppConfigPath(NGetAppName().c_str());
  if (config.empty()) {
    if (const NIniFileStoreFactory* factory = IniFactory()) config = factory->Root();
  }
  NUnicodeString personal = options.personalFolder;
  if (personal.empty()) personal = GetAppPersonalDataPath(NUnicodeString(productKey).c_str(), config.c_str());
  return RunWithProgress(
      kMsgPersonalDataMerging, options,
      [&](const NPersonalDataMover::Step& step, NReportMessageParams& why) {
        NPersonalDataMover mover(config, personal, platform);
        mover.SetStep(step);
        return mover.Merge(why) && NSaveDoPersonalDataMerge(false, false, why);
      },
      params);
}

void MigrateToPersonalDataLocation() {
  NReportMessageParams params;
  if (!NMigrateToPersonalDataLocation(params)) ShowFailure(params);
}

void MergeFromPersonalDataLocation(const char16_t* productKey) {
  NReportMessageParams params;
  if (!NMergeFromPersonalDataLocation(View(productKey), params)) ShowFailure(params);
}
