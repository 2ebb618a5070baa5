#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/NExport.h"

// The system's wide string: UTF-16 code units, as Windows stores text. It is a
// std::u16string with the few additions the system needs: conversion to and
// from UTF-8 at the edges (POSIX file names, the command line, JSON) and the
// case-insensitive comparison used wherever names are matched without case.
// A value type; copies are independent. Thread-compatible.
class NUnicodeString : public std::u16string {
 public:
  using std::u16string::basic_string;
  NUnicodeString() = default;
  NUnicodeString(const std::u16string& s) : std::u16string(s) {}
  NUnicodeString(std::u16string&& s) noexcept : std::u16string(std::move(s)) {}

  // Malformed UTF-8 becomes U+FFFD; nothing is dropped silently.
  CFGDECK_API static NUnicodeString FromUtf8(std::string_view utf8);
  // The same into this string, reusing its buffer: hosts read many values
  // into one string.
  CFGDECK_API void AssignUtf8(std::string_view utf8);
  CFGDECK_API std::string ToUtf8() const;

  std::size_t Length() const noexcept { return size(); }
  bool IsEmpty() const noexcept { return empty(); }
  std::u16string_view View() const noexcept { return *this; }

  // Whole-string comparison without case, by NCompareIgnoreCase's rule.
  CFGDECK_API bool EqualsIgnoreCase(std::u16string_view other) const;
  CFGDECK_API static int CompareIgnoreCase(std::u16string_view a, std::u16string_view b);
};

// Hash and equality for maps keyed case-insensitively.
struct NIgnoreCaseHash {
  CFGDECK_API std::size_t operator()(std::u16string_view s) const noexcept;
};
struct NIgnoreCaseEqual {
  bool operator()(std::u16string_view a, std::u16string_view b) const {
    return NUnicodeString::CompareIgnoreCase(a, b) == 0;
  }
};
