#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>

#include "base/NUnicodeString.h"
#include "config/NEncryptedString.h"

// The value types of the records' fields beyond plain integers and strings.

// A setting that can also be left to a default decided elsewhere.
enum class NTriState : std::uint32_t { kFalse = 0, kTrue = 1, kDefault = 2 };

// A colour as 0x00BBGGRR.
using NColor = std::uint32_t;

// A point in time as 100-nanosecond ticks since 1601-01-01 UTC; 0 is none.
struct NFileTime {
  std::uint64_t ticks = 0;
  static NFileTime Now();
  bool operator==(const NFileTime&) const = default;
};

// Variable binary data, for structures whose length varies.
using NBytes = std::string;

// The fixed structures below keep the layout of the system's own records:
// little-endian 32-bit fields, no padding, so files move between builds.
struct NPoint {
  std::int32_t x = 0;
  std::int32_t y = 0;
  bool operator==(const NPoint&) const = default;
};

struct NRect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
  bool operator==(const NRect&) const = default;
};

struct NWindowPlacement {
  std::uint32_t length = 44;
  std::uint32_t flags = 0;
  std::uint32_t showCommand = 1;  // shown normally
  NPoint minPosition{-1, -1};
  NPoint maxPosition{-1, -1};
  NRect normalPosition;
  bool operator==(const NWindowPlacement&) const = default;
};
static_assert(sizeof(NWindowPlacement) == 44);

struct NLogFont {
  std::int32_t height = 0;
  std::int32_t width = 0;
  std::int32_t escapement = 0;
  std::int32_t orientation = 0;
  std::int32_t weight = 400;
  std::uint8_t italic = 0;
  std::uint8_t underline = 0;
  std::uint8_t strikeOut = 0;
  std::uint8_t charSet = 1;  // the default character set
  std::uint8_t outPrecision = 0;
  std::uint8_t clipPrecision = 0;
  std::uint8_t quality = 0;
  std::uint8_t pitchAndFamily = 0;
  std::array<char16_t, 32> faceName{};
  bool operator==(const NLogFont&) const = default;

  static NLogFont Make(std::u16string_view face, std::int32_t height, std::int32_t weight = 400);
};
static_assert(sizeof(NLogFont) == 92);

// The 16 colours of the ANSI palette.
using NColorTable = std::array<NColor, 16>;
// The usual 16-colour terminal palette.
NColorTable NDefaultAnsiColors();

// A terminal colour scheme: the 16 palette colours, then the normal and the
// bold foreground, and the background.
struct NColorScheme {
  std::array<char16_t, 32> name{};
  NColorTable palette{};
  NColor foreground = 0;
  NColor boldForeground = 0;
  NColor background = 0;
  bool operator==(const NColorScheme&) const = default;
};
static_assert(sizeof(NColorScheme) == 140);

template <typename T>
concept NFixedStructure = std::is_trivially_copyable_v<T> && std::is_class_v<T>;
