#include "store/NIniFileKeyMap.h"

#include <algorithm>
#include <cstring>
#include <new>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "base/NUnicodeString.h"
#include "store/NNameIndex.h"
#include "store/NIniRecordReader.h"


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

// For loops where names rarely need comparing: keeps their bodies small,
// so that more of their iterations overlap.
[[gnu::noinline]] bool SameNameOutOfLine(std::string_view a, std::string_view b) { return SameName(a, b); }

// A name is hashed 16 bytes at a time, each chunk mixed on its own (with
// its offset, so that equal chunks do not cancel) and the results combined:
// the multiplies do not wait for one another. The last chunk overlaps the
// one before; names under 16 bytes take two overlapping words.
constexpr std::uint64_t kLowKey = 0x8ebc6af09c88c6e3ull;
constexpr std::uint64_t kHighKey = 0x589965cc75374cc3ull;

inline std::uint64_t HashWords(std::uint64_t low, std::uint64_t high, std::size_t offset) {
  return Mix(low ^ kLowKey ^ offset, high ^ kHighKey);
}

// Where the two chunks of a name of 8 to 32 bytes begin: the first chunk's
// second word and the last chunk (offsets chosen by selects rather than
// branches, as lengths vary from name to name and either side of 16 about
// equally). Under 16 bytes both chunks are the same two overlapping words,
// told apart by their offsets.
inline std::size_t SecondWord(std::size_t size) { return size < 16 ? size - 8 : 8; }
inline std::size_t LastChunk(std::size_t size) { return size < 16 ? 0 : size - 16; }
constexpr std::size_t kLastChunkOffset = 32;

inline std::uint64_t Hash(std::string_view name) {
  const char* p = name.data();
  const std::size_t size = name.size();
  if (size - 8 <= 24) {
    const std::size_t last = LastChunk(size);
    return size ^ HashWords(Load8(p), Load8(p + SecondWord(size)), 0) ^
           HashWords(Load8(p + last), Load8(p + size - 8), last + kLastChunkOffset);
  }
  if (size > 32) {
    std::uint64_t hash = size ^ HashWords(Load8(p + size - 16), Load8(p + size - 8), size - 16);
    for (std::size_t i = 0; i + 16 < size; i += 16) hash ^= HashWords(Load8(p + i), Load8(p + i + 8), i);
    return hash;
  }
  std::uint64_t tail = 0;
  for (std::size_t i = 0; i < size; ++i) tail = tail << 8 | static_cast<unsigned char>(p[i]);
  return HashWords(tail, size, size);
}

// Hash() of the UTF-8 form of an ASCII name given in UTF-16, without
// converting it first; false for any other name.
inline bool HashWide(std::u16string_view name, std::uint64_t* hash) {
  const char16_t* p = name.data();
  const std::size_t size = name.size();
#if defined(__SSE2__)
  if (size >= 8) {
    // Sixteen units narrowed to the bytes Hash() reads as two words.
    __m128i any = _mm_setzero_si128();
    auto chunk = [&](std::size_t low, std::size_t high, std::size_t offset) {
      const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + low));
      const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + high));
      any = _mm_or_si128(any, _mm_or_si128(first, second));
      const __m128i bytes = _mm_packus_epi16(first, second);
      return HashWords(static_cast<std::uint64_t>(_mm_cvtsi128_si64(bytes)),
                       static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(bytes, bytes))), offset);
    };
    std::uint64_t h;
    if (size <= 32) {
      const std::size_t last = LastChunk(size);
      h = size ^ chunk(0, SecondWord(size), 0) ^ chunk(last, size - 8, last + kLastChunkOffset);
    } else {
      h = size ^ chunk(size - 16, size - 8, size - 16);
      for (std::size_t i = 0; i + 16 < size; i += 16) h ^= chunk(i, i + 8, i);
    }
    const __m128i high = _mm_and_si128(any, _mm_set1_epi16(static_cast<short>(0xFF80)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF) return false;
    *hash = h;
    return true;
  }
