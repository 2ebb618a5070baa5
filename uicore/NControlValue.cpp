#include "uicore/NControlValue.h"

#include <string>

namespace {

NUnicodeString Number(std::int64_t n) { return NUnicodeString::FromUtf8(std::to_string(n)); }

struct Describer {
  NUnicodeString operator()(std::monostate) const { return {}; }
  NUnicodeString operator()(bool b) const { return b ? u"true" : u"false"; }
  NUnicodeString operator()(std::int64_t n) const { return Number(n); }
  NUnicodeString operator()(const NUnicodeString& s) const { return s; }
  NUnicodeString operator()(const NStringArray& list) const {
    NUnicodeString out;
    for (const NUnicodeString& item : list) {
      if (!out.empty()) out += u"; ";
      out += item;
    }
    return out;
  }
  NUnicodeString operator()(const NControlFont& font) const {
    return font.face + u", " + Number(font.height) + u", " + Number(font.weight) + (font.italic ? u", italic" : u"");
  }
};

}  // namespace

NUnicodeString NDescribeControlValue(const NControlValue& value) { return std::visit(Describer{}, value); }
