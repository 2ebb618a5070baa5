#include "store/NRegistryAccess.h"

#include "store/NIniRegistry.h"

namespace {

class NSelectedRegistry final : public NRegistry {
 public:
  NStatus OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                  std::unique_ptr<NRegistryKey>* key) override {
    NUnicodeString folder;
    if (NStatus status = NRegistryFolder(hive, &folder); !status) return status;
    if (!folder.empty()) {
      const bool user = hive == NRegistryHive::kCurrentUser;
      return NIniRegistry(user ? folder : NUnicodeString(), user ? NUnicodeString() : folder)
          .OpenKey(hive, path, create, key);
    }
    if (NRegistry* native = NNativeRegistry()) return native->OpenKey(hive, path, create, key);
    return NStatus::Error(NStatus::kFileNotFound, "open registry key (no registry)", path);
  }
};

}  // namespace

NRegistry& NGetRegistry() {
  static NSelectedRegistry registry;
  return registry;
}
