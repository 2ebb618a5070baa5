#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"

// Walks the sub-keys or the values of an INI key. The entries are collected
// when the iterator is made, ordered by name compared without case over the
// length of the shorter name (a name that is a prefix of another comes
// first); names that differ only in case are one entry.
//
// Sub-keys: a folder is kind 5, a file "<name>.ini" kind 6, both kind 7;
// other files are ignored. A folder that cannot be listed is logged and
// gives no entries. Values: each value with its type tag; a value deleted
// after the iterator was made is skipped, not reported.
//
// The key must outlive the iterator.
class NIniFileKey::Iterator final : public NProfileKeyIterator {
 public:
  // Over nothing.
  Iterator() = default;
  // Over nothing, because the sub-keys could not be listed.
  explicit Iterator(NStatus failure) : m_listStatus(std::move(failure)) {}
  // Over the sub-keys listed in `folder`, or over nothing when `listed`
  // says the listing failed.
  Iterator(const NUnicodeString& folder, NStatus listed, std::vector<NFolderEntry> entries);
  // Over the sub-keys in `folder`, listed here.
  Iterator(NPlatform& platform, const NUnicodeString& folder);
  // Over the values of `key`.
  explicit Iterator(const NIniFileKey& key);

  bool Next(NUnicodeString* name, std::uint32_t* kind) override;
  bool NextName(NUnicodeString* name) override;

  // Why the sub-keys could not be listed, in which case there are no
  // entries; ok otherwise. A missing folder (a key without sub-keys) is
  // not found.
  const NStatus& ListStatus() const { return m_listStatus; }

  // The iterator's order: negative, zero or positive.
  static int Compare(std::u16string_view a, std::u16string_view b);
  // The same order on UTF-8 names.
  static int CompareUtf8(std::string_view a, std::string_view b);

 private:
  // Names are kept as UTF-8 in one buffer; an entry is a slice of it.
  struct Entry {
    std::uint64_t prefix;  // the first 8 bytes folded, big-endian; 0 when not plain ASCII
    std::uint32_t offset;
    std::uint32_t size;
    std::uint32_t kind;
    std::uint32_t position;  // a value's place in the key's table
  };
  void AddListed(const NUnicodeString& folder, NStatus listed, std::vector<NFolderEntry> entries);
  int CompareEntries(const Entry& a, const Entry& b) const;
  void Add(std::string_view name, std::uint32_t kind, std::uint32_t position);
  std::string_view NameOf(const Entry& entry) const { return std::string_view(m_names).substr(entry.offset, entry.size); }
  void Sort();

  const NIniFileKey* m_key = nullptr;  // set for a value iterator
  std::uint64_t m_generation = 0;      // the key's table when the iterator was made
  std::string m_names;
  std::vector<Entry> m_entries;
  std::size_t m_next = 0;
  NStatus m_listStatus;
};
