#pragma once

#include <string>

// The configuration folder a tool works on, and how it was found.
struct NToolFolder {
  std::string path;
  std::string foundBy;
};

// As a host finds its folder: `given` (--config) when not empty, then a
// folder beside the program, then the folder `appName` remembers, then the
// user's own default.
NToolFolder NResolveToolFolder(const std::string& given, const std::string& appName);
