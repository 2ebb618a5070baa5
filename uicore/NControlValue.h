#pragma once

#include <cstdint>
#include <string_view>
#include <type_traits>
#include <variant>

#include "base/NStringArray.h"
#include "base/NUnicodeString.h"

// A font as a font control shows it: face, height in the record's terms
// (negative: character height in pixels), weight 100-900, italic.
struct NControlFont {
  NUnicodeString face;
  std::int32_t height = 0;
  std::int32_t weight = 400;
  bool italic = false;
  bool operator==(const NControlFont&) const = default;
};

// What a control holds: a check box a boolean, a number, choice or colour
// an integer (a colour is 0x00BBGGRR), texts and pickers a string, a list
// of strings, a font. Empty for controls without a value (buttons, group
// boxes).
using NControlValue = std::variant<std::monostate, bool, std::int64_t, NUnicodeString, NStringArray, NControlFont>;

// How a field's type shows in a control: To makes the control value, From
// takes it back (false, field untouched, when the value is of another kind).
// The types below are known here; a module adds its own types by
// specialising NControlCodec.
template <typename T, typename = void>
struct NControlCodec;

// The types a control value holds as they are.
template <typename T>
struct NDirectControlCodec {
  static NControlValue To(const T& value) { return value; }
  static bool From(const NControlValue& value, T* out) {
    const T* held = std::get_if<T>(&value);
    if (held) *out = *held;
    return held != nullptr;
  }
};

template <>
struct NControlCodec<bool> : NDirectControlCodec<bool> {};
template <>
struct NControlCodec<NUnicodeString> : NDirectControlCodec<NUnicodeString> {};
template <>
struct NControlCodec<NStringArray> : NDirectControlCodec<NStringArray> {};

template <typename T>
struct NControlCodec<T, std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>>> {
  static NControlValue To(T value) { return static_cast<std::int64_t>(value); }
  static bool From(const NControlValue& value, T* out) {
    const std::int64_t* n = std::get_if<std::int64_t>(&value);
    if (n) *out = static_cast<T>(*n);
    return n != nullptr;
  }
};

// The control value as one line of text, for the headless record and the
// tool: "true"/"false", the number, the text, "a; b" for a list,
// "Face, height, weight" for a font.
NUnicodeString NDescribeControlValue(const NControlValue& value);
