#pragma once

#include "config/GlobalConfig.h"
#include "location/NReportMessageParams.h"

// Moves the process-wide global record between the configuration store and
// memory, through the store factory the host registered.
class NGlobalConfigStore {
 public:
  // A new record for `productId` (-1: the application's), loaded from
  // "Global" and "QuickSync"; the defaults where the store, the factory or
  // the keys are missing. Holds one reference, the caller's.
  static GlobalConfig* Create(int productId);
  // Saves the process-wide record (nothing when there is none) under its
  // reference and lock. False, with params saying why, when the save failed.
  static bool Save(bool all, NReportMessageParams& params);
};
