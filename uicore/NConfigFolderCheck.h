#pragma once

#include <string_view>

#include "base/NExport.h"

class NPlatform;

// Whether `path` may be chosen as the configuration folder: an absolute
// path naming a folder that exists. The options page that edits the folder
// asks this before it stores one.
CFGDECK_API bool IsValidConfigFolder(const char16_t* path);
bool NIsValidConfigFolder(std::u16string_view path, NPlatform& platform);
