#pragma once

#include <string>
#include <string_view>

// Text conversions and comparisons whose implementation differs between
// operating systems: ICU on POSIX, the Win32 national-language functions on
// Windows. Malformed input never fails: it is replaced by U+FFFD.

// UTF-8 bytes to UTF-16 code units.
std::u16string NUtf8ToUtf16(std::string_view utf8);

// UTF-16 code units to UTF-8 bytes; a lone surrogate becomes U+FFFD.
std::string NUtf16ToUtf8(std::u16string_view utf16);

// Text in the platform's ANSI code page to UTF-16 (on Windows with the
// precomposed flag, which leaves text as it is written). POSIX has no ANSI
// code page: bytes that are valid UTF-8 are read as UTF-8, others
// as Windows-1252, so that both hand-edited files and files written by older
// Windows programs read correctly.
std::u16string NAnsiToUtf16(std::string_view bytes);

// True when `bytes` is well-formed UTF-8 (no overlong forms, no surrogates).
bool NIsValidUtf8(std::string_view bytes);

// Case-insensitive ordinal comparison, code unit by code unit over the whole
// strings: negative, zero or positive. Equality is simple case folding on
// POSIX and the system's ordinal rule on Windows (CompareStringOrdinal, the
// rule of its file names), which leaves a few letters apart that folding
// equates (final sigma and sigma, the Kelvin sign and k). Unequal strings
// are ordered by NFoldCase everywhere.
int NCompareIgnoreCase(std::u16string_view a, std::u16string_view b);

// The case folding of one UTF-16 code unit (surrogates are returned as they
// are), for hashing names that compare case-insensitively: units that
// NCompareIgnoreCase calls equal fold alike.
char16_t NFoldCase(char16_t c);