#endif
  // Narrowed into a buffer: for short names, and where there is no SSE2.
  char bytes[64];
  if (size > sizeof bytes) return false;
  char16_t any = 0;
  for (std::size_t i = 0; i < size; ++i) {
    any |= p[i];
    bytes[i] = static_cast<char>(p[i]);
  }
  if (any >= 0x80) return false;
  *hash = Hash(std::string_view(bytes, size));
  return true;
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

NIniFileKeyMap::NIniFileKeyMap() {
  for (std::size_t i = 0; i < kFixedCount; ++i) {
    m_fixed[i].m_name = kFixedNames[i].data();
    m_fixed[i].m_nameSize = static_cast<std::uint32_t>(kFixedNames[i].size());
  }
}

NIniFileKeyMap::~NIniFileKeyMap() {
  // A table only loaded holds nothing of its own to delete.
  if (m_heapValues != 0) {
    for (Element& e : m_fixed) Destroy(e);
    for (Element& e : m_free) Destroy(e);
  }
  while (m_lastBlock) {
    char* block = m_lastBlock;
    std::memcpy(&m_lastBlock, block, sizeof m_lastBlock);
    delete[] block;
  }
}

void NIniFileKeyMap::Destroy(Element& element) {
  if (!element.m_data) return;
  // Values made in the arena only borrow their bytes (they are replaced,
  // never changed), so they have nothing to free: the arena goes with the
  // table.
  if (element.m_heap) {
    delete element.m_data;
    --m_heapValues;
  }
  element.m_data = nullptr;
  element.m_heap = false;
}

int NIniFileKeyMap::FixedIndex(std::string_view name) {
  for (std::size_t i = 0; i < kFixedCount; ++i) {
    if (kFixedNames[i] == name) return static_cast<int>(i);
  }
  return -1;
}

std::string_view NIniFileKeyMap::AdoptText(std::string text, std::size_t skip) {
  const std::size_t records = ExpectedRecords(text.size());
  // The first text of a table still empty is filtered; a second one, or
  // one read into a table already changed, is indexed.
  const bool filter = m_textCount == 0 && m_free.empty() && m_index.Count() == 0;
  if (!m_lastBlock) {
    m_nextBlock = ArenaSize(text.size());
    if (filter) m_nextBlock += NNameFilter::WordsFor(kFixedCount + records) * sizeof(std::uint64_t);
  }
  const std::size_t expected = m_free.size() + records;
  if (expected > m_free.capacity()) m_free.reserve(expected);
  if (filter) {
    StartFilter(records);
  } else if (m_filtering || kFixedCount + expected > m_index.Limit()) {
    Rebuild(kFixedCount + expected);
  }
  std::string& kept = m_texts.at(m_textCount++);
  kept = std::move(text);
  return std::string_view(kept).substr(skip);
}

void NIniFileKeyMap::StartFilter(std::size_t records) {
  const std::size_t words = NNameFilter::WordsFor(kFixedCount + records);
  m_filter.Reset(static_cast<std::uint64_t*>(Allocate(words * sizeof(std::uint64_t), alignof(std::uint64_t))), words);
  for (const std::uint64_t hash : FixedHashes()) m_filter.Add(hash);
  m_filtering = true;
}

void* NIniFileKeyMap::AllocateBlock(std::size_t size, std::size_t alignment) {
  const std::size_t block = std::max({m_nextBlock, size + alignment, std::size_t{512}});
  // Each block begins with a link to the one before: no list of blocks to
  // allocate besides.
  char* memory = new char[kBlockLink + block];
  std::memcpy(memory, &m_lastBlock, sizeof m_lastBlock);
  m_lastBlock = memory;
  m_cursor = memory + kBlockLink;
  m_left = block;
  m_nextBlock = block * 2;
  return Allocate(size, alignment);
}

