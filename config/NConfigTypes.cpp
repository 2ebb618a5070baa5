#include "config/NConfigTypes.h"

#include <algorithm>

#include "platform/NPlatform.h"

NFileTime NFileTime::Now() { return NFileTime{NPlatform::Default().CurrentFileTime()}; }

NLogFont NLogFont::Make(std::u16string_view face, std::int32_t height, std::int32_t weight) {
  NLogFont font;
  font.height = height;
  font.weight = weight;
  const std::size_t count = std::min(face.size(), font.faceName.size() - 1);
  std::copy_n(face.begin(), count, font.faceName.begin());
  return font;
}

NColorTable NDefaultAnsiColors() {
  return NColorTable{0x000000, 0x000080, 0x008000, 0x008080, 0x800000, 0x800080, 0x808000, 0xC0C0C0,
                     0x808080, 0x0000FF, 0x00FF00, 0x00FFFF, 0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
}
