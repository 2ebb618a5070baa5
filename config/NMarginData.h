#pragma once

// The print margins a record keeps as one binary value: left, right, top
// and bottom, in inches, as little-endian doubles without padding.
struct NMarginData {
  double left = 0;
  double right = 0;
  double top = 0;
  double bottom = 0;
  bool operator==(const NMarginData&) const = default;
};
static_assert(sizeof(NMarginData) == 32);
