#pragma once

#include <cstdint>
#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"

inline constexpr std::uint32_t kMsgNameEmpty = 0x61380083;
inline constexpr std::uint32_t kMsgNameIllegalCharacter = 0x61380084;  // %1!c!: the character
inline constexpr std::uint32_t kMsgNameReservedDevice = 0x61380085;    // %1: the name
inline constexpr std::uint32_t kMsgNameInUse = 0xE1380006;             // %1: the name

// The rules a session's name must pass, in their order: not empty; none of
// \ / : * ? " < > | (the first of these, in this order, that the name holds
// is reported); not a device name Windows reserves (alone or before a "."):
// no clash with another session. `location` is the folder the new session
// goes into (isNew) or the path of the session being renamed. True when
// the name may be used; otherwise params hold the message.
bool NCheckSessionName(std::u16string_view location, std::u16string_view oldName, std::u16string_view newName,
                       bool isNew, NReportMessageParams& params);

// NCheckSessionName, showing the first failure in a message box owned by
// `parent`.
CFGDECK_API bool ValidateSessionName(const NUnicodeString& location, const NUnicodeString& oldName,
                                     const NUnicodeString& newName, bool isNew, void* parent);
