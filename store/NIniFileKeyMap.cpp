#include "store/NIniFileKeyMap.h"

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/NUnicodeString.h"


const std::array<std::string_view, NIniFileKeyMap::kFixedCount> NIniFileKeyMap::kFixedNames = {
    "Username",
    "Password",
    "Password V2",
    "Login Script V2",
    "Login Script V3",
    "Session Password Saved",
    "Local Shell Command Pre-connect",
    "Local Shell Command Pre-connect V2",
    "Account",
    "Account V2",
    "Monitor Username",
    "Monitor Password",
    "Monitor Password V2",
    "Normal Font v2",
    "Narrow Font v2",
    "Use Narrow Font",
    "SCP Shell Password",
    "SCP Shell Password V2",
    "PGP Upload Command",
    "PGP Upload Command V2",
    "PGP Download Command",
    "PGP Download Command V2",
};

namespace {

// A record takes about 36 bytes of text and its value object about 20, so
// one arena block usually holds a whole file's values.
std::size_t ExpectedRecords(std::size_t textSize) { return textSize / 36 + 8; }
std::size_t ArenaSize(std::size_t textSize) { return ExpectedRecords(textSize) * 20 + 256; }

// The index is kept at most two thirds full.
std::size_t IndexCapacity(std::size_t elements) { return elements * 3 / 2 + 1; }

// Names are short; a multiply-mix over 8-byte words hashes them in a few
// cycles, which matters because every record and every lookup hashes one.
__extension__ typedef unsigned __int128 Wide;

inline std::uint64_t Mix(std::uint64_t a, std::uint64_t b) {
  const Wide product = static_cast<Wide>(a ^ 0xa0761d6478bd642full) * (b ^ 0xe7037ed1a0b428dbull);
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

inline std::uint64_t Load8(const char* p) {
  std::uint64_t word;
  std::memcpy(&word, p, 8);
  return word;
}

// Names are short: comparing them a word at a time, overlapping at the end,
// beats a call to memcmp.
inline bool SameName(std::string_view a, std::string_view b) {
  const std::size_t size = a.size();
  if (size != b.size()) return false;
  if (size < 8 || size > 64) return a == b;
  std::uint64_t differ = 0;
  std::size_t i = 0;
  for (; i + 8 < size; i += 8) differ |= Load8(a.data() + i) ^ Load8(b.data() + i);
  return (differ | (Load8(a.data() + size - 8) ^ Load8(b.data() + size - 8))) == 0;
}

// Whether the UTF-8 name `a` is the UTF-16 name `b`, for ASCII names (any
// other `a` answers false; the index settles those). Widening `a` beats
// narrowing `b`: a name just narrowed into a buffer is read back at other
// widths than it was written, which stalls the load.
inline bool SameWideName(std::string_view a, std::u16string_view b) {
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

inline std::uint64_t Hash(std::string_view name) {
  const char* p = name.data();
  const std::size_t size = name.size();
  std::uint64_t hash = size;
  if (size >= 8) {
    std::size_t i = 0;
    for (; i + 8 < size; i += 8) hash = Mix(hash, Load8(p + i));
    return Mix(hash, Load8(p + size - 8));  // the last word, overlapping the one before
  }
  std::uint64_t tail = 0;
  for (std::size_t i = 0; i < size; ++i) tail = tail << 8 | static_cast<unsigned char>(p[i]);
  return Mix(hash, tail);
}

// The hashes of the personal names, computed once.
const std::array<std::uint64_t, NIniFileKeyMap::kFixedCount>& FixedHashes() {
  static const std::array<std::uint64_t, NIniFileKeyMap::kFixedCount> hashes = [] {
    std::array<std::uint64_t, NIniFileKeyMap::kFixedCount> h{};
    for (std::size_t i = 0; i < NIniFileKeyMap::kFixedCount; ++i) h[i] = Hash(NIniFileKeyMap::kFixedNames[i]);
    return h;
  }();
  return hashes;
}

}  // namespace

NIniFileKeyMap::NIniFileKeyMap() : m_index(64, 0) {
  // The personal names share the index with the others, so that a lookup
  // is one probe sequence whatever the name.
  const auto& hashes = FixedHashes();
  for (std::size_t i = 0; i < kFixedCount; ++i) {
    m_fixed[i].m_name = kFixedNames[i].data();
    m_fixed[i].m_nameSize = static_cast<std::uint32_t>(kFixedNames[i].size());
    Place(hashes[i], static_cast<std::uint32_t>(i));
  }
}

NIniFileKeyMap::~NIniFileKeyMap() {
  for (Element& e : m_fixed) Destroy(e);
  for (Element& e : m_free) Destroy(e);
}

void NIniFileKeyMap::Destroy(Element& element) {
  if (!element.m_data) return;
  // Values made in the arena only borrow their bytes (they are replaced,
  // never changed), so they have nothing to free: the arena goes with the
  // table.
  if (element.m_heap) delete element.m_data;
  element.m_data = nullptr;
  element.m_heap = false;
}

int NIniFileKeyMap::FixedIndex(std::string_view name) {
  for (std::size_t i = 0; i < kFixedCount; ++i) {
    if (kFixedNames[i] == name) return static_cast<int>(i);
  }
  return -1;
}

void NIniFileKeyMap::Place(std::uint64_t hash, std::uint32_t position) {
  const std::size_t mask = m_index.size() - 1;
  std::size_t slot = hash & mask;
  while (m_index[slot] != 0) slot = (slot + 1) & mask;
  m_index[slot] = position + 1;
}

std::string_view NIniFileKeyMap::AdoptText(std::string text) {
  if (m_blocks.empty()) m_nextBlock = ArenaSize(text.size());
  const std::size_t expected = m_free.size() + ExpectedRecords(text.size());
  if (expected > m_free.capacity()) m_free.reserve(expected);
  if (IndexCapacity(kFixedCount + expected) > m_index.size()) Rebuild(IndexCapacity(kFixedCount + expected));
  std::string& kept = m_texts.at(m_textCount++);
  kept = std::move(text);
  return kept;
}

void* NIniFileKeyMap::AllocateBlock(std::size_t size, std::size_t alignment) {
  const std::size_t block = std::max({m_nextBlock, size + alignment, std::size_t{512}});
  m_blocks.push_back(std::unique_ptr<char[]>(new char[block]));
  m_cursor = m_blocks.back().get();
  m_left = block;
  m_nextBlock = block * 2;
  return Allocate(size, alignment);
}

NIniFileKeyMap::Element* NIniFileKeyMap::Lookup(std::string_view name, std::uint64_t hash) {
  const std::size_t mask = m_index.size() - 1;
  for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
    const std::uint32_t entry = m_index[slot];
    if (entry == 0) return nullptr;
    Element& element = At(entry - 1);
    if (SameName(element.Name(), name)) return &element;
  }
}

NIniFileKeyMap::Utf8Name::Utf8Name(std::u16string_view name) {
  if (name.size() <= sizeof m_small) {
    char16_t any = 0;
    for (std::size_t i = 0; i < name.size(); ++i) {
      any |= name[i];
      m_small[i] = static_cast<char>(name[i]);
    }
    if (any < 0x80) {
      m_view = std::string_view(m_small, name.size());
      return;
    }
  }
  m_large = NUnicodeString(name).ToUtf8();
  m_view = m_large;
}

const NIniFileKeyMap::Element* NIniFileKeyMap::Find(std::string_view name) const {
  if (m_hint < ElementCount()) {
    const Element& next = ElementAt(m_hint);
    if (SameName(next.Name(), name)) {
      ++m_hint;
      return &next;
    }
  }
  // The same name again: a binary is read for its length, then its bytes.
  if (m_hint > 0 && m_hint <= ElementCount()) {
    const Element& last = ElementAt(m_hint - 1);
    if (SameName(last.Name(), name)) return &last;
  }
  return FindIndexed(name);
}

const NIniFileKeyMap::Element* NIniFileKeyMap::Find(std::u16string_view name) const {
  if (m_hint < ElementCount()) {
    const Element& next = ElementAt(m_hint);
    if (SameWideName(next.Name(), name)) {
      ++m_hint;
      return &next;
    }
  }
  if (m_hint > 0 && m_hint <= ElementCount()) {
    const Element& last = ElementAt(m_hint - 1);
    if (SameWideName(last.Name(), name)) return &last;
  }
  return FindIndexed(Utf8Name(name).View());
}

const NIniFileKeyMap::Element* NIniFileKeyMap::FindIndexed(std::string_view name) const {
  const Element* found = const_cast<NIniFileKeyMap*>(this)->Lookup(name, Hash(name));
  // A personal name leaves the hint where it was: files hold those names
  // first, apart from the others, while records declare them among the rest.
  if (found && !IsPersonal(*found)) m_hint = static_cast<std::size_t>(found - m_free.data()) + kFixedCount + 1;
  return found;
}

void NIniFileKeyMap::Rebuild(std::size_t capacity) {
  std::size_t size = 64;
  while (size < capacity) size *= 2;
  m_index.assign(size, 0);
  const auto& hashes = FixedHashes();
  for (std::size_t i = 0; i < kFixedCount; ++i) Place(hashes[i], static_cast<std::uint32_t>(i));
  for (std::size_t i = 0; i < m_free.size(); ++i) {
    Place(Hash(m_free[i].Name()), static_cast<std::uint32_t>(kFixedCount + i));
  }
}

NIniFileKeyMap::Element& NIniFileKeyMap::Append(std::string_view name, bool copyName) {
  Element element;
  if (copyName) {
    m_ownedNames.push_back(std::make_unique<char[]>(name.size() + 1));
    std::memcpy(m_ownedNames.back().get(), name.data(), name.size());
    element.m_name = m_ownedNames.back().get();
  } else {
    element.m_name = name.data();
  }
  element.m_nameSize = static_cast<std::uint32_t>(name.size());
  m_free.push_back(element);
  return m_free.back();
}

NIniFileKeyMap::Element& NIniFileKeyMap::Insert(std::string_view name, std::uint64_t hash, bool copyName) {
  Append(name, copyName);
  if (IndexCapacity(ElementCount()) > m_index.size()) {
    Rebuild(IndexCapacity(ElementCount()) * 2);
  } else {
    Place(hash, static_cast<std::uint32_t>(ElementCount() - 1));
  }
  return m_free.back();
}

void NIniFileKeyMap::Put(std::string_view name, NIniFileData* data, bool heap, bool copyName, bool markChanged) {
  // One probe sequence finds the name or the free slot a new name takes.
  const std::uint64_t hash = Hash(name);
  const std::size_t mask = m_index.size() - 1;
  std::size_t slot = hash & mask;
  Element* element = nullptr;
  for (; m_index[slot] != 0; slot = (slot + 1) & mask) {
    Element& candidate = At(m_index[slot] - 1);
    if (SameName(candidate.Name(), name)) {
      element = &candidate;
      break;
    }
  }
  if (!element) {
    if (IndexCapacity(ElementCount() + 1) > m_index.size()) {
      element = &Insert(name, hash, copyName);
    } else {
      element = &Append(name, copyName);
      m_index[slot] = static_cast<std::uint32_t>(ElementCount());
    }
  }
  Destroy(*element);
  element->m_data = data;
  element->m_heap = heap;
  element->m_changed = element->m_changed || markChanged;
}

bool NIniFileKeyMap::Remove(std::string_view name, bool markChanged) {
  Element* element = Lookup(name, Hash(name));
  if (!element || !element->m_data) return false;
  Destroy(*element);
  element->m_changed = element->m_changed || markChanged;
  return true;
}

bool NIniFileKeyMap::HasFixedData() const {
  for (const Element& e : m_fixed) {
    if (e.m_data) return true;
  }
  return false;
}

bool NIniFileKeyMap::HasFixedChange() const {
  for (const Element& e : m_fixed) {
    if (e.m_changed) return true;
  }
  return false;
}

void NIniFileKeyMap::ClearChanges() {
  for (Element& e : m_fixed) e.m_changed = false;
  for (Element& e : m_free) e.m_changed = false;
}

std::size_t NIniFileKeyMap::ValueCount() const {
  std::size_t count = 0;
  ForEach([&count](const Element&) { ++count; });
  return count;
}
