#pragma once

#include <cstdint>
#include <string_view>

#include "base/NUnicodeString.h"

// One key of the on-screen keyboard of the Mapped Keys page. It stands for
// a key of the physical keyboard: its scan code and whether the key sends
// the extended flag. Combined with a set of modifiers it gives the packed
// key value a keymap binds.
class KeyboardButton {
 public:
  // The modifiers the on-screen keyboard shows; SelectedKeyDialog::
  // mapModifiers derives them from a packed key value.
  enum Modifier : unsigned {
    kNone = 0,
    kCtrl = 1,
    kShift = 2,
    kAlt = 4,
  };

  // `width` is the button's width in quarters of a plain key, for the
  // layout; `keyFlags` is kKeyExtended for a key that sends the extended
  // flag, else 0.
  KeyboardButton(unsigned id, int width, std::u16string_view caption, unsigned scanCode, unsigned keyFlags);
  virtual ~KeyboardButton() = default;

  unsigned id() const { return m_id; }
  int width() const { return m_width; }
  const NUnicodeString& caption() const { return m_caption; }
  unsigned scanCode() const { return m_scanCode; }

  // The packed key value of this key pressed with `modifiers` (Modifier
  // bits; others are ignored).
  unsigned GetKey(unsigned modifiers) const;

  // How the page shows the button (for example whether the key is mapped);
  // 0 until set.
  int state() const { return m_state; }
  void SetState(int state) { m_state = state; }

 private:
  unsigned m_id;
  int m_width;
  NUnicodeString m_caption;
  unsigned m_scanCode;
  unsigned m_keyFlags;
  int m_state = 0;
};
