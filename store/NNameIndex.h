#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Positions of names, found by the names' hashes: an open-addressing table
// in groups of 16 slots, each slot with a control byte holding 7 bits of the
// hash (or "empty"). A lookup compares a whole group's control bytes at once
// and looks at a name only where those bits match, so a probe costs one or
// two predictable branches whatever the table holds. The index never
// forgets a position: names keep their place for the table's lifetime.
//
// The index does not know the names: lookups take a predicate that says
// whether the name at a position is the one asked for.
class NNameIndex {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFFu;

  // An empty index with room for at least `positions` positions (kept at
  // most three quarters full).
  void Reset(std::size_t positions) {
    std::size_t groups = 1;
    while (groups * kGroupSize * 3 / 4 < positions) groups *= 2;
    m_groupMask = groups - 1;
    m_limit = groups * kGroupSize * 3 / 4;
    m_count = 0;
    m_control.reset(new std::uint8_t[groups * kGroupSize]);
    m_slots.reset(new std::uint32_t[groups * kGroupSize]);
    std::memset(m_control.get(), kEmpty, groups * kGroupSize);
  }

  // Whether one more position fits without a Reset.
  bool HasRoom() const { return m_count < m_limit; }
  // How many positions fit without a Reset.
  std::size_t Limit() const { return m_limit; }
  std::size_t Count() const { return m_count; }

  // The position whose name `same(position)` accepts, or kNone.
  template <typename Same>
  std::uint32_t Find(std::uint64_t hash, Same&& same) const {
    if (!m_control) return kNone;
    const std::uint8_t tag = Tag(hash);
    for (std::size_t group = GroupOf(hash);; group = (group + 1) & m_groupMask) {
      const std::uint8_t* control = m_control.get() + group * kGroupSize;
      for (std::uint32_t hits = Matches(control, tag); hits; hits &= hits - 1) {
        const std::uint32_t position = m_slots[group * kGroupSize + static_cast<std::size_t>(__builtin_ctz(hits))];
        if (same(position)) return position;
      }
      if (Matches(control, kEmpty)) return kNone;
    }
  }

  // Adds `position` under `hash`. HasRoom() must hold; the name must not be
  // in the index already.
  void Insert(std::uint64_t hash, std::uint32_t position) {
    for (std::size_t group = GroupOf(hash);; group = (group + 1) & m_groupMask) {
      std::uint8_t* control = m_control.get() + group * kGroupSize;
      if (const std::uint32_t empties = Matches(control, kEmpty)) {
        const std::size_t slot = static_cast<std::size_t>(__builtin_ctz(empties));
        control[slot] = Tag(hash);
        m_slots[group * kGroupSize + slot] = position;
        ++m_count;
        return;
      }
    }
  }

  // Find, and when nothing matches, Insert `position` in the same probe.
  // HasRoom() must hold.
  template <typename Same>
  std::uint32_t FindOrInsert(std::uint64_t hash, Same&& same, std::uint32_t position) {
    const std::uint8_t tag = Tag(hash);
    for (std::size_t group = GroupOf(hash);; group = (group + 1) & m_groupMask) {
      std::uint8_t* control = m_control.get() + group * kGroupSize;
      for (std::uint32_t hits = Matches(control, tag); hits; hits &= hits - 1) {
        const std::uint32_t found = m_slots[group * kGroupSize + static_cast<std::size_t>(__builtin_ctz(hits))];
        if (same(found)) return found;
      }
      if (const std::uint32_t empties = Matches(control, kEmpty)) {
        const std::size_t slot = static_cast<std::size_t>(__builtin_ctz(empties));
        control[slot] = tag;
        m_slots[group * kGroupSize + slot] = position;
        ++m_count;
        return kNone;
      }
    }
  }

 private:
  static constexpr std::size_t kGroupSize = 16;
  static constexpr std::uint8_t kEmpty = 0x80;

  // The low 7 bits tell names apart within a group; the bits above choose
  // the group, so the two are independent.
  static std::uint8_t Tag(std::uint64_t hash) { return static_cast<std::uint8_t>(hash & 0x7F); }
  std::size_t GroupOf(std::uint64_t hash) const { return static_cast<std::size_t>(hash >> 7) & m_groupMask; }

  // A bit for each of the group's 16 control bytes that equals `byte`. The
  // byte is spread by a multiply: _mm_set1_epi8 goes through memory, and
  // reading it back wider than it was written stalls.
  static std::uint32_t Matches(const std::uint8_t* control, std::uint8_t byte) {
#if defined(__SSE2__)
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(control));
    return static_cast<std::uint32_t>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi32(static_cast<int>(byte * 0x01010101u)))));
#else
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < kGroupSize; ++i) bits |= static_cast<std::uint32_t>(control[i] == byte) << i;
    return bits;
#endif
  }

  std::unique_ptr<std::uint8_t[]> m_control;
  std::unique_ptr<std::uint32_t[]> m_slots;
  std::size_t m_groupMask = 0;
  std::size_t m_limit = 0;
  std::size_t m_count = 0;
};
