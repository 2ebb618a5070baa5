#pragma once

#include "base/NUnicodeString.h"
#include "platform/NRegistry.h"

class NPlatform;

// A registry kept in INI folder stores, one root folder per hive: a registry
// key is the store key of the same path ("SOFTWARE\Nerrin\Skeldon" is
// "SOFTWARE/Nerrin/Skeldon.ini" under the hive's folder), its values are the
// key's string and DWORD values. Key names match without case, as in the
// registry; value names match exactly, as in the store.
//
// A key exists when its file or its folder does, so a key holding only
// sub-keys is found too. Creating a key makes its folder; every change is
// saved at once.
//
// Holds no open store: each key carries its own, so the registry may go
// before its keys. Thread-safe.
class NIniRegistry final : public NRegistry {
 public:
  // An empty root leaves that hive without keys.
  NIniRegistry(NUnicodeString currentUserRoot, NUnicodeString localMachineRoot);
  NIniRegistry(NUnicodeString currentUserRoot, NUnicodeString localMachineRoot, NPlatform& platform);
  ~NIniRegistry() override;

  NStatus OpenKey(NRegistryHive hive, std::u16string_view path, bool create,
                  std::unique_ptr<NRegistryKey>* key) override;

  const NUnicodeString& Root(NRegistryHive hive) const {
    return hive == NRegistryHive::kCurrentUser ? m_currentUserRoot : m_localMachineRoot;
  }

 private:
  NUnicodeString m_currentUserRoot;
  NUnicodeString m_localMachineRoot;
  NPlatform& m_platform;
};
