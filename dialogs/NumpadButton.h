#pragma once

#include <string_view>

#include "dialogs/KeyboardButton.h"

// A key of the on-screen numeric pad. Its scan code is the same with Num
// Lock on or off; what changes is the virtual key it sends, and with it the
// name the keymap gives it (VK_NUMPAD7 rather than VK_HOME), which the
// button also keeps.
class NumpadButton : public KeyboardButton {
 public:
  NumpadButton(unsigned id, int width, std::u16string_view caption, unsigned scanCode, unsigned long numLockVirtualKey)
      : KeyboardButton(id, width, caption, scanCode, 0), m_numLockVirtualKey(numLockVirtualKey) {}

  // The virtual key the key sends while Num Lock is on.
  unsigned long numLockVirtualKey() const { return m_numLockVirtualKey; }

 private:
  unsigned long m_numLockVirtualKey;
};
