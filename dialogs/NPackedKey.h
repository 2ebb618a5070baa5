#pragma once

#include <cstdint>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// A packed key value, as keymaps store a key combination: the key in the
// low bits (for a captured key, its scan code) and five modifier bits.
inline constexpr std::uint32_t kKeyAlt = 0x10000000;
inline constexpr std::uint32_t kKeyCtrl = 0x04000000;
inline constexpr std::uint32_t kKeyShift = 0x08000000;
// The key data's extended flag: the right-hand and navigation keys.
inline constexpr std::uint32_t kKeyExtended = 0x02000000;
inline constexpr std::uint32_t kKeyWindows = 0x40000000;
inline constexpr std::uint32_t kKeyModifierMask = kKeyAlt | kKeyCtrl | kKeyShift | kKeyExtended | kKeyWindows;
static_assert(kKeyModifierMask == 0x5E000000);

// The modifier bits of `key`.
CFGDECK_EXTERN_C unsigned GetModifiers(unsigned key);
// `key` without its modifier bits; bits outside the five stay.
CFGDECK_EXTERN_C unsigned GetUnmodifiedKey(unsigned key);
// The texts of the modifiers set in `key`, always in the order "Alt-",
// "Ctrl-", "Shift-", "Extended-", "Windows-", with nothing between them;
// callers append the key's own name.
CFGDECK_API NUnicodeString KeyModifiersToString(unsigned key);
