#include "platform/NPlatform.h"

#include <chrono>

NStatus NPlatform::CreateFolderChain(std::u16string_view path, NFileSecurity security) {
  if (path.empty()) return NStatus::Error(NStatus::kPathNotFound, "CreateFolderChain", path);
  switch (GetPathKind(path)) {
    case NPathKind::kFolder:
      return NStatus::Ok();
    case NPathKind::kNone:
      break;
    default:
      return NStatus::Error(NStatus::kAlreadyExists, "CreateFolderChain", path);
  }
  const size_t cut = path.find_last_of(u"/\\");
  if (cut != std::u16string_view::npos && cut > 0) {
    std::u16string_view parent = path.substr(0, cut);
    // "C:" and "\\server\share" are roots, not folders to create.
    if (!(parent.size() == 2 && parent[1] == u':')) {
      if (NStatus status = CreateFolderChain(parent, security); !status) return status;
    }
  }
  NStatus status = CreateFolder(path, security);
  // Another process may have created it meanwhile.
  if (status.Code() == NStatus::kAlreadyExists && IsFolder(path)) return NStatus::Ok();
  return status;
}

bool NPlatform::GetFolderStamp(std::u16string_view, NFolderStamp*) { return false; }

std::uint64_t NPlatform::CurrentFileTime() {
  // Windows file times count 100 ns units from 1601-01-01; the system clock
  // counts from 1970-01-01.
  constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
  const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
  const auto units = std::chrono::duration_cast<std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>>(since1970);
  return kUnixEpochAsFileTime + static_cast<std::uint64_t>(units.count());
}

NStatus NPlatform::SyncFolder(std::u16string_view) { return NStatus::Ok(); }
