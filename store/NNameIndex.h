#pragma once

#include <algorithm>
#include <cstddef>
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
    // One block for the slots and their control bytes: a key load makes
    // an index, and each allocation counts.
    const std::size_t slots = groups * kGroupSize;
    m_memory.reset(new std::byte[slots * (sizeof(std::uint32_t) + sizeof(NControl))]);
    m_slots = reinterpret_cast<std::uint32_t*>(m_memory.get());
    m_control = reinterpret_cast<NControl*>(m_memory.get() + slots * sizeof(std::uint32_t));
    std::fill_n(m_control, slots, kEmpty);
  }

  // Whether one more position fits without a Reset.
  bool HasRoom() const { return m_count < m_limit; }
  // How many positions fit without a Reset.
  std::size_t Limit() const { return m_limit; }
  std::size_t Count() const { return m_count; }

  // The position whose name `same(position)` accepts, or kNone.
  template <typename Same>
  std::uint32_t Find(std::uint64_t hash, Same&& same) const {
    if (!m_memory) return kNone;
    const NControl tag = Tag(hash);
    for (std::size_t group = GroupOf(hash);; group = (group + 1) & m_groupMask) {
      const NControl* control = m_control + group * kGroupSize;
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
      NControl* control = m_control + group * kGroupSize;
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
    const NControl tag = Tag(hash);
    for (std::size_t group = GroupOf(hash);; group = (group + 1) & m_groupMask) {
      NControl* control = m_control + group * kGroupSize;
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
  // Control bytes have a type of their own: a store through a plain byte
  // type may alias anything, and would make the compiler reload every
  // member after each insertion.
  enum class NControl : std::uint8_t {};
  static constexpr NControl kEmpty = NControl{0x80};

  // The low 7 bits tell names apart within a group; the bits above choose
  // the group, so the two are independent.
  static NControl Tag(std::uint64_t hash) { return NControl(hash & 0x7F); }
  std::size_t GroupOf(std::uint64_t hash) const { return static_cast<std::size_t>(hash >> 7) & m_groupMask; }

  // A bit for each of the group's 16 control bytes that equals `byte`. The
  // byte is spread by a multiply: _mm_set1_epi8 goes through memory, and
  // reading it back wider than it was written stalls.
  static std::uint32_t Matches(const NControl* control, NControl byte) {
#if defined(__SSE2__)
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(control));
    const auto spread = static_cast<int>(static_cast<std::uint32_t>(byte) * 0x01010101u);
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi32(spread))));
#else
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < kGroupSize; ++i) bits |= static_cast<std::uint32_t>(control[i] == byte) << i;
    return bits;
#endif
  }

  std::unique_ptr<std::byte[]> m_memory;
  std::uint32_t* m_slots = nullptr;
  NControl* m_control = nullptr;  // after the slots, in the same block
  std::size_t m_groupMask = 0;
  std::size_t m_limit = 0;
  std::size_t m_count = 0;
};
