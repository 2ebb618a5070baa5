#include "store/NIniFileKeyMap.h"

#include <cstring>

#include "base/NHash.h"

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

// Value objects take about half as many bytes as the text they come from,
// and a record takes about 36 bytes of text.
std::size_t ArenaSize(std::size_t textSize) { return textSize * 3 / 4 + 512; }
std::size_t ExpectedRecords(std::size_t textSize) { return textSize / 36 + 8; }

std::uint64_t Hash(std::string_view name) { return NHashBytes(name.data(), name.size()); }

// The personal names by hash: one probe settles nearly every lookup.
class FixedTable {
 public:
  FixedTable() {
    for (std::size_t i = 0; i < NIniFileKeyMap::kFixedCount; ++i) {
      const std::uint64_t hash = Hash(NIniFileKeyMap::kFixedNames[i]);
      std::size_t slot = hash & kMask;
      while (m_slots[slot].position) slot = (slot + 1) & kMask;
      m_slots[slot] = {hash, static_cast<int>(i + 1)};
    }
  }
  int Find(std::string_view name, std::uint64_t hash) const {
    for (std::size_t slot = hash & kMask; m_slots[slot].position; slot = (slot + 1) & kMask) {
      const Slot& s = m_slots[slot];
      if (s.hash == hash && NIniFileKeyMap::kFixedNames[static_cast<std::size_t>(s.position - 1)] == name) {
        return s.position - 1;
      }
    }
    return -1;
  }

 private:
  static constexpr std::size_t kMask = 63;
  struct Slot {
    std::uint64_t hash = 0;
    int position = 0;  // index + 1; 0 for an empty slot
  };
  std::array<Slot, kMask + 1> m_slots;
};

const FixedTable& Fixed() {
  static const FixedTable table;
  return table;
}

}  // namespace

NIniFileKeyMap::NIniFileKeyMap() {
  for (std::size_t i = 0; i < kFixedCount; ++i) {
    m_fixed[i].m_name = kFixedNames[i].data();
    m_fixed[i].m_nameSize = static_cast<std::uint32_t>(kFixedNames[i].size());
  }
}

NIniFileKeyMap::~NIniFileKeyMap() {
  for (Element& e : m_fixed) Destroy(e);
  for (Element& e : m_free) Destroy(e);
}

void NIniFileKeyMap::Destroy(Element& element) {
  if (!element.m_data) return;
  if (element.m_heap) {
    delete element.m_data;
  } else {
    element.m_data->~NIniFileData();  // the arena frees the memory with the table
  }
  element.m_data = nullptr;
  element.m_heap = false;
}

int NIniFileKeyMap::FixedIndex(std::string_view name) { return Fixed().Find(name, Hash(name)); }

std::string_view NIniFileKeyMap::AdoptText(std::string text) {
  if (!m_arena) m_arena.emplace(ArenaSize(text.size()));
  const std::size_t expected = m_free.size() + ExpectedRecords(text.size());
  if (expected > m_free.capacity()) m_free.reserve(expected);
  if (expected * 2 > m_index.size()) Rebuild(expected * 2);
  std::string& kept = m_texts.at(m_textCount++);
  kept = std::move(text);
  return kept;
}

void* NIniFileKeyMap::Allocate(std::size_t size, std::size_t alignment) {
  if (!m_arena) m_arena.emplace(ArenaSize(size));
  return m_arena->allocate(size, alignment);
}

NIniFileKeyMap::Element* NIniFileKeyMap::Lookup(std::string_view name, std::uint64_t hash) {
  if (const int fixed = Fixed().Find(name, hash); fixed >= 0) return &m_fixed[static_cast<std::size_t>(fixed)];
  if (m_index.empty()) return nullptr;
  const std::size_t mask = m_index.size() - 1;
  for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
    const std::uint32_t entry = m_index[slot];
    if (entry == 0) return nullptr;
    Element& element = m_free[entry - 1];
    if (element.Name() == name) return &element;
  }
}

const NIniFileKeyMap::Element* NIniFileKeyMap::Find(std::string_view name) const {
  return const_cast<NIniFileKeyMap*>(this)->Lookup(name, Hash(name));
}

void NIniFileKeyMap::Rebuild(std::size_t capacity) {
  std::size_t size = 64;
  while (size < capacity) size *= 2;
  std::vector<std::uint32_t> index(size, 0);
  const std::size_t mask = size - 1;
  for (std::size_t i = 0; i < m_free.size(); ++i) {
    std::size_t slot = Hash(m_free[i].Name()) & mask;
    while (index[slot] != 0) slot = (slot + 1) & mask;
    index[slot] = static_cast<std::uint32_t>(i + 1);
  }
  m_index = std::move(index);
}

NIniFileKeyMap::Element& NIniFileKeyMap::Insert(std::string_view name, std::uint64_t hash, bool copyName) {
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
  // Keep the index at most half full.
  if (m_free.size() * 2 > m_index.size()) {
    Rebuild(m_free.size() * 2);
    return m_free.back();
  }
  const std::size_t mask = m_index.size() - 1;
  std::size_t slot = hash & mask;
  while (m_index[slot] != 0) slot = (slot + 1) & mask;
  m_index[slot] = static_cast<std::uint32_t>(m_free.size());
  return m_free.back();
}

void NIniFileKeyMap::Put(std::string_view name, NIniFileData* data, bool heap, bool copyName, bool markChanged) {
  const std::uint64_t hash = Hash(name);
  Element* element = Lookup(name, hash);
  if (!element) element = &Insert(name, hash, copyName);
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
