#include "store/NIniFileKeyIterator.h"

#include <algorithm>

#include "location/NReportMessageRouter.h"
#include "platform/NPlatform.h"

namespace {

constexpr std::u16string_view kKeyFileSuffix = u".ini";

bool IsKeyFileName(std::u16string_view name) {
  return name.size() > kKeyFileSuffix.size() &&
         NUnicodeString::CompareIgnoreCase(name.substr(name.size() - kKeyFileSuffix.size()), kKeyFileSuffix) == 0;
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

NIniFileKey::Iterator::Iterator(NPlatform& platform, const NUnicodeString& folder) {
  std::vector<NFolderEntry> entries;
  if (NStatus status = platform.ListFolder(folder, &entries); !status) {
    std::u16string line = u"NIniFileKey::Iterator failed to open path ";
    line += folder;
    line += u"\n";
    NTrace(line);
    return;
  }
  for (NFolderEntry& entry : entries) {
    if (entry.kind == NPathKind::kFolder) {
      m_entries.push_back({NUnicodeString(std::move(entry.name)), kSubKeyFolder});
    } else if (entry.kind == NPathKind::kFile && IsKeyFileName(entry.name)) {
      entry.name.resize(entry.name.size() - kKeyFileSuffix.size());
      m_entries.push_back({NUnicodeString(std::move(entry.name)), kSubKeyFile});
    }
  }
  Sort();
}

NIniFileKey::Iterator::Iterator(const NIniFileKey& key) : m_key(&key) {
  key.Values().ForEach([this](const Map::Element& element) {
    m_entries.push_back(
        {NUnicodeString::FromUtf8(element.Name()), static_cast<std::uint32_t>(element.Data()->TypeTag())});
  });
  Sort();
}

void NIniFileKey::Iterator::Sort() {
  std::stable_sort(m_entries.begin(), m_entries.end(),
                   [](const Entry& a, const Entry& b) { return Compare(a.name, b.name) < 0; });
  // Entries equal under the order are one: a folder and a key file of the
  // same name make kind 7.
  std::vector<Entry> merged;
  merged.reserve(m_entries.size());
  for (Entry& entry : m_entries) {
    if (!merged.empty() && Compare(merged.back().name, entry.name) == 0) {
      if (merged.back().kind != entry.kind && merged.back().kind >= kSubKeyFolder && entry.kind >= kSubKeyFolder) {
        merged.back().kind = kSubKeyFolderAndFile;
      }
      continue;
    }
    merged.push_back(std::move(entry));
  }
  m_entries = std::move(merged);
}

bool NIniFileKey::Iterator::Next(NUnicodeString* name, std::uint32_t* kind) {
  while (m_next < m_entries.size()) {
    const Entry& entry = m_entries[m_next++];
    // A value deleted since the iterator was made is skipped; sub-keys are
    // reported as they were found.
    if (entry.kind < kSubKeyFolder && m_key) {
      if (m_key->Values().FindData(entry.name.ToUtf8()) == nullptr) continue;
    }
    *name = entry.name;
    *kind = entry.kind;
    return true;
  }
  return false;
}

bool NIniFileKey::Iterator::NextName(NUnicodeString* name) {
  std::uint32_t kind;
  return Next(name, &kind);
}
