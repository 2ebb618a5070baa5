#include "location/NConfigFolder.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "location/NMessageFormatter.h"
#include "location/NRegistryBase.h"
#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "store/NFindIgnoringCase.h"
#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"
#include "store/NProfileStoreFactory.h"
#include "store/NRegistryAccess.h"
#include "uicore/NAppName.h"

namespace {

constexpr std::u16string_view kFormatIds[] = {u"0311ABC6-1CDD-46fc-A08A-0D7C00242FCA",
                                              u"7B2F2717-85C8-4729-8394-3B7697039CEB"};
constexpr std::size_t kFormatIdLength = 36;

std::u16string_view View(const char16_t* text) { return text ? std::u16string_view(text) : std::u16string_view(); }

NKeyPath KeyPath(std::u16string_view names) {
  NKeyPath path;
  (void)path.Append(names);
  return path;
}

// A path as a command line may hand it over: blanks around it, and quotes
// around it when it holds blanks itself.
NUnicodeString Unquoted(std::u16string_view path) {
  const std::size_t first = path.find_first_not_of(u" \t");
  if (first == std::u16string_view::npos) return {};
  path = path.substr(first, path.find_last_not_of(u" \t") - first + 1);
  if (path.size() >= 2 && path.front() == u'"' && path.back() == u'"') path = path.substr(1, path.size() - 2);
  return NUnicodeString(path);
}

bool HasIndexFile(NPlatform& platform, std::u16string_view folder) {
  constexpr std::u16string_view kIndexSuffix = u".idx";
  std::vector<NFolderEntry> entries;
  if (!platform.ListFolder(folder, &entries)) return false;
  return std::any_of(entries.begin(), entries.end(), [kIndexSuffix](const NFolderEntry& entry) {
    const std::u16string_view name = entry.name;
    return entry.kind == NPathKind::kFile && name.size() > kIndexSuffix.size() &&
           NUnicodeString::CompareIgnoreCase(name.substr(name.size() - kIndexSuffix.size()), kIndexSuffix) == 0;
  });
}

void TraceSave(bool force, bool changed, std::uint32_t code, std::u16string_view path) {
  const NFormatArgument arguments[] = {NFormatArgument::Signed(force ? 1 : 0), NFormatArgument::Signed(changed ? 1 : 0),
                                       NFormatArgument::Signed(static_cast<std::int32_t>(code)), path};
  std::u16string line;
  NMessageFormatter::Format(u"Save: %1!d! %2!d! %3!d! %4\n", arguments, &line);
  NTrace(line);
}

std::tm LocalTimeNow() {
  // localtime shares one buffer across the process.
  static std::mutex mutex;
  std::lock_guard<std::mutex> lock(mutex);
  const std::time_t now = std::time(nullptr);
  return *std::localtime(&now);
}

}  // namespace

bool NIsCurrentConfigFormat(std::u16string_view version) {
  if (version.size() < kFormatIdLength) return false;
  const std::u16string_view head = version.substr(0, kFormatIdLength);
  return std::find(std::begin(kFormatIds), std::end(kFormatIds), head) != std::end(kFormatIds);
}

NUnicodeString GetAppConfigPath(const char16_t* productKey) {
  const std::u16string_view product = View(productKey);
  if (product.empty()) return {};
  const NRegistryBase base = NGetRegistryBase();
  std::unique_ptr<NRegistryKey> key;
  NUnicodeString path;
  if (!NGetRegistry().OpenKey(base.hive, base.ProductKey(product), false, &key)) return {};
  if (!key->QueryString(kConfigPathValue, &path)) return {};
  return path;
}

NUnicodeString GetAppConfigPathUnderExe(const char16_t* exeFolder) {
  const std::u16string_view folder = View(exeFolder);
  if (folder.empty()) return {};
  NPlatform& platform = NPlatform::Default();
  NUnicodeString config;
  NUnicodeString global;
  if (!NFindKeyPath(platform, folder, KeyPath(u"Config"), u"", &config)) return {};
  if (!NFindKeyPath(platform, config, KeyPath(u"global"), u".ini", &global) || !platform.IsFile(global)) return {};
  return config;
}

