#pragma once

#include <filesystem>

// Makes `link` a symbolic link to `target`, which is a folder when `folder`
// is set; false, with nothing made, where this system or account cannot make
// one (Windows needs the privilege or developer mode), so that a test can
// skip. std::filesystem cannot make links in a MinGW build at all.
bool NMakeSymbolicLink(const std::filesystem::path& target, const std::filesystem::path& link, bool folder);
