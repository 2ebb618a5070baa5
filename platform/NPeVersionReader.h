#pragma once

#include <cstddef>
#include <string_view>

#include "platform/NFileVersion.h"

// The largest executable whose bytes are read to find its version; real
// programs are far smaller, and the cap keeps a hostile file from costing
// unbounded memory.
inline constexpr std::size_t kMaxPeFileSize = std::size_t{64} << 20;

// Finds the VS_FIXEDFILEINFO of a PE image (PE32 or PE32+) given as its file
// bytes: the first name and the first language of the RT_VERSION resource,
// as the system's version functions take it. Every offset is checked against
// the bytes, so any input gives a result or false; false leaves *version
// untouched. Works on every system, for files of any machine type.
bool NParsePeFileVersion(std::string_view fileBytes, NFileVersion* version);
