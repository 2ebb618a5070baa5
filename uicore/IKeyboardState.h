#pragma once

#include <cstdint>

// The live state of the keyboard, as the window system sees it at the
// moment of asking. The window toolkit supplies it; tests script it.
class IKeyboardState {
 public:
  virtual ~IKeyboardState() = default;

  // The state of a virtual key: negative while the key is down.
  virtual std::int16_t GetKeyState(unsigned virtualKey) const = 0;
};
