#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

// Whole-file reads and writes for tests that check bytes on disk directly,
// past the code under test.

// The file's bytes; empty when it cannot be read.
inline std::string NReadFileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  return content.str();
}

// Replaces the file's content with `bytes`, creating its folders.
inline void NWriteFileBytes(const std::filesystem::path& path, std::string_view bytes) {
  if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

// Whether the file system holding `folder` (which must exist) takes names
// that differ only in case for one name, as Windows' does.
inline bool NFileSystemIgnoresCase(const std::filesystem::path& folder) {
  const std::filesystem::path probe = folder / "cfgdeck_case_probe";
  NWriteFileBytes(probe, "");
  std::error_code error;
  const bool ignores = std::filesystem::exists(folder / "CFGDECK_CASE_PROBE", error);
  std::filesystem::remove(probe, error);
  return ignores;
}
