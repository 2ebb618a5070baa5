#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

// A set of name hashes that answers "certainly not added" or "perhaps
// added": one 64-bit word for every two hashes, four bits set per hash. A loaded table
// checks each name it reads against it for repeats, and lookups of names
// the table lacks end here; both are far cheaper than a hash table, which
// then is built only when a lookup needs it.
//
// The filter does not own its words: a table places them in its arena.
class NNameFilter {
 public:
  // The number of words for about `hashes` hashes: a power of two, at
  // least one word for every two hashes.
  static std::size_t WordsFor(std::size_t hashes) {
    std::size_t words = kMinWords;
    while (words * 2 < hashes) words *= 2;
    return words;
  }

  // Starts empty on `count` words (a power of two).
  void Reset(std::uint64_t* words, std::size_t count) {
    m_words = words;
    m_mask = count - 1;
    std::fill_n(words, count, std::uint64_t{0});
  }

  bool MayHold(std::uint64_t hash) const {
    const std::uint64_t mixed = Mixed(hash);
    const std::uint64_t bits = Bits(mixed);
    return (m_words[Word(mixed)] & bits) == bits;
  }

  // Adds `hash`; whether it may have been added before.
  bool Add(std::uint64_t hash) {
    const std::uint64_t mixed = Mixed(hash);
    std::uint64_t& word = m_words[Word(mixed)];
    const std::uint64_t bits = Bits(mixed);
    const bool held = (word & bits) == bits;
    word |= bits;
    return held;
  }

 private:
  static constexpr std::size_t kMinWords = 32;

  // Names of one family (a prefix, a suffix, a number) hash to values
  // whose low bits go together; a multiply and a shift spread every bit
  // over those the filter takes. Without them, names of real records
  // were falsely reported present ten times as often as chance allows.
  static std::uint64_t Mixed(std::uint64_t hash) {
    const std::uint64_t product = hash * 0x9E3779B97F4A7C15ull;
    return product ^ product >> 29;
  }
  // The word comes from the high half, the bits from the low one: the two
  // stay independent.
  std::size_t Word(std::uint64_t mixed) const { return static_cast<std::size_t>(mixed >> 32) & m_mask; }
  static std::uint64_t Bits(std::uint64_t hash) {
    return std::uint64_t{1} << (hash & 63) | std::uint64_t{1} << (hash >> 6 & 63) |
           std::uint64_t{1} << (hash >> 12 & 63) | std::uint64_t{1} << (hash >> 18 & 63);
  }

  std::uint64_t* m_words = nullptr;
  std::size_t m_mask = 0;
};
