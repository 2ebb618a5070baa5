#include "store/NKeyJournal.h"

#include <memory>

#include "platform/NTerminationSignalGuard.h"

namespace {

// The header, little-endian whatever the host: the same journal settles on
// either system.
constexpr std::string_view kMagic = "CFGDJRN1";
constexpr std::size_t kHeaderSize = 56;

void PutWord(std::string* out, std::uint64_t word) {
  for (int i = 0; i < 8; ++i) out->push_back(static_cast<char>(word >> (8 * i)));
}

std::uint64_t GetWord(std::string_view bytes, std::size_t at) {
  std::uint64_t word = 0;
  for (int i = 7; i >= 0; --i) word = word << 8 | static_cast<unsigned char>(bytes[at + i]);
  return word;
}

}  // namespace

std::string_view NKeyJournal::Describe(Outcome outcome) {
  switch (outcome) {
    case Outcome::kNone:
      return "no interrupted save";
    case Outcome::kCompleted:
      return "an interrupted save had completed: its journal was dropped";
    case Outcome::kRolledBack:
      return "an interrupted save was rolled back to the key's bytes before it";
    case Outcome::kDamaged:
      return "a journal cut short before its save began was dropped";
    case Outcome::kReadOld:
      return "an interrupted save was read past, from its journal, and left to the next save to settle";
  }
  return "";
}

NKeyJournal::NKeyJournal(NPlatform& platform, std::u16string_view keyFile) : m_platform(platform), m_path(keyFile) {
  m_path += kSuffix;
  const std::size_t cut = m_path.find_last_of(platform.PathSeparator());
  if (cut != NUnicodeString::npos) m_folder = m_path.substr(0, cut == 0 ? 1 : cut);
}

NStatus NKeyJournal::Write(std::string_view old, std::string_view next, NFileSecurity security, bool sync) {
  std::string bytes;
  bytes.reserve(kHeaderSize + old.size());
  bytes.append(kMagic);
  const NHash128 nextHash = NHashBytes128(next.data(), next.size());
  const NHash128 oldHash = NHashBytes128(old.data(), old.size());
  PutWord(&bytes, next.size());
  PutWord(&bytes, nextHash.low);
  PutWord(&bytes, nextHash.high);
  PutWord(&bytes, old.size());
  PutWord(&bytes, oldHash.low);
  PutWord(&bytes, oldHash.high);
  bytes.append(old);

  NOpenOptions options;
  options.mode = NOpenMode::kCreateAlways;
  options.access = NFileAccess::kReadWrite;
  options.security = security;
  options.noFollow = true;
  options.noLinks = true;
  std::unique_ptr<NFile> file;
  NStatus status = m_platform.OpenFile(m_path, options, &file);
  if (!status) return status;
  // The space first: a full disk fails here with a journal of no bytes.
  status = file->Reserve(bytes.size());
  if (status) status = file->Write(0, bytes.data(), bytes.size());
  if (status && sync) status = file->Sync();
  file.reset();
  // The name must survive a power cut as well as the bytes.
  if (status && sync && !m_folder.empty()) {
    status = m_platform.SyncFolder(m_folder);
    // Named by the journal, so that the report says which key it was for.
    if (!status) status = NStatus::Error(status.Code(), "sync the folder of", m_path);
  }
  if (!status) (void)m_platform.DeleteFile(m_path);
  return status;
}

NStatus NKeyJournal::Remove() {
  NStatus status = m_platform.DeleteFile(m_path);
  return status.IsNotFound() ? NStatus::Ok() : status;
}

NStatus NKeyJournal::Read(bool* whole) {
  *whole = false;
  m_old.clear();
  NOpenOptions options;
  options.noFollow = true;
  options.noLinks = true;
  options.anyMissingIsFile = true;
  std::unique_ptr<NFile> file;
  if (NStatus status = m_platform.OpenFile(m_path, options, &file); !status) return status;
  NFileInfo info;
  if (NStatus status = file->GetInfo(&info); !status) return status;
  std::string bytes(static_cast<std::size_t>(info.size), '\0');
  std::size_t got = 0;
  if (NStatus status = file->Read(0, bytes.data(), bytes.size(), &got); !status) return status;
  bytes.resize(got);
  if (bytes.size() < kHeaderSize || std::string_view(bytes).substr(0, kMagic.size()) != kMagic) return NStatus::Ok();
  const std::uint64_t oldLength = GetWord(bytes, 32);
  if (oldLength != bytes.size() - kHeaderSize) return NStatus::Ok();
  const NHash128 oldHash{GetWord(bytes, 40), GetWord(bytes, 48)};
  if (NHashBytes128(bytes.data() + kHeaderSize, oldLength) != oldHash) return NStatus::Ok();
  m_newLength = GetWord(bytes, 8);
  m_newHash = {GetWord(bytes, 16), GetWord(bytes, 24)};
  m_old = bytes.substr(kHeaderSize);
  *whole = true;
  return NStatus::Ok();
}

NStatus NKeyJournal::Settle(NFile& file, std::string* current, bool sync, Outcome* outcome) {
  *outcome = Outcome::kNone;
  bool whole = false;
  NStatus status = Read(&whole);
  if (status.IsNotFound()) return NStatus::Ok();
  if (!status) return status;
  if (!whole) {
    *outcome = Outcome::kDamaged;
  } else if (current->size() == m_newLength && NHashBytes128(current->data(), current->size()) == m_newHash) {
    *outcome = Outcome::kCompleted;
  } else {
    NTerminationSignalGuard holdStops;
    status = file.Truncate(0);
    if (status) status = file.Write(0, m_old.data(), m_old.size());
    if (status && sync) status = file.Sync();
    // The journal stays: the next holder of the lock writes the old bytes again.
    if (!status) return status;
    *current = m_old;
    *outcome = Outcome::kRolledBack;
  }
  return Remove();
}
