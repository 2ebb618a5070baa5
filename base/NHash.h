#pragma once

#include <cstddef>
#include <cstdint>

// A fast non-cryptographic 64-bit hash of a byte block (XXH3), for indexes
// and for noticing that a file changed.
std::uint64_t NHashBytes(const void* data, std::size_t size);

// A 128-bit hash of a byte block (XXH3-128): strong enough that two
// different files of the same length are never taken for one another.
struct NHash128 {
  std::uint64_t low = 0;
  std::uint64_t high = 0;
  friend bool operator==(const NHash128&, const NHash128&) = default;
};
NHash128 NHashBytes128(const void* data, std::size_t size);
