#pragma once

#include <cstdint>
#include <string_view>

#include "location/NPathTokens.h"
#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"

inline constexpr std::uint32_t kMsgKeymapFilenameEmpty = 0xE1380010;
inline constexpr std::uint32_t kMsgKeymapFileNotFound = 0xE1380011;

// The check of the Mapped Keys page's custom keymap file on OK. With no
// custom keymap chosen (`useCustom` false) nothing is checked. Otherwise an
// empty name is refused with kMsgKeymapFilenameEmpty, and a name that does
// not lead to an existing file with kMsgKeymapFileNotFound. A name may begin
// with a path token (expanded with `roots`); a relative name is taken under
// the configuration folder when that is known.
bool NCheckCustomKeymapFile(bool useCustom, std::u16string_view fileName, const NPathTokenRoots& roots,
                            NPlatform& platform, NReportMessageParams& params);
// The same with the process's token roots and the real system.
bool NCheckCustomKeymapFile(bool useCustom, std::u16string_view fileName, NReportMessageParams& params);
