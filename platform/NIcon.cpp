#include "platform/NIcon.h"

#include <cstdint>

namespace {

constexpr std::size_t kDirectorySize = 6;
constexpr std::size_t kEntrySize = 16;

std::uint32_t Read16(std::string_view bytes, std::size_t offset) {
  return static_cast<unsigned char>(bytes[offset]) | static_cast<unsigned char>(bytes[offset + 1]) << 8;
}

std::uint32_t Read32(std::string_view bytes, std::size_t offset) {
  return Read16(bytes, offset) | Read16(bytes, offset + 2) << 16;
}

// Whether an image `width` wide fits `pixels` better than one `current` wide:
// the exact width wins; a wider image beats a narrower one, as scaling down
// looks better than scaling up; of two wider ones the narrower wins, of two
// narrower ones the wider.
bool FitsBetter(int width, int current, int pixels) {
  if (current == pixels) return false;
  if (width == pixels) return true;
  if (width > pixels) return current < pixels || width < current;
  return width > current;
}

}  // namespace

std::string_view NLibraryIconBytes(int resourceId) {
  for (const NLibraryIcon& icon : NLibraryIcons()) {
    if (icon.resourceId == resourceId) return icon.bytes;
  }
  return {};
}

std::string_view NIconImage(std::string_view icoBytes, int pixels) {
  if (icoBytes.size() < kDirectorySize || Read16(icoBytes, 0) != 0 || Read16(icoBytes, 2) != 1) return {};
  const std::size_t count = Read16(icoBytes, 4);
  if (count == 0 || icoBytes.size() < kDirectorySize + count * kEntrySize) return {};
  std::string_view chosen;
  int chosenWidth = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = kDirectorySize + i * kEntrySize;
    const std::uint64_t size = Read32(icoBytes, entry + 8);
    const std::uint64_t offset = Read32(icoBytes, entry + 12);
    if (size == 0 || offset > icoBytes.size() || size > icoBytes.size() - offset) return {};
    const int width = icoBytes[entry] == 0 ? 256 : static_cast<unsigned char>(icoBytes[entry]);
    if (chosen.empty() || FitsBetter(width, chosenWidth, pixels)) {
      chosen = icoBytes.substr(offset, size);
      chosenWidth = width;
    }
  }
  return chosen;
}
