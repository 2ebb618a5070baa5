#include "platform/testing/NWindowsLockPlatform.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <string>
#include <utility>

namespace {

constexpr std::uint64_t kEndOfEverything = std::numeric_limits<std::uint64_t>::max();

std::uint64_t EndOf(std::uint64_t offset, std::uint64_t length) {
  return length > kEndOfEverything - offset ? kEndOfEverything : offset + length;
}

bool Overlaps(std::uint64_t begin1, std::uint64_t end1, std::uint64_t begin2, std::uint64_t end2) {
  return begin1 < end1 && begin2 < end2 && begin1 < end2 && begin2 < end1;
}

}  // namespace

// Checks every call against the locks and handles its platform knows of, and
// passes it on to the real file.
class NWindowsLockPlatform::NWindowsLockFile final : public NFile {
 public:
  NWindowsLockFile(NWindowsLockPlatform& platform, std::unique_ptr<NFile> file, std::uint64_t fileId,
                   std::u16string path)
      : m_platform(platform), m_file(std::move(file)), m_fileId(fileId), m_path(std::move(path)) {}

  ~NWindowsLockFile() override {
    std::lock_guard lock(m_platform.m_mutex);
    // The real locks go first, so that a handle granted next does not find
    // them still held on the real file.
    m_file.reset();
    auto it = m_platform.m_files.find(m_fileId);
    if (it == m_platform.m_files.end()) return;
    std::erase_if(it->second.locks, [this](const NLockRange& range) { return range.owner == this; });
    std::erase_if(it->second.handles, [this](const NOpenHandle& handle) { return handle.handle == this; });
    if (it->second.handles.empty()) m_platform.m_files.erase(it);
    m_platform.m_released.notify_all();
  }

  NStatus Read(std::uint64_t offset, void* buffer, std::size_t size, std::size_t* bytesRead) override {
    // The check and the read happen under one lock, as they do on Windows:
    // no lock can be granted in between.
    std::lock_guard lock(m_platform.m_mutex);
    const std::uint64_t end = EndOf(offset, size);
    for (const NLockRange& range : State().locks) {
      if (range.owner != this && range.kind == NLockKind::kExclusive && Overlaps(range.begin, range.end, offset, end)) {
        *bytesRead = 0;
        return NStatus::Error(NStatus::kLockViolation, "read", m_path);
      }
    }
    return m_file->Read(offset, buffer, size, bytesRead);
  }

  NStatus Write(std::uint64_t offset, const void* data, std::size_t size) override {
    std::lock_guard lock(m_platform.m_mutex);
    if (WriteBlocked(offset, EndOf(offset, size))) return NStatus::Error(NStatus::kLockViolation, "write", m_path);
    return m_file->Write(offset, data, size);
  }

  NStatus Truncate(std::uint64_t length) override {
    std::lock_guard lock(m_platform.m_mutex);
    if (WriteBlocked(length, kEndOfEverything)) return NStatus::Error(NStatus::kLockViolation, "truncate", m_path);
    return m_file->Truncate(length);
  }

  NStatus Reserve(std::uint64_t length) override {
    std::lock_guard lock(m_platform.m_mutex);
    NFileInfo info;
    if (NStatus status = m_file->GetInfo(&info); !status) return status;
    if (WriteBlocked(info.size, std::max(info.size, length))) {
      return NStatus::Error(NStatus::kLockViolation, "reserve", m_path);
    }
    return m_file->Reserve(length);
  }

  NStatus Lock(std::uint64_t offset, std::uint64_t length, NLockKind kind, std::chrono::milliseconds timeout) override {
    const std::uint64_t end = EndOf(offset, length);
    const bool forever = timeout < std::chrono::milliseconds::zero();
    const auto deadline = std::chrono::steady_clock::now() + (forever ? std::chrono::milliseconds::zero() : timeout);
    std::unique_lock lock(m_platform.m_mutex);
    NFileState& state = State();
    bool overlapsOwn = false;
    for (const NLockRange& range : state.locks) {
      if (range.owner != this || !Overlaps(range.begin, range.end, offset, end)) continue;
      // Windows would make the handle wait for itself, for ever.
      if (kind == NLockKind::kExclusive || range.kind == NLockKind::kExclusive) {
        return NStatus::Error(NStatus::kLockViolation, "lock", m_path);
      }
      overlapsOwn = true;
    }
    const auto free = [&] {
      return std::none_of(state.locks.begin(), state.locks.end(), [&](const NLockRange& range) {
        return range.owner != this && Overlaps(range.begin, range.end, offset, end) &&
               (kind == NLockKind::kExclusive || range.kind == NLockKind::kExclusive);
      });
    };
    if (forever) {
      m_platform.m_released.wait(lock, free);
    } else if (!m_platform.m_released.wait_until(lock, deadline, free)) {
      return NStatus::Error(NStatus::kWaitTimeout, "lock", m_path);
    }
    // Stacked shared locks stay here: on POSIX they merge on the real file
    // and one unlock would drop them all. A zero length would lock to the end
    // of the file there.
    const bool forward = !overlapsOwn && length > 0;
    state.locks.push_back({.owner = this, .begin = offset, .end = end, .kind = kind, .forwarded = forward});
    if (!forward) return NStatus::Ok();

    // Held here while the real lock waits for other processes, so handles of
    // this platform queue behind it.
    lock.unlock();
    auto remaining = timeout;
    if (!forever) {
      remaining = std::max(std::chrono::milliseconds::zero(), std::chrono::duration_cast<std::chrono::milliseconds>(
                                                                  deadline - std::chrono::steady_clock::now()));
    }
    NStatus status = m_file->Lock(offset, length, kind, remaining);
    if (!status) {
      lock.lock();
      auto& locks = State().locks;
      auto it = std::find_if(locks.rbegin(), locks.rend(), [&](const NLockRange& range) {
        return range.owner == this && range.begin == offset && range.end == end && range.forwarded;
      });
      if (it != locks.rend()) locks.erase(std::next(it).base());
      m_platform.m_released.notify_all();
    }
    return status;
  }