namespace {

NIniFileData* MakeDword(NIniFileKeyMap& map, std::uint32_t dword) {
  return new (map.Allocate(sizeof(NIniFileDataDword))) NIniFileDataDword(dword);
}

NIniFileData* MakeString(NIniFileKeyMap& map, std::string_view text) {
  return NIniFileDataString::Borrowing(map.Allocate(sizeof(NIniFileDataString)), text);
}

NIniFileData* MakeLoaded(NIniFileKeyMap& map, const NIniRecord& record) {
  switch (record.kind) {
    case 'D':
      return MakeDword(map, record.dword);
    case 'S':
      return MakeString(map, record.text);
    case 'Z':
      return NIniFileDataStringSz::Borrowing(map.Allocate(sizeof(NIniFileDataStringSz)), record.text, record.count);
    default: {  // 'B'
      void* bytes = map.Allocate(record.bytes.size() + 1, 1);
      std::memcpy(bytes, record.bytes.data(), record.bytes.size());
      return NIniFileDataBinary::Borrowing(map.Allocate(sizeof(NIniFileDataBinary)),
                                           std::string_view(static_cast<const char*>(bytes), record.bytes.size()));
    }
  }
}

}  // namespace

NIniFileKeyMap::ReadResult NIniFileKeyMap::ReadRecords(std::string_view text) {
  ReadResult result;
  NIniRecordReader reader(text);
  NIniRecord record;
  NIniRecordReader::Result next;
  // Records are appended as read and indexed a batch at a time: hashing
  // and probing in a loop of their own overlap far better than between the
  // branches of the parse.
  std::size_t batch = m_free.size();
  auto place = [this](std::size_t first) {
    if (m_filtering) {
      FilterFrom(first);
    } else {
      IndexFrom(first);
    }
  };
  auto add = [&](std::string_view name, NIniFileData* data) {
    Element element;
    element.m_name = name.data();
    element.m_nameSize = static_cast<std::uint32_t>(name.size());
    element.m_data = data;
    m_free.push_back(element);
    if (m_free.size() - batch == kBatch) {
      place(batch);
      batch = m_free.size();
    }
  };
  auto simple = [&](char kind, std::string_view name, std::uint32_t dword, std::string_view value) {
    if (name.empty()) return;  // discarded, as the format says
    add(name, kind == 'D' ? MakeDword(*this, dword) : MakeString(*this, value));
  };
  for (;;) {
    reader.ReadSimple(simple);
    if ((next = reader.Next(&record)) != NIniRecordReader::Result::kRecord) break;
    if (!record.name.empty()) add(record.name, MakeLoaded(*this, record));
  }
  place(batch);
  if (next == NIniRecordReader::Result::kInvalid) {
    result.invalidLine = reader.ProblemLine();
    result.problem = reader.Problem();
  }
  result.unterminated = reader.EndedWithoutLineEnd();
  return result;
}

void NIniFileKeyMap::IndexFrom(std::size_t first) {
  if (m_index.Count() == 0 || kFixedCount + m_free.size() > m_index.Limit()) {
    RebuildUpTo(kFixedCount + 2 * m_free.size(), first);
  }
  // The hashes first, in a loop of their own: they depend on nothing but
  // the names, so their multiplies overlap.
  std::uint64_t hashes[kBatch];
  const std::size_t count = m_free.size() - first;
  for (std::size_t i = 0; i < count; ++i) hashes[i] = Hash(m_free[first + i].Name());
  // Names are rarely read twice: until one is, every element stays where it
  // is. From the first repeat on, a repeated name gives its new data to the
  // element it already has and the later element goes, the table compacted
  // in the same pass.
  // The first loop is that common case alone, kept apart so that its body
  // stays small.
  Element* const elements = m_free.data();
  auto findOrInsert = [&](std::size_t i, std::size_t position) {
    return m_index.FindOrInsert(
        hashes[i],
        [this, name = elements[first + i].Name()](std::uint32_t at) { return SameNameOutOfLine(ElementAt(at).Name(), name); },
        static_cast<std::uint32_t>(kFixedCount + position));
  };
  std::size_t i = 0;
  while (i < count && findOrInsert(i, first + i) == NNameIndex::kNone) ++i;
  std::size_t kept = first + i;
  for (; i < count; ++i) {
    const std::uint32_t found = findOrInsert(i, kept);
    if (found == NNameIndex::kNone) {
      elements[kept++] = elements[first + i];
      continue;
    }
    Element& earlier = At(found);
    Destroy(earlier);
    earlier.m_data = elements[first + i].m_data;
  }
  m_free.resize(kept);
}

