#pragma once

#include <string_view>
#include <vector>

#include "base/NUnicodeString.h"

// The relative path of a key: its names from the store's root down. Paths
// are only ever built by appending validated names, never by joining raw
// text to a folder (a path join would drop the root when the right side is
// absolute), so no key can name a file outside its store.
class NKeyPath {
 public:
  NKeyPath() = default;

  // Splits `path` at "\" (and "/" when `allowSlash`) and appends each name;
  // false, leaving this path as it was, when any name is not valid.
  bool Append(std::u16string_view path, bool allowSlash = false);
  // This path with `path` appended (as Append does, "\" between names) in
  // `child`, made with room for the added names from the start; false when
  // any name is not valid.
  bool Child(std::u16string_view path, NKeyPath* child) const;

  // A single name that a key may have: not empty, not "." or "..", not
  // ending in a dot or a space (Windows would strip them and two names would
  // share one file), no control character (NUL included), no "\" or "/", no
  // ":" (drive-relative and stream names), and not a reserved form that
  // would leave the root.
  static bool IsValidName(std::u16string_view name);

  const std::vector<NUnicodeString>& Names() const { return m_names; }
  bool IsRoot() const { return m_names.empty(); }
  // The last name; empty for the root.
  std::u16string_view Leaf() const { return m_names.empty() ? std::u16string_view() : m_names.back(); }
  NKeyPath Parent() const;

  // Names joined with `separator` (the key's display path uses "\").
  NUnicodeString Join(char16_t separator) const;
  // `root`, then every name, with `separator` between, then `suffix`.
  NUnicodeString Under(std::u16string_view root, char16_t separator, std::u16string_view suffix = {}) const;

 private:
  std::vector<NUnicodeString> m_names;
};
