#pragma once

#include <cstdint>

// The kinds of a store value, with the type tags the stores use. Iterators
// report values by these tags and sub-keys by the kinds after them.
enum class NProfileValueType : std::uint32_t {
  kDword = 0,
  kString = 1,
  kBinary = 2,
  kMultiString = 3,
};

// Kinds reported by a sub-key iterator: the sub-key is a folder, a key
// file, or both.
inline constexpr std::uint32_t kSubKeyFolder = 5;
inline constexpr std::uint32_t kSubKeyFile = 6;
inline constexpr std::uint32_t kSubKeyFolderAndFile = 7;
