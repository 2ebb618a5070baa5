#include "store/NFindIgnoringCase.h"

#include <algorithm>

namespace {

void AppendName(NUnicodeString& path, std::u16string_view name, char16_t separator) {
  if (!path.empty() && path.back() != separator) path.push_back(separator);
  path += name;
}

bool IsExactly(const NFolderEntry& entry, std::span<const std::u16string_view> names) {
  return std::find(names.begin(), names.end(), std::u16string_view(entry.name)) != names.end();
}

}  // namespace

NStatus NListIgnoringCase(NPlatform& platform, std::u16string_view folder, std::span<const std::u16string_view> names,
                          std::vector<NFolderEntry>* matches) {
  matches->clear();
  std::vector<NFolderEntry> entries;
  if (NStatus status = platform.ListFolder(folder, &entries); !status) return status;
  for (NFolderEntry& entry : entries) {
    const bool matching = std::any_of(names.begin(), names.end(), [&entry](std::u16string_view name) {
      return NUnicodeString::CompareIgnoreCase(entry.name, name) == 0;
    });
    if (matching) matches->push_back(std::move(entry));
  }
  std::sort(matches->begin(), matches->end(), [names](const NFolderEntry& a, const NFolderEntry& b) {
    const bool exactA = IsExactly(a, names);
    const bool exactB = IsExactly(b, names);
    if (exactA != exactB) return exactA;
    return a.name < b.name;
  });
  return NStatus::Ok();
}

NStatus NFindKeyPath(NPlatform& platform, std::u16string_view root, const NKeyPath& path, std::u16string_view suffix,
                     NUnicodeString* found, NFolderListingCache* listings) {
  const char16_t separator = platform.PathSeparator();
  const std::vector<NUnicodeString>& names = path.Names();
  // Ends the walk at name `i`, whose path is `path`: the names after it are
  // added as spelled.
  auto stop = [&](std::size_t i, NUnicodeString rest, std::uint32_t code, const char* operation) {
    for (std::size_t j = i + 1; j < names.size(); ++j) AppendName(rest, names[j], separator);
    if (i + 1 < names.size()) rest += suffix;
    *found = std::move(rest);
    return NStatus::Error(code, operation, *found);
  };
  if (names.empty()) {
    *found = NUnicodeString(root);
    return NStatus::Ok();
  }
  // Usually only the last name is missing as spelled: one listing of the
  // folder it belongs in, reached without a link, settles it. Otherwise the
  // names are taken one by one.
  NUnicodeString parent(root);
  for (std::size_t i = 0; i + 1 < names.size(); ++i) AppendName(parent, names[i], separator);
  NFolderListingCache::Entries listed;
  NStatus status;
  if (listings) {
    status = listings->List(platform, parent, &listed);
  } else {
    auto entries = std::make_shared<std::vector<NFolderEntry>>();
    status = platform.ListFolderWithoutLinks(parent, entries.get());
    listed = std::move(entries);
  }
  if (status) {
    const std::vector<NFolderEntry>& entries = *listed;
    NUnicodeString leaf = names.back();
    leaf += suffix;
    const NPathKind wanted = suffix.empty() ? NPathKind::kFolder : NPathKind::kFile;
    const NFolderEntry* match = nullptr;
    for (const NFolderEntry& entry : entries) {
      if (entry.name == leaf) {
        match = &entry;
        break;
      }
      // The same choice among several spellings as NListIgnoringCase makes.
      if (entry.kind == wanted && NUnicodeString::CompareIgnoreCase(entry.name, leaf) == 0 &&
          (!match || entry.name < match->name)) {
        match = &entry;
      }
    }
    AppendName(parent, match ? std::u16string_view(match->name) : std::u16string_view(leaf), separator);
    *found = std::move(parent);
    if (!match) return NStatus::Error(NStatus::kFileNotFound, "find key", *found);
    if (wanted == NPathKind::kFolder && match->kind != NPathKind::kFolder) {
      return NStatus::Error(NStatus::kAccessDenied, "find key (not a folder)", *found);
    }
    return NStatus::Ok();
  }

  NUnicodeString at(root);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool leaf = i + 1 == names.size();
    NUnicodeString name = names[i];
    if (leaf) name += suffix;
    const NPathKind wanted = leaf && !suffix.empty() ? NPathKind::kFile : NPathKind::kFolder;

    NUnicodeString next = at;
    AppendName(next, name, separator);
    NPathKind kind = platform.GetPathKind(next);
    if (kind == NPathKind::kNone) {
      const std::u16string_view asked[] = {name};
      std::vector<NFolderEntry> matches;
      (void)NListIgnoringCase(platform, at, asked, &matches);  // an unlistable folder holds no match
      const auto match = std::find_if(matches.begin(), matches.end(),
                                      [wanted](const NFolderEntry& entry) { return entry.kind == wanted; });
      if (match == matches.end()) {
        // Nothing by any spelling: the rest is made as the key spells it.
        return stop(i, std::move(next), leaf ? NStatus::kFileNotFound : NStatus::kPathNotFound, "find key");
      }
      next = at;
      AppendName(next, match->name, separator);
      kind = match->kind;
    }
    if (wanted == NPathKind::kFolder && kind != NPathKind::kFolder) {
      return stop(i, std::move(next), NStatus::kAccessDenied, "find key (not a folder)");
    }
    at = std::move(next);
  }
  *found = std::move(at);
  return NStatus::Ok();
}