bool CheckAppConfigPathCommandLine(const char16_t* path, NUnicodeString& result, NReportMessageParams& params) {
  const std::u16string_view given = View(path);
  result = Unquoted(given);
  NPlatform& platform = NPlatform::Default();
  std::u16string canonical;
  // Resolved first: a link to a folder names a folder.
  if (!result.empty() && platform.CanonicalPath(result, &canonical) && platform.IsFolder(canonical)) {
    result = std::move(canonical);
    return true;
  }
  params.Clear();
  params.SetCode(kMsgConfigFolderOptionInvalid);
  params.AddArgument(given);
  return false;
}

bool CheckAppConfigPathRedirect(bool save, NReportMessageCallback report, NUnicodeString& path) {
  if (path.empty()) return true;
  NPlatform& platform = NPlatform::Default();
  NIniFileStore store(path, NUnicodeString(), platform);
  NReportMessageParams ignored;
  std::unique_ptr<NProfileKey> root = store.OpenRootKey(true, ignored);
  if (!root) return true;
  if (!HasIndexFile(platform, store.Root()) && !root->SubKeyExists(u"Global")) return true;

  NUnicodeString version;
  std::unique_ptr<NProfileKey> global = root->OpenSubKey(u"Global");
  if (global && global->GetStringValue(u"Version", &version) && NIsCurrentConfigFormat(version)) return true;

  NUnicodeString target;
  std::unique_ptr<NProfileKey> redirect = root->OpenSubKey(u"NSWRedirect");
  if (redirect && redirect->GetStringValue(u"New Config Path", &target) && !target.empty()) {
    NReportMessageParams notice(kMsgConfigMigrated);
    notice.AddArgument(path);
    notice.AddArgument(target);
    if (report) report(notice);
    path = std::move(target);
    if (save) SaveAppConfigPath(path.c_str(), false);
    return true;
  }
  return RenameGlobalConfig();
}

bool NSaveAppConfigPath(std::u16string_view path, bool force, NReportMessageParams& params) {
  const NRegistryBase base = NGetRegistryBase();
  std::unique_ptr<NRegistryKey> key;
  NStatus status = NGetRegistry().OpenKey(base.hive, base.ProductKey(NGetAppName()), true, &key);
  bool changed = true;
  if (status) {
    NUnicodeString stored;
    changed = !key->QueryString(kConfigPathValue, &stored) || stored != path;
    if (force || changed) status = key->SetString(kConfigPathValue, path);
  }
  TraceSave(force, changed, status.Code(), path);
  if (!status) {
    NReportStatus(status, params);
    return false;
  }
  return true;
}

void SaveAppConfigPath(const char16_t* path, bool force) {
  NReportMessageParams ignored;
  (void)NSaveAppConfigPath(View(path), force, ignored);
}

NUnicodeString GetAppConfigPathAlpha() {
  NUnicodeString path = GetAppConfigPath(u"Global");
  if (!path.empty()) SaveAppConfigPath(path.c_str(), false);
  return path;
}

NUnicodeString NCurrentConfigFolder() {
  if (const auto* ini = dynamic_cast<const NIniFileStoreFactory*>(NGetProfileStoreFactory())) return ini->Root();
  return GetAppConfigPath(NGetAppName().c_str());
}

NUnicodeString NIncompleteGlobalName(const std::tm& now) {
  char stamp[64];
  const std::size_t length = std::strftime(stamp, sizeof stamp, "%Y%d%m_%H%M%S", &now);
  NUnicodeString name = u"Global-incomplete-";
  name.append(stamp, stamp + length);
  name += u".ini";
  return name;
}

bool NRenameGlobalConfig(const std::tm& now) {
  const NUnicodeString folder = NCurrentConfigFolder();
  if (folder.empty()) return true;
  NPlatform& platform = NPlatform::Default();
  NUnicodeString source;
  if (!NFindKeyPath(platform, folder, KeyPath(u"Global"), u".ini", &source)) return true;
  NUnicodeString target = folder;
  if (target.back() != platform.PathSeparator()) target.push_back(platform.PathSeparator());
  target += NIncompleteGlobalName(now);
  return platform.MoveFile(source, target).IsOk();
}

bool RenameGlobalConfig() { return NRenameGlobalConfig(LocalTimeNow()); }
