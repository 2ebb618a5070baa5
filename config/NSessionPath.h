#pragma once

#include <string>
#include <string_view>

#include "base/NUnicodeString.h"

// Session paths: names under "Sessions" separated by "\".

// `name` in `folder` (the top of the tree when `folder` is empty).
inline NUnicodeString NJoinSessionPath(std::u16string_view folder, std::u16string_view name) {
  NUnicodeString path(folder);
  if (!path.empty()) path += u'\\';
  path += name;
  return path;
}

// The folder part of `path`: empty for a session at the top.
inline std::u16string_view NSessionFolderOf(std::u16string_view path) {
  const std::size_t slash = path.rfind(u'\\');
  return slash == std::u16string_view::npos ? std::u16string_view() : path.substr(0, slash);
}

// The last name of `path`.
inline std::u16string_view NSessionNameOf(std::u16string_view path) {
  const std::size_t slash = path.rfind(u'\\');
  return slash == std::u16string_view::npos ? path : path.substr(slash + 1);
}

// A path as a person types it, with "/" or "\\" between names.
inline NUnicodeString NSessionPathFromUtf8(std::string_view typed) {
  NUnicodeString path = NUnicodeString::FromUtf8(std::string(typed));
  for (char16_t& c : path) {
    if (c == u'/') c = u'\\';
  }
  return path;
}
