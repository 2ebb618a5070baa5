#pragma once

#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// The running application's name ("Skeldon", "Parrow", ...), which decides
// its product id and names its registry key. The host sets it at start-up;
// until then it is the executable's file name without its extension.
CFGDECK_API NUnicodeString NGetAppName();

// Sets the name; an empty name goes back to the executable's.
CFGDECK_API void NSetAppName(std::u16string_view name);
