#include "location/NRegistryBase.h"

#include <mutex>
#include <optional>

#include "store/NRegistryAccess.h"

namespace {

std::mutex g_mutex;  // guards g_base
std::optional<NRegistryBase> g_base;

}  // namespace

NUnicodeString NRegistryBase::ProductKey(std::u16string_view product) const {
  NUnicodeString key = path;
  key.push_back(u'\\');
  key += product;
  return key;
}

NRegistryBase NFindRegistryBase(NRegistry& registry) {
  struct Probe {
    NRegistryHive hive;
    std::u16string_view path;
  };
  static constexpr Probe kProbes[] = {
      {NRegistryHive::kCurrentUser, u"SOFTWARE\\Nerrin"},
      {NRegistryHive::kLocalMachine, u"SOFTWARE\\Nerrin"},
      {NRegistryHive::kCurrentUser, u"SOFTWARE\\Nerrin Technologies"},
      {NRegistryHive::kLocalMachine, u"SOFTWARE\\Nerrin Technologies"},
  };
  for (const Probe& probe : kProbes) {
    std::unique_ptr<NRegistryKey> key;
    if (registry.OpenKey(probe.hive, probe.path, false, &key)) {
      return NRegistryBase{probe.hive, NUnicodeString(probe.path)};
    }
  }
  return NRegistryBase();
}

NRegistryBase NGetRegistryBase() {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (!g_base) g_base = NFindRegistryBase(NGetRegistry());
  return *g_base;
}

void NResetRegistryBase() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_base.reset();
}
