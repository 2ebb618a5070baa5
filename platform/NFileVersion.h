#pragma once

#include <cstdint>
#include <string_view>

// The fixed part of an executable's version resource. Callers decide what a
// version means; a companion program counts as installed when its fileType
// is kFileTypeApplication and its major version reaches the one it needs.
struct NFileVersion {
  static constexpr std::uint32_t kFileTypeApplication = 1;  // VFT_APP
  static constexpr std::uint32_t kFileTypeDll = 2;          // VFT_DLL

  std::uint32_t fileType = 0;
  std::uint16_t major = 0, minor = 0, build = 0, revision = 0;
};

// Reads the version resource of the executable at `path`. False, with
// *version untouched, when the file is missing or unreadable, is no PE file,
// or carries no version resource. On Windows the system's version functions
// read it; elsewhere the file's bytes are parsed (NParsePeFileVersion), and a
// file larger than kMaxPeFileSize is refused unread.
bool NReadFileVersion(std::u16string_view path, NFileVersion* version);
