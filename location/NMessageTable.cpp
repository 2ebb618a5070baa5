#include "location/NMessageTable.h"

#include <algorithm>

bool NMessageTable::Find(std::uint32_t code, std::u16string_view* text) {
  const std::span<const NMessageTableEntry> entries = Entries();
  const auto it = std::lower_bound(entries.begin(), entries.end(), code,
                                   [](const NMessageTableEntry& entry, std::uint32_t c) { return entry.code < c; });
  if (it == entries.end() || it->code != code) {
    return false;
  }
  *text = it->text;
  return true;
}

std::span<const NMessageTableEntry> NMessageTable::Entries() {
  return {kLibraryMessageTable, kLibraryMessageTableSize};
}
