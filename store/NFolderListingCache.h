#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/NUnicodeString.h"
#include "platform/NPlatform.h"

// Listings of folders, kept while the folders do not change, for the search
// of a key by case: a key missing from a folder whose entries are as they
// were at the last listing costs one look at the folder rather than a
// listing. Hosts look for absent keys ("QuickSync" beside "Global") at each
// load, and keys are rewritten in place, so their folders rarely change.
//
// A listing is taken again whenever the folder's stamp differs from the
// one taken before that listing, or that stamp was not yet settled. Where
// the platform gives no stamps every call lists. Thread-safe.
class NFolderListingCache {
 public:
  using Entries = std::shared_ptr<const std::vector<NFolderEntry>>;

  // Folders kept at most; past that the oldest listings are dropped.
  explicit NFolderListingCache(std::size_t capacity = 256) : m_capacity(capacity > 0 ? capacity : 1) {}
  NFolderListingCache(const NFolderListingCache&) = delete;
  NFolderListingCache& operator=(const NFolderListingCache&) = delete;

  // The entries of `folder`, reached without a symbolic link, as
  // NPlatform::ListFolderWithoutLinks gives them.
  NStatus List(NPlatform& platform, std::u16string_view folder, Entries* entries);

  // Whether `folder` is known to hold no entry called `name` in any case:
  // it was listed, and has not changed since. Costs one look at the folder
  // when it was listed, none otherwise (false: not known).
  bool KnownMissing(NPlatform& platform, std::u16string_view folder, std::u16string_view name);

 private:
  struct Listing {
    NFolderStamp stamp;
    Entries entries;
    // The entries' names, for a lookup without case.
    std::unordered_set<std::u16string_view, NIgnoreCaseHash, NIgnoreCaseEqual> names;
    std::uint64_t age = 0;
  };

  // Looks folders up by view, so that a look allocates nothing.
  struct PathHash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view path) const noexcept { return std::hash<std::u16string_view>()(path); }
  };

  std::size_t m_capacity;
  std::mutex m_mutex;
  std::unordered_map<std::u16string, Listing, PathHash, std::equal_to<>> m_listings;
  std::uint64_t m_clock = 0;
};
