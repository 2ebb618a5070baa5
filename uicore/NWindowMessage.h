#pragma once

#include <cstdint>

// A window message as a dialog's message filter receives it, in the layout
// of the Windows message: the identifier and its two parameters.
struct NWindowMessage {
  static constexpr std::uint32_t kKeyDown = 0x0100;
  static constexpr std::uint32_t kKeyUp = 0x0101;
  static constexpr std::uint32_t kSysKeyDown = 0x0104;
  static constexpr std::uint32_t kSysKeyUp = 0x0105;

  std::uint32_t message = 0;
  // Key messages: the virtual key.
  std::uintptr_t wParam = 0;
  // Key messages: the key data, the repeat count in the low 16 bits and the
  // flags (scan code, extended, context, previous state, transition) in the
  // high 16.
  std::intptr_t lParam = 0;
};
