#include "store/NIniFileKeyMap.h"

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

// Initial arena block: value objects take about half as many bytes as
// their text.
std::size_t ArenaSize(std::size_t textSize) { return textSize / 2 + 256; }

}  // namespace

NIniFileKeyMap::NIniFileKeyMap() {
  for (std::size_t i = 0; i < kFixedCount; ++i) m_fixed[i].name = kFixedNames[i];
}

NIniFileKeyMap::~NIniFileKeyMap() {
  for (Element& e : m_fixed) Destroy(e);
  for (Element& e : m_free) Destroy(e);
}

void NIniFileKeyMap::Destroy(Element& element) {
  if (!element.data) return;
  if (element.heap) {
    delete element.data;
  } else {
    element.data->~NIniFileData();  // the arena frees the memory with the table
  }
  element.data = nullptr;
  element.heap = false;
}

int NIniFileKeyMap::FixedIndex(std::string_view name) {
  // Every personal name is 7 to 33 bytes long and most names are not
  // personal: the length and first letter settle most lookups at once.
  if (name.size() < 7 || name.size() > 33) return -1;
  switch (name[0]) {
    case 'U': case 'P': case 'L': case 'S': case 'A': case 'M': case 'N': break;
    default: return -1;
  }
  for (std::size_t i = 0; i < kFixedCount; ++i) {
    if (kFixedNames[i] == name) return static_cast<int>(i);
  }
  return -1;
}

std::string_view NIniFileKeyMap::AdoptText(std::string text) {
  if (!m_arena) m_arena.emplace(ArenaSize(text.size()));
  m_texts.push_back(std::move(text));
  return m_texts.back();
}

void* NIniFileKeyMap::Allocate(std::size_t size, std::size_t alignment) {
  if (!m_arena) m_arena.emplace(ArenaSize(size));
  return m_arena->allocate(size, alignment);
}

NIniFileKeyMap::Element* NIniFileKeyMap::Lookup(std::string_view name) {
  if (const int fixed = FixedIndex(name); fixed >= 0) return &m_fixed[static_cast<std::size_t>(fixed)];
  if (m_index.empty()) return nullptr;
  const std::size_t mask = m_index.size() - 1;
  for (std::size_t slot = NHashBytes(name.data(), name.size()) & mask;; slot = (slot + 1) & mask) {
    const std::uint32_t entry = m_index[slot];
    if (entry == 0) return nullptr;
    Element& element = m_free[entry - 1];
    if (element.name == name) return &element;
  }
}

const NIniFileKeyMap::Element* NIniFileKeyMap::Find(std::string_view name) const {
  return const_cast<NIniFileKeyMap*>(this)->Lookup(name);
}

void NIniFileKeyMap::Grow() {
  std::vector<std::uint32_t> index(m_index.empty() ? 64 : m_index.size() * 2, 0);
  const std::size_t mask = index.size() - 1;
  for (std::size_t i = 0; i < m_free.size(); ++i) {
    const std::string_view name = m_free[i].name;
    std::size_t slot = NHashBytes(name.data(), name.size()) & mask;
    while (index[slot] != 0) slot = (slot + 1) & mask;
    index[slot] = static_cast<std::uint32_t>(i + 1);
  }
  m_index = std::move(index);
}

NIniFileKeyMap::Element& NIniFileKeyMap::Insert(std::string_view name, bool copyName) {
  if (copyName) {
    m_ownedNames.emplace_back(name);
    name = m_ownedNames.back();
  }
  // Keep the index at most half full.
  if ((m_free.size() + 1) * 2 > m_index.size()) {
    m_free.push_back(Element{name});
    Grow();
    return m_free.back();
  }
  m_free.push_back(Element{name});
  const std::size_t mask = m_index.size() - 1;
  std::size_t slot = NHashBytes(name.data(), name.size()) & mask;
  while (m_index[slot] != 0) slot = (slot + 1) & mask;
  m_index[slot] = static_cast<std::uint32_t>(m_free.size());
  return m_free.back();
}

void NIniFileKeyMap::Put(std::string_view name, NIniFileData* data, bool heap, bool copyName, bool markChanged) {
  Element* element = Lookup(name);
  if (!element) element = &Insert(name, copyName);
  Destroy(*element);
  element->data = data;
  element->heap = heap;
  element->changed = element->changed || markChanged;
}

bool NIniFileKeyMap::Remove(std::string_view name, bool markChanged) {
  Element* element = Lookup(name);
  if (!element || !element->data) return false;
  Destroy(*element);
  element->changed = element->changed || markChanged;
  return true;
}

bool NIniFileKeyMap::HasFixedData() const {
  for (const Element& e : m_fixed) {
    if (e.data) return true;
  }
  return false;
}

bool NIniFileKeyMap::HasFixedChange() const {
  for (const Element& e : m_fixed) {
    if (e.changed) return true;
  }
  return false;
}

void NIniFileKeyMap::ClearChanges() {
  for (Element& e : m_fixed) e.changed = false;
  for (Element& e : m_free) e.changed = false;
}

std::size_t NIniFileKeyMap::ValueCount() const {
  std::size_t count = 0;
  ForEach([&count](const Element&) { ++count; });
  return count;
}
