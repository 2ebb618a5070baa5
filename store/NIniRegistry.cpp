#include "store/NIniRegistry.h"

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "store/NFindIgnoringCase.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"

namespace {

// The registry's own codes for a key that cannot be read or written, so
// that a caller sees the failure as a registry one whatever the file's.
constexpr std::uint32_t kCantRead = 1012;   // ERROR_CANTREAD
constexpr std::uint32_t kCantWrite = 1013;  // ERROR_CANTWRITE

class NIniRegistryKey final : public NRegistryKey {
 public:
  NIniRegistryKey(std::unique_ptr<NIniFileStore> store, std::unique_ptr<NIniFileKey> key, std::u16string_view path)
      : m_store(std::move(store)), m_key(std::move(key)), m_path(path) {}

  NStatus QueryString(std::u16string_view name, std::u16string* value) override {
    NUnicodeString text;
    if (m_key->GetStringValue(name, &text)) {
      *value = std::move(text);
      return NStatus::Ok();
    }
    return Missing(name);
  }

  NStatus QueryDword(std::u16string_view name, std::uint32_t* value) override {
    if (m_key->GetDwordValue(name, value)) return NStatus::Ok();
    return Missing(name);
  }

  NStatus SetString(std::u16string_view name, std::u16string_view value) override {
    return Save([&] { return m_key->SetStringValue(name, value); });
  }

  NStatus SetDword(std::u16string_view name, std::uint32_t value) override {
    return Save([&] { return m_key->SetDwordValue(name, value); });
  }

 private:
  NStatus Missing(std::u16string_view name) const {
    const bool present = m_key->Values().FindData(NUnicodeString(name).ToUtf8()) != nullptr;
    return NStatus::Error(present ? kWrongType : NStatus::kFileNotFound, "read registry value", m_path);
  }

  template <typename Change>
  NStatus Save(Change change) {
    if (!m_key->IsWritable()) {
      return NStatus::Error(NStatus::kAccessDenied, "write registry value (the key was opened for reading)", m_path);
    }
    if (!change()) {
      return NStatus::Error(NStatus::kInvalidParameter, "write registry value (a line break or an empty name)", m_path);
    }
    NReportMessageParams params;
    if (m_key->Flush(params)) return NStatus::Ok();
    // What is not on disk must not be read back from memory either.
    (void)m_key->Reload();
    return NStatus::Error(kCantWrite, "write registry value", m_path);
  }

  std::unique_ptr<NIniFileStore> m_store;
  std::unique_ptr<NIniFileKey> m_key;  // goes before the store it was opened from
  NUnicodeString m_path;
};

}  // namespace

NIniRegistry::NIniRegistry(NUnicodeString currentUserRoot, NUnicodeString localMachineRoot)
    : NIniRegistry(std::move(currentUserRoot), std::move(localMachineRoot), NPlatform::Default()) {}

NIniRegistry::NIniRegistry(NUnicodeString currentUserRoot, NUnicodeString localMachineRoot, NPlatform& platform)
    : m_currentUserRoot(std::move(currentUserRoot)),
      m_localMachineRoot(std::move(localMachineRoot)),
      m_platform(platform) {}

NIniRegistry::~NIniRegistry() = default;

NStatus NIniRegistry::OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                              std::unique_ptr<NRegistryKey>* key) {
  NKeyPath keyPath;
  if (path.empty() || !keyPath.Append(path)) {
    return NStatus::Error(NStatus::kInvalidParameter, "open registry key (not a valid key path)", path);
  }
  const NUnicodeString& root = Root(hive);
  if (root.empty()) return NStatus::Error(NStatus::kFileNotFound, "open registry key (no folder for the hive)", path);
  if (create) {
    if (NStatus status = m_platform.CreateFolderChain(root); !status) return status;
  } else if (!m_platform.IsFolder(root)) {
    return NStatus::Error(NStatus::kFileNotFound, "open registry key", path);
  }
  // Made after the root exists, so that the store resolves it.
  auto store = std::make_unique<NIniFileStore>(root, NUnicodeString(), m_platform);

  NUnicodeString file;
  const bool hasFile =
      NFindKeyPath(m_platform, store->Root(), keyPath, u".ini", &file).IsOk() && m_platform.IsFile(file);
  if (!hasFile) {
    NUnicodeString folder;
    NStatus status = NFindKeyPath(m_platform, store->Root(), keyPath, u"", &folder);
    if (!status && !status.IsNotFound()) return status;
    if (!status && !create) return NStatus::Error(NStatus::kFileNotFound, "open registry key", path);
    // A created key exists from then on, values or not, as in the registry.
    if (!status) {
      if (NStatus made = m_platform.CreateFolderChain(folder); !made) return made;
    }
  }

  NReportMessageParams params;
  std::unique_ptr<NIniFileKey> opened = NIniFileKey::Open(*store, std::move(keyPath), !create, params);
  if (!opened) return NStatus::Error(kCantRead, "open registry key", path);
  *key = std::make_unique<NIniRegistryKey>(std::move(store), std::move(opened), path);
  return NStatus::Ok();
}
