#include "config/NSessionPath.h"
#include "config/NSessionTree.h"

#include <memory>

#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NKeyPath.h"
#include "store/NProfileValueType.h"

bool NSessionTree::IsFolderData(std::u16string_view name) {
  const std::size_t length = kFolderDataMarker.size();
  for (std::size_t at = 0; at + length <= name.size(); ++at) {
    if (NUnicodeString::CompareIgnoreCase(name.substr(at, length), kFolderDataMarker) == 0) return true;
  }
  return false;
}

bool NSessionTree::Listed(const NProfileKeyIterator& children, NReportMessageParams& params) {
  const auto* ini = dynamic_cast<const NIniFileKey::Iterator*>(&children);
  if (!ini || ini->ListStatus() || ini->ListStatus().IsNotFound()) return true;
  NReportStatus(ini->ListStatus(), params);
  return false;
}

bool NSessionTree::Walk(const Visitor& visit, NReportMessageParams& params) {
  m_stopped = false;
  // Checked first: listing a missing folder would be logged as a failure.
  if (!m_root.SubKeyExists(kSessionsKey)) return true;
  NReportMessageParams why;
  std::unique_ptr<NProfileKey> sessions = m_root.OpenSubKey(kSessionsKey, why);
  if (!sessions) {
    params = why;
    return false;
  }
  return WalkFolder(*sessions, NUnicodeString(), visit, params);
}

bool NSessionTree::WalkFolder(NProfileKey& folder, const NUnicodeString& prefix, const Visitor& visit,
                              NReportMessageParams& params) {
  std::unique_ptr<NProfileKeyIterator> children = folder.CreateIterator(false);
  if (children && !Listed(*children, params)) return false;
  NUnicodeString name;
  std::uint32_t kind = 0;
  while (children && children->Next(&name, &kind)) {
    if (IsFolderData(name)) continue;
    NSessionTreeEntry entry;
    entry.path = NJoinSessionPath(prefix, name);
    if (!NKeyPath::IsValidName(name)) {
      // A file or folder that no key can be named by ("name." on POSIX) is
      // not part of the tree.
      NTrace(u"NSessionTree: skipped " + entry.path + u": not a key name\n");
      continue;
    }
    std::unique_ptr<NProfileKey> child;
    if (kind != kSubKeyFolder) {
      NReportMessageParams why;
      child = folder.OpenSubKey(name, why);
      if (!child) {
        params = why;
        return false;
      }
      std::uint32_t ignored = 0;
      entry.isSession = child->GetDwordValue(kIsSessionValue, &ignored);
      entry.key = child.get();
    }
    if (!visit(entry)) {
      m_stopped = true;
      return false;
    }
    // A session's sub-keys are its own business; a key with a file and no
    // folder has nothing beneath it.
    if (entry.isSession || kind == kSubKeyFile) continue;
    if (!child && kind == kSubKeyFolder) {
      // Known to have no file: nothing to load, and no search for one by case.
      if (auto* ini = dynamic_cast<NIniFileKey*>(&folder)) child = ini->OpenFolderSubKey(name);
    }
    if (!child) {
      NReportMessageParams why;
      child = folder.OpenSubKey(name, why);
      if (!child) {
        params = why;
        return false;
      }
    }
    if (!WalkFolder(*child, entry.path, visit, params)) return false;
  }
  return true;
}
