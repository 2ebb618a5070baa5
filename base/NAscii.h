#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Word-at-a-time helpers for the byte scans on the hot paths of the store:
// most text it reads is ASCII, and lines are short.

// True when every byte of `bytes` is below 0x80.
inline bool NIsAscii(std::string_view bytes) {
  const char* p = bytes.data();
  std::size_t left = bytes.size();
  std::uint64_t any = 0;
  while (left >= 8) {
    std::uint64_t word;
    std::memcpy(&word, p, 8);
    any |= word;
    p += 8;
    left -= 8;
  }
  while (left--) any |= static_cast<unsigned char>(*p++);
  return (any & 0x8080808080808080ull) == 0;
}

// Widens `bytes` into `units` (room for bytes.size()), as UTF-8 decoding
// would when every byte is ASCII; false when one is not (then `units`
// holds garbage). Sixteen bytes at a time, the last block overlapping the
// one before, and strings under 16 bytes as two overlapping halves:
// lengths vary from string to string, and a byte loop for what is left
// over would end at a different place each time, a branch the CPU mostly
// guesses wrong.
inline bool NWidenAscii(std::string_view bytes, char16_t* units) {
  const char* p = bytes.data();
  const std::size_t size = bytes.size();
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  if (size >= 16) {
    __m128i high = zero;
    auto widen16 = [&](std::size_t i) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
      high = _mm_or_si128(high, block);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(units + i), _mm_unpacklo_epi8(block, zero));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(units + i + 8), _mm_unpackhi_epi8(block, zero));
    };
    std::size_t i = 0;
    for (; i + 16 <= size; i += 16) widen16(i);
    if (i < size) widen16(size - 16);
    return _mm_movemask_epi8(high) == 0;
  }
  if (size >= 8) {
    const __m128i first = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
    const __m128i last = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + size - 8));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(units), _mm_unpacklo_epi8(first, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(units + size - 8), _mm_unpacklo_epi8(last, zero));
    return _mm_movemask_epi8(_mm_or_si128(first, last)) == 0;
  }
#endif
  unsigned char any = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const auto byte = static_cast<unsigned char>(p[i]);
    any |= byte;
    units[i] = byte;
  }
  return any < 0x80;
}

// The position of the first CR or LF in `bytes`, or its size when none.
inline std::size_t NFindLineEnd(std::string_view bytes) {
  const char* begin = bytes.data();
  std::size_t i = 0;
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; i + 16 <= bytes.size(); i += 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin + i));
    const int hits = _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(block, cr), _mm_cmpeq_epi8(block, lf)));
    if (hits) return i + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(hits)));
  }
#else
  constexpr std::uint64_t kOnes = 0x0101010101010101ull;
  constexpr std::uint64_t kHighs = 0x8080808080808080ull;
  // A word holds a CR or an LF when one of its bytes XOR the pattern is 0.
  for (; i + 8 <= bytes.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, begin + i, 8);
    const std::uint64_t cr = word ^ (kOnes * '\r');
    const std::uint64_t lf = word ^ (kOnes * '\n');
    if ((((cr - kOnes) & ~cr) | ((lf - kOnes) & ~lf)) & kHighs) break;
  }
#endif
  for (; i < bytes.size(); ++i) {
    if (begin[i] == '\r' || begin[i] == '\n') return i;
  }
  return bytes.size();
}

#if defined(__SSE2__)
// A bit for each of the 16 bytes at `p` that is CR or LF, or (`quotes`) a
// double quote too.
inline std::uint32_t NLineEndBits16(const char* p, bool quotes) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  __m128i hits = _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('\r')), _mm_cmpeq_epi8(block, _mm_set1_epi8('\n')));
  if (quotes) hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8('"')));
  return static_cast<std::uint32_t>(_mm_movemask_epi8(hits));
}
#endif

// The position of the first CR or LF (or, with `quotes`, double quote)
// among the `window` bytes at `p` (32 or 64; all must be readable), or
// `window` when there is none. Names and values vary in length from record
// to record: a loop over 16-byte blocks would end at a different block each
// time, a branch the CPU mostly guesses wrong, where one test of the whole
// window almost always goes the same way.
template <std::size_t window>
inline std::size_t NFindInWindow(const char* p, bool quotes) {
  static_assert(window == 32 || window == 64);
#if defined(__SSE2__)
  std::uint64_t bits = NLineEndBits16(p, quotes) | std::uint64_t{NLineEndBits16(p + 16, quotes)} << 16;
  if constexpr (window == 64) {
    bits |= std::uint64_t{NLineEndBits16(p + 32, quotes)} << 32 | std::uint64_t{NLineEndBits16(p + 48, quotes)} << 48;
  }
  return bits ? static_cast<std::size_t>(__builtin_ctzll(bits)) : window;
#else
  for (std::size_t i = 0; i < window; ++i) {
    if (p[i] == '\r' || p[i] == '\n' || (quotes && p[i] == '"')) return i;
  }
  return window;
#endif
}
