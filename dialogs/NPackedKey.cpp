#include "dialogs/NPackedKey.h"

#include <string_view>

unsigned GetModifiers(unsigned key) { return key & kKeyModifierMask; }

unsigned GetUnmodifiedKey(unsigned key) { return key & ~kKeyModifierMask; }

NUnicodeString KeyModifiersToString(unsigned key) {
  struct Text {
    std::uint32_t bit;
    std::u16string_view text;
  };
  static constexpr Text kTexts[] = {
      {kKeyAlt, u"Alt-"},           {kKeyCtrl, u"Ctrl-"},       {kKeyShift, u"Shift-"},
      {kKeyExtended, u"Extended-"}, {kKeyWindows, u"Windows-"},
  };
  NUnicodeString result;
  for (const Text& t : kTexts) {
    if (key & t.bit) result += t.text;
  }
  return result;
}
