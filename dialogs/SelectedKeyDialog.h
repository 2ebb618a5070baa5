#pragma once

// The "Map Selected Key" dialog, in which the action for a key combination
// is chosen. What of it runs without a window: how a packed key value
// shows on the on-screen keyboard.
class SelectedKeyDialog {
 public:
  // The KeyboardButton::Modifier bits of a packed key value. The extended
  // and Windows bits have no counterpart there.
  static unsigned mapModifiers(unsigned key);
};
