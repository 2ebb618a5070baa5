#pragma once

#include <functional>
#include <string_view>

#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"
#include "store/NProfileKey.h"

// One key of the sessions tree as the walk reports it.
struct NSessionTreeEntry {
  // The key's path relative to "Sessions", names separated by "\".
  NUnicodeString path;
  // A key from which the DWORD "Is Session" can be read (whatever its value).
  bool isSession = false;
  // The key as the walk opened it to look for "Is Session", valid during the
  // visit only; null for a folder that has no file of its own.
  NProfileKey* key = nullptr;
};

// Walks the tree under the key "Sessions" of a root key, depth first, each
// folder's children in the store's sub-key order; a folder is reported
// before what it holds. A child whose name contains "__FolderData__" (in any
// case: key names match without case) holds a folder's own settings and is
// skipped. A child with "Is Session" is a session, and what lies beneath it
// is not walked; any other child is a folder and is walked to every depth,
// even when it has a file of its own holding other values.
//
// Only a key with a file of its own can hold "Is Session", so a sub-key that
// is a folder alone (kind 5) is taken for a folder without reading anything;
// every other key is loaded to read it, and dropped after its visit. Hand the
// walk a root key of a store without a private root when names and kinds are
// all that is needed: "Is Session" lives in the main file.
class NSessionTree {
 public:
  static constexpr std::u16string_view kSessionsKey = u"Sessions";
  static constexpr std::u16string_view kFolderDataMarker = u"__FolderData__";
  static constexpr std::u16string_view kIsSessionValue = u"Is Session";

  // Receives each entry; false stops the walk.
  using Visitor = std::function<bool(const NSessionTreeEntry& entry)>;

  // `root` must outlive the tree.
  explicit NSessionTree(NProfileKey& root) : m_root(root) {}

  // True when every entry was reported: a missing "Sessions" is an empty
  // tree. False when the visitor stopped the walk (Stopped(), params
  // untouched) or a key could not be read or listed (params say why).
  bool Walk(const Visitor& visit, NReportMessageParams& params);

  bool Stopped() const { return m_stopped; }

  // Whether `name` marks a folder's own settings key.
  static bool IsFolderData(std::u16string_view name);

  // Whether a sub-key iterator could list its folder: a folder that the
  // store failed to list would look empty, and a walk that skipped it
  // silently would seem complete. False with the reason when it failed; a
  // folder that does not exist is empty.
  static bool Listed(const NProfileKeyIterator& children, NReportMessageParams& params);

 private:
  bool WalkFolder(NProfileKey& folder, const NUnicodeString& prefix, const Visitor& visit,
                  NReportMessageParams& params);

  NProfileKey& m_root;
  bool m_stopped = false;
};
