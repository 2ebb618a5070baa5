#include "base/NHash.h"

// Inlined, so that the library carries its own copy and needs no shared
// xxhash library at run time.
#define XXH_INLINE_ALL
#include <xxhash.h>

std::uint64_t NHashBytes(const void* data, std::size_t size) { return XXH3_64bits(data, size); }

NHash128 NHashBytes128(const void* data, std::size_t size) {
  const XXH128_hash_t hash = XXH3_128bits(data, size);
  return {hash.low64, hash.high64};
}
