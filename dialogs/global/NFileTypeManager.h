#pragma once

#include "base/NUnicodeString.h"
#include "base/NStringArray.h"

// The host's register of file types: the program that opens a downloaded
// file of an extension. Owned by the host; the Global Options dialog edits
// it through this. UI thread only.
class NFileTypeManager {
 public:
  virtual ~NFileTypeManager() = default;
  // One "EXTENSION=PROGRAM" line a type, extensions without their dot.
  virtual NStringArray Associations() const = 0;
  // Replaces the register; false, nothing changed, when it cannot be saved.
  virtual bool SetAssociations(const NStringArray& associations) = 0;
};
