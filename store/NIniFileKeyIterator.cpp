#include "store/NIniFileKeyIterator.h"

#include <algorithm>
#include <cstring>

#include "location/NReportMessageRouter.h"

namespace {

constexpr std::u16string_view kKeyFileSuffix = u".ini";

bool IsKeyFileName(std::u16string_view name) {
  return name.size() > kKeyFileSuffix.size() &&
         NUnicodeString::CompareIgnoreCase(name.substr(name.size() - kKeyFileSuffix.size()), kKeyFileSuffix) == 0;
}

// Eight bytes of a name from `at` on, zero past its end, with 'A'-'Z'
// folded to 'a'-'z', as a big-endian word: words compare as the bytes do.
// False when any of them is not plain ASCII.
bool FoldedWord(std::string_view name, std::size_t at, std::uint64_t* word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101ull;
  std::uint64_t bytes = 0;
  const std::size_t left = at < name.size() ? name.size() - at : 0;
  if (left >= 8) {
    std::memcpy(&bytes, name.data() + at, 8);
  } else if (name.size() >= 8) {
    // The name's last eight bytes, shifted down to its last `left`.
    std::memcpy(&bytes, name.data() + name.size() - 8, 8);
    bytes = left ? bytes >> (8 * (8 - left)) : 0;
  } else {
    for (std::size_t i = 0; i < left; ++i) bytes |= std::uint64_t{static_cast<unsigned char>(name[at + i])} << (8 * i);
  }
  if (bytes & kOnes * 0x80) return false;
  // A byte's high bit says whether it is at least 'A' and not above 'Z'
  // (no byte carries into the next, as all are below 0x80).
  const std::uint64_t upper = (bytes + kOnes * (0x80 - 'A')) & ~(bytes + kOnes * (0x80 - 'Z' - 1)) & kOnes * 0x80;
  *word = __builtin_bswap64(bytes | upper >> 2);
  return true;
}

}  // namespace

int NIniFileKey::Iterator::Compare(std::u16string_view a, std::u16string_view b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  if (const int prefix = NUnicodeString::CompareIgnoreCase(a.substr(0, shorter), b.substr(0, shorter)); prefix != 0) {
    return prefix;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

int NIniFileKey::Iterator::CompareUtf8(std::string_view a, std::string_view b) {
  // ASCII folds by itself, eight bytes at a time; anything else is compared
  // as UTF-16, the order's own terms (UTF-8 byte order differs from it above
  // the surrogates).
  const std::size_t longer = std::max(a.size(), b.size());
  for (std::size_t at = 0; at < longer; at += 8) {
    std::uint64_t x;
    std::uint64_t y;
    if (!FoldedWord(a, at, &x) || !FoldedWord(b, at, &y)) {
      return Compare(NUnicodeString::FromUtf8(a), NUnicodeString::FromUtf8(b));
    }
    if (x != y) return x < y ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

void NIniFileKey::Iterator::Add(std::string_view name, std::uint32_t kind, std::uint32_t position) {
  std::uint64_t prefix = 0;  // stays 0 for a name that is not plain ASCII
  (void)FoldedWord(name, 0, &prefix);
  m_entries.push_back({prefix, static_cast<std::uint32_t>(m_names.size()),
                       static_cast<std::uint32_t>(name.size()), kind, position});
  m_names.append(name);
}

int NIniFileKey::Iterator::CompareEntries(const Entry& a, const Entry& b) const {
  // Different plain prefixes settle the order at once; a NUL in a name makes
  // a prefix look padded, so equal prefixes are compared in full.
  if (a.prefix != 0 && b.prefix != 0 && a.prefix != b.prefix) return a.prefix < b.prefix ? -1 : 1;
  return CompareUtf8(NameOf(a), NameOf(b));
}

NIniFileKey::Iterator::Iterator(const NUnicodeString& folder, NStatus listed, std::vector<NFolderEntry> entries) {
  AddListed(folder, std::move(listed), std::move(entries));
}

void NIniFileKey::Iterator::AddListed(const NUnicodeString& folder, NStatus listed, std::vector<NFolderEntry> entries) {
  if (!listed) {
    std::u16string line = u"NIniFileKey::Iterator failed to open path ";
    line += folder;
    line += u"\n";
    NTrace(line);
    m_listStatus = std::move(listed);
    return;
  }
  m_entries.reserve(entries.size());
  for (NFolderEntry& entry : entries) {
    if (entry.kind == NPathKind::kFolder) {
      Add(NUnicodeString(std::move(entry.name)).ToUtf8(), kSubKeyFolder, 0);
    } else if (entry.kind == NPathKind::kFile && IsKeyFileName(entry.name)) {
      entry.name.resize(entry.name.size() - kKeyFileSuffix.size());
      Add(NUnicodeString(std::move(entry.name)).ToUtf8(), kSubKeyFile, 0);
    }
  }
  Sort();
}

NIniFileKey::Iterator::Iterator(NPlatform& platform, const NUnicodeString& folder) {
  std::vector<NFolderEntry> entries;
  NStatus listed = platform.ListFolder(folder, &entries);
  AddListed(folder, std::move(listed), std::move(entries));
}

NIniFileKey::Iterator::Iterator(const NIniFileKey& key) : m_key(&key), m_generation(key.TableGeneration()) {
  const Map& map = key.Values();
  m_entries.reserve(map.ElementCount());
  for (std::size_t i = 0; i < map.ElementCount(); ++i) {
    const Map::Element& element = map.ElementAt(i);
    if (element.Data()) {
      Add(element.Name(), static_cast<std::uint32_t>(element.Data()->TypeTag()), static_cast<std::uint32_t>(i));
    }
  }
  Sort();
}

void NIniFileKey::Iterator::Sort() {
  std::stable_sort(m_entries.begin(), m_entries.end(),
                   [this](const Entry& a, const Entry& b) { return CompareEntries(a, b) < 0; });
  // Entries equal under the order are one: a folder and a key file of the
  // same name make kind 7.
  std::size_t kept = 0;
  for (std::size_t i = 0; i < m_entries.size(); ++i) {
    const Entry& entry = m_entries[i];
    if (kept > 0 && CompareEntries(m_entries[kept - 1], entry) == 0) {
      Entry& last = m_entries[kept - 1];
      if (last.kind != entry.kind && last.kind >= kSubKeyFolder && entry.kind >= kSubKeyFolder) {
        last.kind = kSubKeyFolderAndFile;
      }
      continue;
    }
    m_entries[kept++] = entry;
  }
  m_entries.resize(kept);
}

bool NIniFileKey::Iterator::Next(NUnicodeString* name, std::uint32_t* kind) {
  while (m_next < m_entries.size()) {
    const Entry& entry = m_entries[m_next++];
    // A value deleted since the iterator was made is skipped; sub-keys are
    // reported as they were found.
    if (m_key) {
      const Map& map = m_key->Values();
      if (m_key->TableGeneration() != m_generation) {
        if (!map.FindData(NameOf(entry))) continue;  // reloaded meanwhile
      } else {
        if (!map.ElementAt(entry.position).Data()) continue;
        map.ExpectLookupAt(entry.position);
      }
    }
    name->AssignUtf8(NameOf(entry));
    *kind = entry.kind;
    return true;
  }
  return false;
}

bool NIniFileKey::Iterator::NextName(NUnicodeString* name) {
  std::uint32_t kind;
  return Next(name, &kind);
}
