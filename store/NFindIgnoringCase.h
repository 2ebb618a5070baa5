#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "base/NUnicodeString.h"
#include "platform/NPlatform.h"
#include "store/NFolderListingCache.h"
#include "store/NKeyPath.h"

// Finding the files of a key where the file system tells cases apart. Names
// that differ only in case name one key ("Global" is "global.ini"), as they
// do on Windows, so that a configuration folder copied from there works as
// it is. Callers try the path as spelled first and come here only when it
// is missing: listing a folder costs far more than opening a file.
//
// A symbolic link is never chosen by case, so no lookup leads out of the
// folder it starts in.

// The entries of `folder` whose names equal one of `names` without case:
// those spelled exactly as asked first, then the others in code-unit order,
// so that the choice among several spellings does not depend on the order
// the system lists them in.
NStatus NListIgnoringCase(NPlatform& platform, std::u16string_view folder, std::span<const std::u16string_view> names,
                          std::vector<NFolderEntry>* matches);

// The path under `root` of the key's folder (`suffix` empty) or file
// (`suffix` ".ini"). Each name is taken as spelled when that exists, else
// as the entry of the right kind that differs from it only in case.
//
// Ok: every name was found; *found is the path on disk.
// Not found: a name has no entry; *found is where the missing names would be
//   made: the names found as they are on disk, the rest as spelled.
// kAccessDenied: a folder on the way (or the key's folder itself, when
//   `suffix` is empty) is not a real folder but a link or a file.
//
// `listings`, when given, keeps the listing of the key's folder for the next
// search there.
NStatus NFindKeyPath(NPlatform& platform, std::u16string_view root, const NKeyPath& path, std::u16string_view suffix,
                     NUnicodeString* found, NFolderListingCache* listings = nullptr);