  NStatus Unlock(std::uint64_t offset, std::uint64_t length) override {
    std::lock_guard lock(m_platform.m_mutex);
    const std::uint64_t end = EndOf(offset, length);
    auto& locks = State().locks;
    const auto exact = [&](const NLockRange& range) {
      return range.owner == this && range.begin == offset && range.end == end;
    };
    // Of stacked locks, the one also held on the real file goes last.
    auto it = std::find_if(locks.begin(), locks.end(), [&](const NLockRange& range) {
      return exact(range) && !range.forwarded;
    });
    if (it == locks.end()) it = std::find_if(locks.begin(), locks.end(), exact);
    if (it == locks.end()) return NStatus::Error(kNotLocked, "unlock", m_path);
    if (it->forwarded) {
      if (NStatus status = m_file->Unlock(offset, length); !status) return status;
    }
    locks.erase(it);
    m_platform.m_released.notify_all();
    return NStatus::Ok();
  }

  NStatus GetInfo(NFileInfo* info) override { return m_file->GetInfo(info); }
  NStatus Sync() override { return m_file->Sync(); }

 private:
  // Needs m_mutex. The entry lives as long as this handle is registered.
  NFileState& State() { return m_platform.m_files.at(m_fileId); }

  // A shared lock keeps even its own handle from writing. Needs m_mutex.
  bool WriteBlocked(std::uint64_t begin, std::uint64_t end) {
    return std::any_of(State().locks.begin(), State().locks.end(), [&](const NLockRange& range) {
      return Overlaps(range.begin, range.end, begin, end) && (range.owner != this || range.kind == NLockKind::kShared);
    });
  }

  NWindowsLockPlatform& m_platform;
  std::unique_ptr<NFile> m_file;
  std::uint64_t m_fileId;
  std::u16string m_path;
};

bool NWindowsLockPlatform::SharingConflict(std::uint64_t fileId, bool write, unsigned share) const {
  auto it = m_files.find(fileId);
  if (it == m_files.end()) return false;
  // Every open reads, so every handle must share reading both ways.
  return std::any_of(it->second.handles.begin(), it->second.handles.end(), [&](const NOpenHandle& handle) {
    return !(handle.share & kShareRead) || (write && !(handle.share & kShareWrite)) || !(share & kShareRead) ||
           (handle.write && !(share & kShareWrite));
  });
}

bool NWindowsLockPlatform::OpenWithoutShareDelete(std::u16string_view path) {
  // Not linked to: deleting or moving a link leaves the file it names alone.
  std::unique_ptr<NFile> probe;
  const NOpenOptions options{.access = NFileAccess::kRead, .share = kShareAll, .noFollow = true};
  NFileInfo info;
  if (!Target().OpenFile(path, options, &probe) || !probe->GetInfo(&info)) return false;
  auto it = m_files.find(info.fileId);
  if (it == m_files.end()) return false;
  return std::any_of(it->second.handles.begin(), it->second.handles.end(),
                     [](const NOpenHandle& handle) { return !(handle.share & kShareDelete); });
}

NStatus NWindowsLockPlatform::OpenFile(std::u16string_view path, const NOpenOptions& options,
                                       std::unique_ptr<NFile>* file) {
  // The file is cut only once the share modes allow the open, so that a
  // refused kCreateAlways leaves it as it was.
  NOpenOptions realOptions = options;
  if (options.mode == NOpenMode::kCreateAlways) realOptions.mode = NOpenMode::kCreateIfMissing;

  std::unique_ptr<NFile> wrapped;
  {
    std::lock_guard lock(m_mutex);
    std::unique_ptr<NFile> real;
    if (NStatus status = Target().OpenFile(path, realOptions, &real); !status) return status;
    NFileInfo info;
    if (NStatus status = real->GetInfo(&info); !status) return status;
    const bool write = options.access == NFileAccess::kReadWrite;
    if (SharingConflict(info.fileId, write, options.share)) {
      return NStatus::Error(NStatus::kSharingViolation, "open", path);
    }
    if (options.mode == NOpenMode::kCreateAlways && info.size > 0) {
      if (NStatus status = real->Truncate(0); !status) return status;
    }
    auto handle = std::make_unique<NWindowsLockFile>(*this, std::move(real), info.fileId, std::u16string(path));
    m_files[info.fileId].handles.push_back({.handle = handle.get(), .write = write, .share = options.share});
    wrapped = std::move(handle);
  }
  // Outside the lock: the file this replaces may be one of ours, whose
  // destructor takes it.
  *file = std::move(wrapped);
  return NStatus::Ok();
}

NStatus NWindowsLockPlatform::DeleteFile(std::u16string_view path) {
  std::lock_guard lock(m_mutex);
  if (OpenWithoutShareDelete(path)) return NStatus::Error(NStatus::kSharingViolation, "delete", path);
  return Target().DeleteFile(path);
}

NStatus NWindowsLockPlatform::MoveFile(std::u16string_view from, std::u16string_view to) {
  std::lock_guard lock(m_mutex);
  if (OpenWithoutShareDelete(from)) return NStatus::Error(NStatus::kSharingViolation, "move", from);
  return Target().MoveFile(from, to);
}
