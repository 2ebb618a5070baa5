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

// The position of the first double quote, CR or LF in `bytes`, or its size.
inline std::size_t NFindQuoteOrLineEnd(std::string_view bytes) {
  const char* begin = bytes.data();
  std::size_t i = 0;
#if defined(__SSE2__)
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i cr = _mm_set1_epi8('\r');
  const __m128i lf = _mm_set1_epi8('\n');
  for (; i + 16 <= bytes.size(); i += 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(begin + i));
    const __m128i any = _mm_or_si128(_mm_cmpeq_epi8(block, quote),
                                     _mm_or_si128(_mm_cmpeq_epi8(block, cr), _mm_cmpeq_epi8(block, lf)));
    if (const int hits = _mm_movemask_epi8(any)) return i + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(hits)));
  }
#endif
  for (; i < bytes.size(); ++i) {
    if (begin[i] == '"' || begin[i] == '\r' || begin[i] == '\n') return i;
  }
  return bytes.size();
}