void NIniFileKeyMap::FilterFrom(std::size_t first) {
  std::uint64_t hashes[kBatch];
  const std::size_t count = m_free.size() - first;
  for (std::size_t i = 0; i < count; ++i) hashes[i] = Hash(m_free[first + i].Name());
  // As in IndexFrom, elements stay where they are until a name may repeat
  // one before it. A personal name gives its data to its fixed element. Any
  // other such name is new if no name before it in the table has its hash,
  // which is known only in the table's first batch; otherwise, a repeat or
  // not, it hands the rest to the index.
  Element* const elements = m_free.data();
  std::size_t i = 0;
  while (i < count && !m_filter.Add(hashes[i])) ++i;
  std::size_t kept = first + i;
  while (i < count) {
    const Element& element = elements[first + i];
    const std::uint32_t fixed =
        FixedPosition(hashes[i], [name = element.Name()](std::uint32_t at) { return SameName(kFixedNames[at], name); });
    if (fixed != NNameIndex::kNone) {
      Destroy(m_fixed[fixed]);
      m_fixed[fixed].m_data = element.m_data;
    } else if (first == 0 && std::find(hashes, hashes + i, hashes[i]) == hashes + i) {
      elements[kept++] = element;
    } else {
      m_free.erase(m_free.begin() + static_cast<std::ptrdiff_t>(kept),
                   m_free.begin() + static_cast<std::ptrdiff_t>(first + i));
      IndexFrom(kept);
      return;
    }
    for (++i; i < count && !m_filter.Add(hashes[i]); ++i) elements[kept++] = elements[first + i];
  }
  m_free.resize(kept);
}

template <typename Same>
std::uint32_t NIniFileKeyMap::FixedPosition(std::uint64_t hash, Same&& same) {
  const auto& hashes = FixedHashes();
  for (std::uint32_t i = 0; i < kFixedCount; ++i) {
    if (hashes[i] == hash && same(i)) return i;
  }
  return NNameIndex::kNone;
}

template <typename Same>
std::uint32_t NIniFileKeyMap::Locate(std::uint64_t hash, Same&& same) const {
  // While filtering, a name the filter never saw is not in the table, and a
  // personal name is found without the index.
  if (m_filtering) {
    if (!m_filter.MayHold(hash)) return NNameIndex::kNone;
    const std::uint32_t fixed = FixedPosition(hash, same);
    if (fixed != NNameIndex::kNone) return fixed;
    // Without the index, the elements are searched in full, from a little
    // before the hint: a host reads in about the order it saved in, so
    // the name is mostly a few places away, and the names are unique, so
    // the first match is the one. The searches may compare a few times as
    // many names as the table holds, about what building the index costs;
    // then the index is built.
    const std::size_t end = ElementCount();
    if (m_scanned + end <= kScanRounds * end) {
      const std::size_t start = std::min(std::max(m_hint, kFixedCount + kScanBack) - kScanBack, end);
      auto scan = [&](std::size_t from, std::size_t to) {
        for (std::size_t at = from; at < to; ++at) {
          if (same(static_cast<std::uint32_t>(at))) {
            m_scanned += at - from + 1;
            return static_cast<std::uint32_t>(at);
          }
        }
        m_scanned += to - from;
        return NNameIndex::kNone;
      };
      const std::uint32_t found = scan(start, end);
      return found != NNameIndex::kNone ? found : scan(kFixedCount, start);
    }
  }
  // A key without a file holds the personal names alone: no index for them.
  if (m_free.empty() && m_index.Count() == 0) return FixedPosition(hash, same);
  return Index().Find(hash, same);
}

