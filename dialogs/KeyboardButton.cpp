#include "dialogs/KeyboardButton.h"

#include "dialogs/NPackedKey.h"

KeyboardButton::KeyboardButton(unsigned id, int width, std::u16string_view caption, unsigned scanCode,
                               unsigned keyFlags)
    : m_id(id), m_width(width), m_caption(caption), m_scanCode(scanCode), m_keyFlags(keyFlags & kKeyExtended) {}

unsigned KeyboardButton::GetKey(unsigned modifiers) const {
  unsigned key = GetUnmodifiedKey(m_scanCode) | m_keyFlags;
  if (modifiers & kCtrl) key |= kKeyCtrl;
  if (modifiers & kShift) key |= kKeyShift;
  if (modifiers & kAlt) key |= kKeyAlt;
  return key;
}
