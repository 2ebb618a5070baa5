#pragma once

#include <string_view>

#include "base/NUnicodeString.h"
#include "platform/NRegistry.h"

// Where the library's registry values live: a hive and the base key's path
// in it. The products' keys ("Skeldon", "Parrow", the shared "Global") lie
// directly beneath the base.
struct NRegistryBase {
  NRegistryHive hive = NRegistryHive::kCurrentUser;
  NUnicodeString path = NUnicodeString(u"SOFTWARE\\Nerrin");

  // The key of `product` beneath the base ("SOFTWARE\Nerrin\Skeldon").
  NUnicodeString ProductKey(std::u16string_view product) const;
};

// Tries to open for reading, in this order: "SOFTWARE\Nerrin" under the
// current user, then under the local machine, then "SOFTWARE\Nerrin
// Technologies" under the current user, then under the local machine. The
// first that opens is the base (the probe key is closed again), so the
// longer name is read only where the shorter does not exist. When none
// exists the base is "SOFTWARE\Nerrin" under the current user, where the
// values are then created.
NRegistryBase NFindRegistryBase(NRegistry& registry);

// The base of this process: found in NGetRegistry() on first use, then
// kept. Thread-safe.
NRegistryBase NGetRegistryBase();

// Forgets the kept base, so that the next NGetRegistryBase looks again: for
// a host (or a test) that changed the registry folder.
void NResetRegistryBase();
