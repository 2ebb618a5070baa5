#pragma once

#include <cstddef>
#include <cstdint>

// A fast non-cryptographic 64-bit hash of a byte block (XXH3), for indexes
// and for noticing that a file changed.
std::uint64_t NHashBytes(const void* data, std::size_t size);
