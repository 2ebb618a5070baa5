#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "base/NUnicodeString.h"

// The text of the library's message `code` with `arguments` inserted, less
// the line break every message text ends in: for titles, labels and
// buttons, and for messages shown in a box of their own.
NUnicodeString NMessageText(std::uint32_t code, std::initializer_list<std::u16string_view> arguments = {});
