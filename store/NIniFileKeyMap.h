#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "store/NIniFileData.h"
#include "store/NNameFilter.h"
#include "store/NNameIndex.h"

// The ordered value table of one INI key (NIniFileKey::Map).
//
// Two ordered arrays of elements (a name and its data, or none): the fixed
// array, pre-seeded with the personal names in their fixed order, and the
// free array, holding every other name in the order it was first read or
// set. Iteration, and so a saved file, goes over the fixed array first. An
// element without data counts as absent but keeps its place, so a value
// deleted and set again returns to where it was.
//
// Lookups go through an index beside the arrays (NNameIndex, over the
// positions of both). A table loaded from a file builds it only when
// lookups need it: until then a filter of the names' hashes (NNameFilter)
// catches repeated names while reading and answers most lookups of names
// the file lacks, and the few names read out of turn are searched for near
// where reading is, up to a bound.
// Names are compared exactly: case matters.
//
// The table owns the texts of the files it was loaded from (at most two: the
// key's file and its private file); values read from them point into those
// texts, and their objects live in an arena that goes with the table.
// Values set later are owned one by one.
class NIniFileKeyMap {
 public:
  static constexpr std::size_t kFixedCount = 22;
  static const std::array<std::string_view, kFixedCount> kFixedNames;

  class Element {
   public:
    std::string_view Name() const { return std::string_view(m_name, m_nameSize); }
    NIniFileData* Data() const { return m_data; }
    // Set or deleted since the table was loaded or saved.
    bool Changed() const { return m_changed; }

   private:
    friend class NIniFileKeyMap;
    const char* m_name = nullptr;  // UTF-8
    std::uint32_t m_nameSize = 0;
    bool m_heap = false;  // the data was allocated on its own, not in the arena
    bool m_changed = false;
    NIniFileData* m_data = nullptr;
  };

  NIniFileKeyMap();
  NIniFileKeyMap(const NIniFileKeyMap&) = delete;
  NIniFileKeyMap& operator=(const NIniFileKeyMap&) = delete;
  ~NIniFileKeyMap();

  // The position of a personal name in the fixed array, or -1.
  static int FixedIndex(std::string_view name);

  // Keeps a file's text for the table's lifetime (at most two texts) and
  // returns a view of the kept copy, for records to point into.
  // The text kept is what follows its first `skip` bytes.
  std::string_view AdoptText(std::string text, std::size_t skip = 0);
  // Reads the records of `text` (a text given to AdoptText) into the table,
  // until its end or its first invalid record.
  struct ReadResult {
    std::size_t invalidLine = 0;  // 1-based line of the first invalid record, or 0
    std::string problem;          // why that record is invalid
    bool unterminated = false;    // the last line has no line end
  };
  ReadResult ReadRecords(std::string_view text);

  // Memory that lives as long as the table, for values read from a file.
  // A bump allocator: loading makes a few hundred small objects per key.
  void* Allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    const std::size_t pad = (alignment - reinterpret_cast<std::uintptr_t>(m_cursor) % alignment) % alignment;
    if (pad + size > m_left) return AllocateBlock(size, alignment);
    char* memory = m_cursor + pad;
    m_cursor = memory + size;
    m_left -= pad + size;
    return memory;
  }

  // A value name as UTF-8, on the stack for the usual short ASCII names, so
  // that a lookup allocates nothing.
  class Utf8Name {
   public:
    explicit Utf8Name(std::u16string_view name);
    std::string_view View() const { return m_view; }

   private:
    char m_small[96];
    std::string m_large;
    std::string_view m_view;
  };

  // The element of `name` (with or without data), or null. Hosts read a
  // record's values in the order they are saved in, so the element after the
  // one found last is tried first, before the index.
  const Element* Find(std::string_view name) const;
  // The same for a name in UTF-16, as keys are asked: the element tried
  // first is compared with it as it stands, converted only for the index.
  // Inline: hosts read every field this way, and the element tried first is
  // nearly always the one.
  const Element* Find(std::u16string_view name) const {
    const std::size_t free = m_hint - kFixedCount;
    if (m_hint >= kFixedCount && free < m_free.size() && SameWideName(m_free[free].Name(), name)) {
      ++m_hint;
      return &m_free[free];
    }
    return FindAfterHint(name);
  }
  // Points the next lookup at `position` first: a host reads the value an
  // iterator has just named, in the iterator's order, not the table's.
  void ExpectLookupAt(std::size_t position) const {
    m_hint = position;
    m_resume = 0;
  }
  NIniFileData* FindData(std::string_view name) const {
    const Element* element = Find(name);
    return element ? element->m_data : nullptr;
  }

  // Gives `name` new data, destroying what it held. `name` must outlive the
  // table unless `copyName` is set.
  void Put(std::string_view name, NIniFileData* data, bool heap, bool copyName, bool markChanged);
  // Destroys the data of `name`; false when it had none.
  bool Remove(std::string_view name, bool markChanged);

  // Elements by position: the fixed array, then the free array. Positions
  // stay valid for the table's lifetime.
  std::size_t ElementCount() const { return kFixedCount + m_free.size(); }
  const Element& ElementAt(std::size_t position) const {
    return position < kFixedCount ? m_fixed[position] : m_free[position - kFixedCount];
  }

  // Calls f(element) for every element that holds data, fixed array first.
  template <typename F>
  void ForEach(F&& f) const {
    for (const Element& e : m_fixed) {
      if (e.m_data) f(e);
    }
    for (const Element& e : m_free) {
      if (e.m_data) f(e);
    }
  }
  // Calls f(element) for every element changed since load or save.
  template <typename F>
  void ForEachChanged(F&& f) const {
    for (const Element& e : m_fixed) {
      if (e.m_changed) f(e);
    }
    for (const Element& e : m_free) {
      if (e.m_changed) f(e);
    }
  }

  // Whether `element` is one of the fixed array's personal names.
  bool IsPersonal(const Element& element) const {
    return &element >= m_fixed.data() && &element < m_fixed.data() + kFixedCount;
  }

  bool HasFixedData() const;
  bool HasFixedChange() const;
  void ClearChanges();
  std::size_t ValueCount() const;

 private:
  // Whether the UTF-8 name `a` is the UTF-16 name `b`, for ASCII names (any
  // other `a` answers false; the index settles those). Widening `a` beats
  // narrowing `b`: a name just narrowed into a buffer is read back at other
  // widths than it was written, which stalls the load.
  static bool SameWideName(std::string_view a, std::u16string_view b) {
    const std::size_t size = a.size();
    if (size != b.size()) return false;
#if defined(__SSE2__)
    if (size >= 8 && size <= 64) {
      const __m128i zero = _mm_setzero_si128();
      __m128i high = zero;
      __m128i differ = zero;
      auto compare8 = [&](std::size_t i) {
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(a.data() + i));
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b.data() + i));
        high = _mm_or_si128(high, bytes);
        differ = _mm_or_si128(differ, _mm_xor_si128(_mm_unpacklo_epi8(bytes, zero), units));
      };
      for (std::size_t i = 0; i + 8 < size; i += 8) compare8(i);
      compare8(size - 8);  // the last eight, overlapping the ones before
      return (_mm_movemask_epi8(high) & 0xFF) == 0 && _mm_movemask_epi8(_mm_cmpeq_epi8(differ, zero)) == 0xFFFF;
    }
