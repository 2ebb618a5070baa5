#pragma once

#include <cstdint>

#include "base/NUnicodeString.h"

// Walks the sub-keys or the values of one key. Owned by whoever created it
// (through NProfileKey::CreateIterator) and destroyed through the virtual
// destructor. Not thread-safe; the key it came from must outlive it.
class NProfileKeyIterator {
 public:
  NProfileKeyIterator() = default;
  NProfileKeyIterator(const NProfileKeyIterator&) = delete;
  NProfileKeyIterator& operator=(const NProfileKeyIterator&) = delete;

  // The slot order of these operations is fixed.
  virtual ~NProfileKeyIterator() = default;
  // Gives the next name and its kind (a value's type tag, or a sub-key kind
  // 5, 6 or 7); false at the end, with the outputs untouched.
  virtual bool Next(NUnicodeString* name, std::uint32_t* kind) = 0;
  virtual bool NextName(NUnicodeString* name) = 0;
};
