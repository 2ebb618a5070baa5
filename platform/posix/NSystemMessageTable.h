#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// The English texts of the Windows system message tables, for systems that
// have none. Texts are stored as Windows stores them: insertions such as %1
// or %hs are left in place and every text ends in "\r\n", so callers format
// them exactly as they would a text fetched on Windows.

struct NSystemMessageEntry {
  std::uint32_t code;
  std::u16string_view text;
};

// On success sets *text and returns true; otherwise leaves *text alone.
bool NFindWin32Message(std::uint32_t code, std::u16string_view* text);
bool NFindNtStatusMessage(std::uint32_t code, std::u16string_view* text);

// The whole tables, sorted by code.
std::span<const NSystemMessageEntry> NWin32MessageEntries();
std::span<const NSystemMessageEntry> NNtStatusMessageEntries();
