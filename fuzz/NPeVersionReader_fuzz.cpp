// Feeds arbitrary bytes to the PE version reader. Traps when a failure
// changes the result, when a version is found that the bytes do not hold
// as a VS_FIXEDFILEINFO, or when a second reading differs from the first.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/NPeVersionReader.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

bool Same(const NFileVersion& a, const NFileVersion& b) {
  return a.fileType == b.fileType && a.major == b.major && a.minor == b.minor && a.build == b.build &&
         a.revision == b.revision;
}

std::uint32_t Read32(std::string_view bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
  return value;
}

// Whether some VS_FIXEDFILEINFO in the bytes carries this version.
bool HoldsFixedInfo(std::string_view bytes, const NFileVersion& version) {
  const std::uint32_t ms = static_cast<std::uint32_t>(version.major) << 16 | version.minor;
  const std::uint32_t ls = static_cast<std::uint32_t>(version.build) << 16 | version.revision;
  for (std::size_t at = 0; at + 52 <= bytes.size(); ++at) {
    if (Read32(bytes, at) == 0xFEEF04BD && Read32(bytes, at + 8) == ms && Read32(bytes, at + 12) == ls &&
        Read32(bytes, at + 36) == version.fileType) {
      return true;
    }
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  constexpr NFileVersion kUntouched{0xDEADBEEF, 0xAAAA, 0xBBBB, 0xCCCC, 0xDDDD};
  NFileVersion first = kUntouched;
  if (!NParsePeFileVersion(bytes, &first)) {
    Check(Same(first, kUntouched));
    return 0;
  }
  Check(bytes.size() >= 2 && std::memcmp(bytes.data(), "MZ", 2) == 0);
  Check(HoldsFixedInfo(bytes, first));
  NFileVersion second = kUntouched;
  Check(NParsePeFileVersion(bytes, &second) && Same(first, second));
  return 0;
}
