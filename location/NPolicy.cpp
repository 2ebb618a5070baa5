#include "location/NPolicy.h"

#include "location/NRegistryBase.h"
#include "store/NRegistryAccess.h"

namespace {

// Reads the values present under `path`, replacing what `policy` holds.
void ReadKey(NRegistry& registry, NRegistryHive hive, std::u16string_view path, NPolicy* policy) {
  std::unique_ptr<NRegistryKey> key;
  if (!registry.OpenKey(hive, path, false, &key)) return;
  auto read = [&key](std::u16string_view name, std::optional<bool>* value) {
    std::uint32_t number = 0;
    if (key->QueryDword(name, &number)) *value = number != 0;
  };
  read(u"Save Passwords", &policy->savePasswords);
  read(u"Save Usernames", &policy->saveUsernames);
  read(u"Disable Passwords", &policy->disablePasswords);
}

}  // namespace

NPolicy NReadPolicy(NRegistry& registry, NRegistryHive hive) {
  NPolicy policy;
  ReadKey(registry, hive, u"Software\\Policies\\Nerrin", &policy);
  ReadKey(registry, hive, u"Software\\Policies\\Nerrin\\Global", &policy);
  return policy;
}

NPolicy NReadPolicy() { return NReadPolicy(NGetRegistry(), NGetRegistryBase().hive); }
