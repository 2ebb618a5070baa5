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
