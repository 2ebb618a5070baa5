#pragma once

#include <cstdint>
#include <string>

// What to generate: a configuration folder at root with a "global.ini" and a
// "Sessions" tree of depth levels of fanout sub-folders each, the sessions
// spread evenly over the deepest folders. The same settings give the same bytes.
struct NConfigFolderSpec {
  std::string root;
  int sessions = 10000;
  std::uint64_t seed = 1;
  int fanout = 8;
  int depth = 3;
};

struct NConfigFolderStats {
  std::uint64_t filesWritten = 0;
  std::uint64_t totalBytes = 0;
  std::uint64_t folders = 0;  // "Sessions" and every folder below it
  int sessions = 0;
  std::uint64_t dwordValues = 0;
  std::uint64_t stringValues = 0;
  std::uint64_t binaryValues = 0;
  std::uint64_t multiStringValues = 0;
};

// Creates root and the folders below it as needed and overwrites files of the
// same names; other files are left alone. Throws std::invalid_argument for
// settings it cannot honour and std::runtime_error when a file cannot be written.
NConfigFolderStats NGenerateConfigFolder(const NConfigFolderSpec& settings);
