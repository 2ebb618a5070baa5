#include "platform/testing/NFaultPlatform.h"

#include <iterator>
#include <utility>

namespace {

// The operation names the real platforms put in their errors, in the order
// of NFaultKind, so that a report from an injected failure reads like one
// from the system.
constexpr const char* kOperationNames[] = {"open", "read",          "write",         "truncate",   "reserve",
                                           "lock", "unlock",        "sync",          "stat",       "delete",
                                           "move", "create folder", "remove folder", "list folder"};
static_assert(std::size(kOperationNames) == kFaultKindCount);

NStatus Injected(const NFault& fault, NFaultKind kind, std::u16string_view path) {
  return NStatus::Error(fault.error, kOperationNames[static_cast<std::size_t>(kind)], path);
}

}  // namespace

class NFaultPlatform::NFaultFile final : public NFile {
 public:
  NFaultFile(NFaultPlatform& platform, std::unique_ptr<NFile> file, std::u16string path)
      : m_platform(platform), m_file(std::move(file)), m_path(std::move(path)) {}

  NStatus Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) override {
    if (auto fault = m_platform.Count(NFaultKind::kRead)) {
      *bytesRead = 0;
      return Injected(*fault, NFaultKind::kRead, m_path);
    }
    return m_file->Read(offset, buffer, size, bytesRead);
  }

  NStatus Write(std::uint64_t offset, const void* data, std::size_t size) override {
    auto fault = m_platform.Count(NFaultKind::kWrite);
    if (!fault) return m_file->Write(offset, data, size);
    if (fault->shortWrite && size / 2 > 0) {
      if (NStatus status = m_file->Write(offset, data, size / 2); !status) return status;
    }
    return Injected(*fault, NFaultKind::kWrite, m_path);
  }

  NStatus Truncate(std::uint64_t length) override {
    return Guarded(NFaultKind::kTruncate, [&] { return m_file->Truncate(length); });
  }
  NStatus Reserve(std::uint64_t length) override {
    return Guarded(NFaultKind::kReserve, [&] { return m_file->Reserve(length); });
  }
  NStatus Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind, std::chrono::milliseconds timeout) override {
    return Guarded(NFaultKind::kLock, [&] { return m_file->Lock(offset, length, kind, timeout); });
  }
  NStatus Unlock(std::uint64_t offset, std::uint64_t length) override {
    return Guarded(NFaultKind::kUnlock, [&] { return m_file->Unlock(offset, length); });
  }
  NStatus GetInfo(NFileInfo* info) override {
    return Guarded(NFaultKind::kGetInfo, [&] { return m_file->GetInfo(info); });
  }
  NStatus Sync() override {
    return Guarded(NFaultKind::kSync, [&] { return m_file->Sync(); });
  }

 private:
  template <typename Call>
  NStatus Guarded(NFaultKind kind, Call call) {
    if (auto fault = m_platform.Count(kind)) return Injected(*fault, kind, m_path);
    return call();
  }

  NFaultPlatform& m_platform;
  std::unique_ptr<NFile> m_file;
  std::u16string m_path;
};

void NFaultPlatform::Inject(std::optional<NFaultKind> kind, int n, const NFault& fault) {
  std::lock_guard lock(m_mutex);
  const int now = kind ? m_counts[static_cast<std::size_t>(*kind)] : m_total;
  m_injections.push_back({.kind = kind, .at = now + n, .fault = fault});
}

int NFaultPlatform::CallCount(NFaultKind kind) const {
  std::lock_guard lock(m_mutex);
  return m_counts[static_cast<std::size_t>(kind)];
}

int NFaultPlatform::TotalCalls() const {
  std::lock_guard lock(m_mutex);
  return m_total;
}

bool NFaultPlatform::Fired() const {
  std::lock_guard lock(m_mutex);
  return m_fired;
}

void NFaultPlatform::Reset() {
  std::lock_guard lock(m_mutex);
  m_counts.fill(0);
  m_total = 0;
  m_injections.clear();
  m_fired = false;
}

std::optional<NFault> NFaultPlatform::Count(NFaultKind kind) {
  std::lock_guard lock(m_mutex);
  const int count = ++m_counts[static_cast<std::size_t>(kind)];
  ++m_total;
  for (const NInjection& injection : m_injections) {
    if (injection.kind && *injection.kind != kind) continue;
    const int reached = injection.kind ? count : m_total;
    if (reached == injection.at || (injection.fault.sticky && reached > injection.at)) {
      m_fired = true;
      return injection.fault;
    }
  }
  return std::nullopt;
}

template <typename Call>
NStatus NFaultPlatform::Guarded(NFaultKind kind, std::u16string_view path, Call call) {
  if (auto fault = Count(kind)) return Injected(*fault, kind, path);
  return call();
}

NStatus NFaultPlatform::OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) {
  return Guarded(NFaultKind::kOpen, path, [&] {
    std::unique_ptr<NFile> opened;
    if (NStatus status = Target().OpenFile(path, options, &opened); !status) return status;
    *file = std::make_unique<NFaultFile>(*this, std::move(opened), std::u16string(path));
    return NStatus::Ok();
  });
}

NStatus NFaultPlatform::DeleteFile(std::u16string_view path) {
  return Guarded(NFaultKind::kDelete, path, [&] { return Target().DeleteFile(path); });
}

NStatus NFaultPlatform::MoveFile(std::u16string_view from, std::u16string_view to) {
  return Guarded(NFaultKind::kMove, from, [&] { return Target().MoveFile(from, to); });
}

NStatus NFaultPlatform::CreateFolder(std::u16string_view path, NFileSecurity security) {
  return Guarded(NFaultKind::kCreateFolder, path, [&] { return Target().CreateFolder(path, security); });
}

NStatus NFaultPlatform::RemoveFolder(std::u16string_view path) {
  return Guarded(NFaultKind::kRemoveFolder, path, [&] { return Target().RemoveFolder(path); });
}

NStatus NFaultPlatform::SyncFolder(std::u16string_view path) {
  return Guarded(NFaultKind::kSync, path, [&] { return Target().SyncFolder(path); });
}

NStatus NFaultPlatform::ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  return Guarded(NFaultKind::kListFolder, path, [&] { return Target().ListFolder(path, entries); });
}

NStatus NFaultPlatform::ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) {
  return Guarded(NFaultKind::kListFolder, path, [&] { return Target().ListFolderWithoutLinks(path, entries); });
}