#endif
    for (std::size_t i = 0; i < size; ++i) {
      const auto unit = static_cast<unsigned char>(a[i]);
      if (unit >= 0x80 || unit != b[i]) return false;
    }
    return true;
  }

  const Element* FindAfterHint(std::u16string_view name) const;
  Element& At(std::size_t position) { return position < kFixedCount ? m_fixed[position] : m_free[position - kFixedCount]; }
  Element* Lookup(std::string_view name, std::uint64_t hash) const;
  Element* LookupWide(std::u16string_view name, std::uint64_t hash) const;
  // The position of the name that `same` accepts, or NNameIndex::kNone.
  template <typename Same>
  std::uint32_t Locate(std::uint64_t hash, Same&& same) const;
  // The position of the personal name that `same` accepts under `hash`, or
  // NNameIndex::kNone.
  template <typename Same>
  static std::uint32_t FixedPosition(std::uint64_t hash, Same&& same);
  // Moves the hint after `found`, and returns it.
  const Element* Hinted(const Element* found) const;
  Element& Append(std::string_view name, bool copyName);
  // The index, built at first use; Rebuild sizes it for `positions`.
  const NNameIndex& Index() const;
  void Rebuild(std::size_t positions) const;
  // The same with only the first `freeCount` elements of the free array.
  void RebuildUpTo(std::size_t positions, std::size_t freeCount) const;
  // Indexes the free array's elements from `first` on, just read from a
  // file: a name already in the table takes the later data and the later
  // element goes.
  void IndexFrom(std::size_t first);
  // The same through the filter, for a table whose names are all in it; a
  // name that may repeat another (not a personal one) ends the filter and
  // the rest is indexed.
  void FilterFrom(std::size_t first);
  // Starts the filter for a first text expected to hold `records` records.
  void StartFilter(std::size_t records);
  static constexpr std::size_t kBatch = 256;
  void* AllocateBlock(std::size_t size, std::size_t alignment);
  void Destroy(Element& element);

  std::array<Element, kFixedCount> m_fixed;
  std::vector<Element> m_free;
  mutable NNameIndex m_index;
  // Holds every name while m_filtering, which ends when the index is built.
  NNameFilter m_filter;
  mutable bool m_filtering = false;
  // Names compared by lookups that searched the elements while filtering.
  static constexpr std::size_t kScanBack = 16;
  static constexpr std::size_t kScanRounds = 4;
  mutable std::size_t m_scanned = 0;
  std::size_t m_heapValues = 0;  // elements whose data was allocated on its own
  mutable std::size_t m_hint = 0;      // the position after the element found last
  mutable std::size_t m_resume = 0;    // m_hint before the last step back, or 0
  std::array<std::string, 2> m_texts;
  std::size_t m_textCount = 0;
  std::vector<std::unique_ptr<char[]>> m_ownedNames;
  // The arena's blocks, newest first, each linked to the one before in its
  // first bytes (kept aligned for what follows); the first block is sized
  // from the first text.
  static constexpr std::size_t kBlockLink = alignof(std::max_align_t);
  char* m_lastBlock = nullptr;
  char* m_cursor = nullptr;
  std::size_t m_left = 0;
  std::size_t m_nextBlock = 0;
};
