#include "dialogs/SelectedKeyDialog.h"

#include "dialogs/KeyboardButton.h"
#include "dialogs/NPackedKey.h"

unsigned SelectedKeyDialog::mapModifiers(unsigned key) {
  unsigned modifiers = KeyboardButton::kNone;
  if (key & kKeyCtrl) modifiers |= KeyboardButton::kCtrl;
  if (key & kKeyShift) modifiers |= KeyboardButton::kShift;
  if (key & kKeyAlt) modifiers |= KeyboardButton::kAlt;
  return modifiers;
}
