#include "store/NFolderListingCache.h"

#include <algorithm>

NStatus NFolderListingCache::List(NPlatform& platform, std::u16string_view folder, Entries* entries) {
  NFolderStamp stamp;
  const bool stamped = platform.GetFolderStamp(folder, &stamp);
  if (stamped) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (const auto it = m_listings.find(folder); it != m_listings.end() && it->second.stamp == stamp) {
      it->second.age = ++m_clock;
      *entries = it->second.entries;
      return NStatus::Ok();
    }
  }
  // Stamped before listing: a change meanwhile leaves the stamp behind, so
  // the next look lists again.
  auto listed = std::make_shared<std::vector<NFolderEntry>>();
  if (NStatus status = platform.ListFolderWithoutLinks(folder, listed.get()); !status) return status;
  *entries = listed;
  if (!stamped) return NStatus::Ok();
  std::lock_guard<std::mutex> lock(m_mutex);
  const auto known = m_listings.find(folder);
  if (!stamp.Settled()) {
    if (known != m_listings.end()) m_listings.erase(known);
    return NStatus::Ok();
  }
  if (m_listings.size() >= m_capacity && known == m_listings.end()) {
    const auto oldest = std::min_element(m_listings.begin(), m_listings.end(),
                                         [](const auto& a, const auto& b) { return a.second.age < b.second.age; });
    m_listings.erase(oldest);
  }
  Listing& listing = known != m_listings.end() ? known->second : m_listings[std::u16string(folder)];
  listing.stamp = stamp;
  listing.names.clear();
  for (const NFolderEntry& entry : *listed) listing.names.insert(entry.name);
  listing.entries = std::move(listed);
  listing.age = ++m_clock;
  return NStatus::Ok();
}

bool NFolderListingCache::KnownMissing(NPlatform& platform, std::u16string_view folder, std::u16string_view name) {
  NFolderStamp listed;
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto it = m_listings.find(folder);
    if (it == m_listings.end() || it->second.names.count(name)) return false;
    listed = it->second.stamp;
  }
  NFolderStamp now;
  return platform.GetFolderStamp(folder, &now) && now == listed;
}
