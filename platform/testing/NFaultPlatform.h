#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/NForwardingPlatform.h"

// The calls NFaultPlatform counts and can fail. GetPathKind cannot report an
// error and is neither counted nor failed.
enum class NFaultKind {
  kOpen,
  kRead,
  kWrite,
  kTruncate,
  kReserve,
  kLock,
  kUnlock,
  kSync,
  kGetInfo,
  kDelete,
  kMove,
  kCreateFolder,
  kRemoveFolder,
  kListFolder,
};
inline constexpr std::size_t kFaultKindCount = static_cast<std::size_t>(NFaultKind::kListFolder) + 1;

// What an injected failure does.
struct NFault {
  std::uint32_t error = NStatus::kDiskFull;  // the Win32 code the failing call returns
  bool sticky = false;                       // false: only the chosen call fails; true: it and every later one
  // A failing Write first writes the first half of its bytes, as a disk that
  // fills up in the middle of a write does. Ignored by other calls.
  bool shortWrite = false;
};

// A platform that forwards to another one, counts the calls it forwards and
// fails the Nth call of a chosen kind (or of any kind) with a chosen Win32
// error, so that tests can reach every error path of an operation. Files it
// opens are wrapped so that their calls are counted and failed too. A failed
// call does not reach the target, except for the first half of a short write.
//
// Owned by the test; it must outlive every file it opened. Thread-safe.
// When combined with NWindowsLockPlatform, put this one outside, so that the
// calls counted are the caller's own and not the lock platform's bookkeeping.
class NFaultPlatform : public NForwardingPlatform {
 public:
  explicit NFaultPlatform(NPlatform& target) : NForwardingPlatform(target) {}

  // Fails the Nth call (1 = the next one) of `kind`, counting from this
  // injection. Injections add up; Reset removes them.
  void FailNth(NFaultKind kind, int n, const NFault& fault) { Inject(kind, n, fault); }
  void FailNth(NFaultKind kind, int n, std::uint32_t error, bool sticky = false) {
    Inject(kind, n, {.error = error, .sticky = sticky});
  }
  // Same, counting the calls of all kinds together: looping n = 1, 2, ...
  // until Fired() stays false fails each call of an operation in turn.
  void FailNthOfAny(int n, const NFault& fault) { Inject(std::nullopt, n, fault); }
  void FailNthOfAny(int n, std::uint32_t error, bool sticky = false) {
    Inject(std::nullopt, n, {.error = error, .sticky = sticky});
  }

  // Calls since construction or the last Reset, failed ones included.
  int CallCount(NFaultKind kind) const;
  int TotalCalls() const;
  // Whether an injected failure has happened since the last Reset.
  bool Fired() const;
  // Forgets the counts, the injections and whether one fired.
  void Reset();

  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override;
  NStatus DeleteFile(std::u16string_view path) override;
  NStatus MoveFile(std::u16string_view from, std::u16string_view to) override;
  NStatus CreateFolder(std::u16string_view path, NFileSecurity security) override;
  NStatus RemoveFolder(std::u16string_view path) override;
  // Counted and failed as a kSync.
  NStatus SyncFolder(std::u16string_view path) override;
  NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) override;
  NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) override;

 private:
  class NFaultFile;

  struct NInjection {
    std::optional<NFaultKind> kind;  // empty: calls of any kind
    int at = 0;                      // the count at which it fires
    NFault fault;
  };

  // Counts one call of `kind`; the fault it must fail with, if any.
  std::optional<NFault> Count(NFaultKind kind);
  // Counts the call and fails it, or makes it.
  template <typename Call>
  NStatus Guarded(NFaultKind kind, std::u16string_view path, Call call);
  void Inject(std::optional<NFaultKind> kind, int n, const NFault& fault);

  mutable std::mutex m_mutex;
  std::array<int, kFaultKindCount> m_counts{};
  int m_total = 0;
  std::vector<NInjection> m_injections;
  bool m_fired = false;
};