NIniFileKeyMap::Element* NIniFileKeyMap::Lookup(std::string_view name, std::uint64_t hash) const {
  const std::uint32_t position = Locate(hash, [&](std::uint32_t at) { return SameName(ElementAt(at).Name(), name); });
  return position == NNameIndex::kNone ? nullptr : const_cast<Element*>(&ElementAt(position));
}

NIniFileKeyMap::Element* NIniFileKeyMap::LookupWide(std::u16string_view name, std::uint64_t hash) const {
  const std::uint32_t position =
      Locate(hash, [&](std::uint32_t at) { return SameWideName(ElementAt(at).Name(), name); });
  return position == NNameIndex::kNone ? nullptr : const_cast<Element*>(&ElementAt(position));
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
  return Hinted(Lookup(name, Hash(name)));
}

const NIniFileKeyMap::Element* NIniFileKeyMap::FindAfterHint(std::u16string_view name) const {
  if (m_hint < kFixedCount) {
    const Element& next = m_fixed[m_hint];
    if (SameWideName(next.Name(), name)) {
      ++m_hint;
      return &next;
    }
  }
  if (m_hint > 0 && m_hint <= ElementCount()) {
    const Element& last = ElementAt(m_hint - 1);
    if (SameWideName(last.Name(), name)) return &last;
  }
  // Where reading was before it stepped back for a value saved out of turn.
  if (m_resume >= kFixedCount && m_resume < ElementCount() && SameWideName(ElementAt(m_resume).Name(), name)) {
    const Element& resumed = ElementAt(m_resume);
    m_hint = m_resume + 1;
    m_resume = 0;
    return &resumed;
  }
  // An ASCII name is hashed as it stands; any other is converted first.
  std::uint64_t hash;
  if (HashWide(name, &hash)) return Hinted(LookupWide(name, hash));
  const Utf8Name utf8(name);
  return Hinted(Lookup(utf8.View(), Hash(utf8.View())));
}

const NIniFileKeyMap::Element* NIniFileKeyMap::Hinted(const Element* found) const {
  // A personal name leaves the hint where it was: files hold those names
  // first, apart from the others, while records declare them among the rest.
  if (found && !IsPersonal(*found)) {
    const std::size_t next = static_cast<std::size_t>(found - m_free.data()) + kFixedCount + 1;
    if (next < m_hint) m_resume = m_hint;
    m_hint = next;
  }
  return found;
}

const NNameIndex& NIniFileKeyMap::Index() const {
  if (m_index.Count() == 0) Rebuild(kFixedCount + 42);
  return m_index;
}

void NIniFileKeyMap::Rebuild(std::size_t positions) const { RebuildUpTo(positions, m_free.size()); }

void NIniFileKeyMap::RebuildUpTo(std::size_t positions, std::size_t freeCount) const {
  m_filtering = false;  // the index answers from now on, names set later included
  m_index.Reset(std::max(positions, kFixedCount + freeCount + 1));
  const auto& hashes = FixedHashes();
  for (std::size_t i = 0; i < kFixedCount; ++i) m_index.Insert(hashes[i], static_cast<std::uint32_t>(i));
  for (std::size_t i = 0; i < freeCount; ++i) {
    m_index.Insert(Hash(m_free[i].Name()), static_cast<std::uint32_t>(kFixedCount + i));
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

void NIniFileKeyMap::Put(std::string_view name, NIniFileData* data, bool heap, bool copyName, bool markChanged) {
  if (m_index.Count() == 0 || !m_index.HasRoom()) Rebuild(2 * ElementCount());
  // One probe finds the name or places the new element that takes it.
  const std::uint32_t next = static_cast<std::uint32_t>(ElementCount());
  const std::uint32_t found =
      m_index.FindOrInsert(Hash(name), [&](std::uint32_t at) { return SameName(ElementAt(at).Name(), name); }, next);
  Element& element = found == NNameIndex::kNone ? Append(name, copyName) : At(found);
  Destroy(element);
  element.m_data = data;
  element.m_heap = heap;
  if (heap) ++m_heapValues;
  element.m_changed = element.m_changed || markChanged;
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
