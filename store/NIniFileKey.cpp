#include "store/NIniFileKey.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <cstring>
#include <new>

#include "base/NHash.h"
#include "location/NMessageFormatter.h"
#include "location/NReportMessageParams.h"
#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "platform/NTerminationSignalGuard.h"
#include "store/NFindIgnoringCase.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NIniFileStore.h"
#include "store/NIniRecordReader.h"
#include "store/NKeyJournal.h"
#include "store/NTextFile.h"

namespace {

// The lock every reader and writer of a key file takes: bytes 0 to 3.
constexpr std::uint64_t kLockOffset = 0;
constexpr std::uint64_t kLockLength = 4;

constexpr std::u16string_view kKeyFileSuffix = u".ini";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool HasLineBreak(std::u16string_view text) { return text.find_first_of(u"\r\n") != std::u16string_view::npos; }

// A name that a record can hold: a double quote would end it early and a
// line break would split the record.
bool IsStorableName(std::u16string_view name) { return name.find_first_of(u"\"\r\n") == std::u16string_view::npos; }

void Trace(std::u16string_view format, std::u16string_view argument) {
  const NFormatArgument insertion(argument);
  std::u16string text;
  NMessageFormatter::Format(format, std::span<const NFormatArgument>(&insertion, 1), &text);
  NTrace(text);
}

// Logs once when a lock wait outlasts `limit`; the wait itself goes on.
class NLockWaitWatch {
 public:
  NLockWaitWatch(std::chrono::milliseconds limit, std::u16string path)
      : m_thread([this, limit, path = std::move(path)] {
          std::unique_lock<std::mutex> lock(m_mutex);
          if (!m_done.wait_for(lock, limit, [this] { return m_granted; })) {
            Trace(u"NIniFileKey: still waiting for the lock on %1\n", path);
          }
        }) {}
  ~NLockWaitWatch() {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_granted = true;
    }
    m_done.notify_one();
    m_thread.join();
  }
  NLockWaitWatch(const NLockWaitWatch&) = delete;
  NLockWaitWatch& operator=(const NLockWaitWatch&) = delete;

 private:
  std::mutex m_mutex;  // guards m_granted
  std::condition_variable m_done;
  bool m_granted = false;
  std::thread m_thread;
};

}  // namespace

bool NIniFileKey::FileState::SameAs(const std::string& bytes) const {
  if (hashed) return NHashBytes(bytes.data(), bytes.size()) == hash;
  const std::string_view view = bytes;
  return view.size() == mark.size() + text.size() && view.starts_with(mark) && view.substr(mark.size()) == text;
}

void NIniFileKey::FileState::Hash() {
  if (hashed) return;
  std::string bytes(mark);
  bytes += text;
  hash = NHashBytes(bytes.data(), bytes.size());
  hashed = true;
  mark = text = {};
}

NIniFileKey::NIniFileKey(const NIniFileStore& store, NKeyPath path, bool readOnly)
    : m_store(store), m_path(std::move(path)), m_readOnly(readOnly) {}

NIniFileKey::~NIniFileKey() = default;

std::unique_ptr<NIniFileKey> NIniFileKey::Open(const NIniFileStore& store, NKeyPath path, bool readOnly,
                                               NReportMessageParams& params) {
  std::unique_ptr<NIniFileKey> key(new NIniFileKey(store, std::move(path), readOnly));
  if (!key->Load(params)) return nullptr;
  return key;
}

NUnicodeString NIniFileKey::FolderPath() const {
  return m_path.Under(m_store.Root(), m_store.Platform().PathSeparator());
}

NUnicodeString NIniFileKey::FilePath() const {
  if (m_path.IsRoot()) return {};  // the root holds sub-keys only
  return m_path.Under(m_store.Root(), m_store.Platform().PathSeparator(), kKeyFileSuffix);
}

NUnicodeString NIniFileKey::PrivateFilePath() const {
  if (m_path.IsRoot() || m_store.PrivateRoot().empty()) return {};
  return m_path.Under(m_store.PrivateRoot(), m_store.Platform().PathSeparator(), kKeyFileSuffix);
}

NUnicodeString NIniFileKey::FileToSave(std::u16string_view root) const {
  NPlatform& platform = m_store.Platform();
  NUnicodeString path = m_path.Under(root, platform.PathSeparator(), kKeyFileSuffix);
  if (platform.GetPathKind(path) != NPathKind::kNone) return path;
  // Rewrite "global.ini" rather than make "Global.ini" beside it; a new file
  // goes into the folders that exist, whatever their case.
  (void)NFindKeyPath(platform, root, m_path, kKeyFileSuffix, &path, m_store.Options().listings.get());
  return path;
}

NStatus NIniFileKey::LockWithWarning(NFile& file, NLockKind kind) const {
  NStatus status = file.Lock(kLockOffset, kLockLength, kind, std::chrono::milliseconds::zero());
  if (status.Code() != NStatus::kWaitTimeout) return status;
  // Contended: wait in the system's own queue (polling could be starved by
  // a busy writer), with a watch that logs a wait longer than the limit.
  NLockWaitWatch watch(m_store.Options().lockWarning, status.Path());
  return file.Lock(kLockOffset, kLockLength, kind, NFile::kWaitForever);
}

NStatus NIniFileKey::SettleJournal(const NUnicodeString& path, NKeyJournal& journal, bool whole, std::string* raw,
                                  NKeyJournal::Outcome* outcome) const {
  NPlatform& platform = m_store.Platform();
  NOpenOptions options;
  options.access = NFileAccess::kReadWrite;
  options.noFollow = true;
  options.noLinks = true;
  std::unique_ptr<NFile> file;
  const bool locked = platform.OpenFile(path, options, &file) &&
                      file->Lock(kLockOffset, kLockLength, NLockKind::kExclusive, std::chrono::milliseconds::zero());
  if (!locked) {
    // Others read the key, or its folder cannot be written: the old bytes
    // are the key's, and the next save settles the journal.
    if (whole) {
      *raw = journal.OldBytes();
      *outcome = NKeyJournal::Outcome::kReadOld;
    }
    return NStatus::Ok();
  }
  // What the file holds now, under the exclusive lock: a save may have come
  // and settled the journal in between.
  NStatus status = NTextFile(*file).Read(raw);
  if (status) status = journal.Settle(*file, raw, m_store.Options().syncOnSave, outcome);
  NStatus unlocked = file->Unlock(kLockOffset, kLockLength);
  if (status) status = std::move(unlocked);
  if (status && *outcome != NKeyJournal::Outcome::kNone) {
    Trace(u"NIniFileKey: settled the journal of an interrupted save: %1\n", path);
  }
  return status;
}

bool NIniFileKey::LoadFile(Map& map, std::u16string_view root, FileState* state, NIniLoadReport* report,
                           NReportMessageParams& params) {
  *state = FileState();
  *report = NIniLoadReport();
  if (m_path.IsRoot() || root.empty()) return true;
  NPlatform& platform = m_store.Platform();
  NUnicodeString path = m_path.Under(root, platform.PathSeparator(), kKeyFileSuffix);
  NFolderListingCache* listings = m_store.Options().listings.get();
  if (listings) {
    // Its folder was listed without the file, in any case, and is as it was.
    // The folder as the search by case spells it: no separator after a
    // root that ends in one.
    const std::size_t fileLength = m_path.Names().back().size() + kKeyFileSuffix.size();
    std::size_t folderLength = path.size() - fileLength;
    if (folderLength > root.size()) --folderLength;
    const std::u16string_view spelled = path;
    if (listings->KnownMissing(platform, spelled.substr(0, folderLength), spelled.substr(path.size() - fileLength))) {
      return true;
    }
  }
  NOpenOptions options;
  options.noFollow = true;
  options.noLinks = true;
  options.anyMissingIsFile = true;
  std::unique_ptr<NFile> file;
  NStatus status = platform.OpenFile(path, options, &file);
  if (status.IsNotFound()) {
    // Only a missing file pays for the search by case.
    NUnicodeString other;
    if (!NFindKeyPath(platform, root, m_path, kKeyFileSuffix, &other, listings) ||
        other == path) {
      return true;
    }
    path = std::move(other);
    status = platform.OpenFile(path, options, &file);
  }
  if (status.IsNotFound()) return true;  // a key without values
  std::string raw;
  NKeyJournal journal(platform, path);
  bool journalFound = false;
  bool journalWhole = false;
  if (status) status = LockWithWarning(*file, NLockKind::kShared);
  if (status) {
    status = NTextFile(*file).Read(&raw);
    // Under the shared lock no save is under way: a journal now is one that
    // a save left when it died.
    if (status) {
      status = journal.Read(&journalWhole);
      journalFound = status.IsOk();
      if (status.IsNotFound()) status = NStatus::Ok();
    }
    // Released before the close: a child the host forked and has not yet
    // made exec holds a copy of the file, and with it the lock.
    NStatus unlocked = file->Unlock(kLockOffset, kLockLength);
    if (status) status = std::move(unlocked);
  }
  file.reset();
  if (status && journalFound) status = SettleJournal(path, journal, journalWhole, &raw, &report->journal);
  if (!status) {
    NReportStatus(status, params);
    return false;
  }
  state->existed = true;
  report->file = path;
  report->emptyFile = raw.empty();
  NTextFile::Encoding encoding;
  bool verbatim = false;
  std::size_t markSize = 0;
  std::string text = NTextFile::DecodeTaking(&raw, &encoding, &verbatim, &markSize);
  if (!verbatim) {
    state->hash = NHashBytes(raw.data(), raw.size());
  } else {
    state->hashed = false;
    state->mark = encoding == NTextFile::Encoding::kUtf8 ? kUtf8Mark : std::string_view();
  }
  const std::string_view kept = map.AdoptText(std::move(text), markSize);
  if (verbatim) state->text = kept;
  const NIniFileKeyMap::ReadResult read = map.ReadRecords(kept);
  report->invalidLine = read.invalidLine;
  report->problem = read.problem;
  report->unterminated = read.unterminated;
  if (report->emptyFile || report->unterminated) {
    Trace(u"NIniFileKey: possibly interrupted save: %1\n", path);
  }
  return true;
}

bool NIniFileKey::Load(NReportMessageParams& params) {
  auto map = std::make_unique<Map>();
  // Kept only with the table they describe: a failed reload changes nothing.
  FileState files[2];
  NIniLoadReport reports[2];
  if (!LoadFile(*map, m_store.Root(), &files[0], &reports[0], params)) return false;
  // Personal values read from the private half take the place of any copy
  // left in the main file.
  if (!LoadFile(*map, m_store.PrivateRoot(), &files[1], &reports[1], params)) return false;
  m_map = std::move(map);
  for (int i = 0; i < 2; ++i) {
    m_files[i] = files[i];
    m_reports[i] = std::move(reports[i]);
  }
  ++m_tableGeneration;
  m_modified = false;
  return true;
}

bool NIniFileKey::Reload(NReportMessageParams& params) { return Load(params); }

// ---- Values ----

NIniFileData* NIniFileKey::FindData(std::u16string_view name) const {
  const Map::Element* element = m_map->Find(name);
  return element ? element->Data() : nullptr;
}

bool NIniFileKey::GetSecurityDescriptorValue(std::u16string_view name, NSecurityDescriptor* value) const {
  const NIniFileData* data = FindData(name);
  if (!data) return false;
  NStringArray lines;
  if (data->GetMultiString(&lines)) {
    NUnicodeString text;
    for (const NUnicodeString& line : lines) text += line;
    *value = NSecurityDescriptor::FromText(std::move(text));
    return true;
  }
  std::uint32_t length = 0;
  if (!data->GetBinary(nullptr, &length)) return false;
  std::string bytes(length, '\0');
  if (!data->GetBinary(bytes.data(), &length)) return false;
  return NSecurityDescriptor::FromBinary(reinterpret_cast<const std::uint8_t*>(bytes.data()), length, value);
}

bool NIniFileKey::GetMultiStringValue(std::u16string_view name, NStringArray* value) const {
  const NIniFileData* data = FindData(name);
  return data && data->GetMultiString(value);
}

bool NIniFileKey::GetBinaryValue(std::u16string_view name, void* buffer, std::uint32_t* length) const {
  const NIniFileData* data = FindData(name);
  return data && data->GetBinary(buffer, length);
}

bool NIniFileKey::GetStringValue(std::u16string_view name, NUnicodeString* value) const {
  const NIniFileData* data = FindData(name);
  return data && data->GetString(value);
}

bool NIniFileKey::GetDwordValue(std::u16string_view name, std::uint32_t* value) const {
  const NIniFileData* data = FindData(name);
  return data && data->GetDword(value);
}

bool NIniFileKey::Change(std::u16string_view name, NIniFileData* data) {
  if (name.empty() || !IsStorableName(name)) {
    delete data;
    return false;
  }
  m_map->Put(NIniFileKeyMap::Utf8Name(name).View(), data, true, true, true);
  m_modified = true;
  return true;
}

bool NIniFileKey::SetSecurityDescriptorValue(std::u16string_view name, const NSecurityDescriptor& value) {
  if (!value.IsText() || HasLineBreak(value.Text())) return false;
  NStringArray lines;
  lines.Add(value.Text());
  return SetMultiStringValue(name, lines);
}

bool NIniFileKey::SetMultiStringValue(std::u16string_view name, const NStringArray& value) {
  for (const NUnicodeString& line : value) {
    if (HasLineBreak(line)) return false;
  }
  return Change(name, NIniFileDataStringSz::Owning(NIniFileDataStringSz::BlockOf(value),
                                                  static_cast<std::uint32_t>(value.size())));
}

bool NIniFileKey::SetBinaryValue(std::u16string_view name, const void* data, std::uint32_t length) {
  if (!data && length) return false;
  return Change(name, NIniFileDataBinary::Owning(std::string_view(static_cast<const char*>(data), length)));
}

bool NIniFileKey::SetStringValue(std::u16string_view name, std::u16string_view value) {
  if (HasLineBreak(value)) return false;
  return Change(name, NIniFileDataString::Owning(NUnicodeString(value).ToUtf8()));
}

bool NIniFileKey::SetDwordValue(std::u16string_view name, std::uint32_t value) {
  return Change(name, new NIniFileDataDword(value));
}

bool NIniFileKey::DeleteValue(std::u16string_view name) {
  if (!m_map->Remove(NIniFileKeyMap::Utf8Name(name).View(), true)) return false;
  m_modified = true;
  return true;
}

// ---- Saving ----

namespace {

// One file a save writes: the main file, or the private one.
struct SaveTarget {
  NUnicodeString path;
  NFileSecurity security = NFileSecurity::kDefault;
  std::unique_ptr<NFile> file;
  bool locked = false;
  std::string old;        // the bytes before the save, read under the lock
  std::string content;    // the bytes after it
};

NStatus OpenForSave(NPlatform& platform, SaveTarget& target) {
  NOpenOptions options;
  options.mode = NOpenMode::kCreateIfMissing;
  options.access = NFileAccess::kReadWrite;
  options.security = target.security;
  options.noFollow = true;
  options.noLinks = true;
  NStatus status = platform.OpenFile(target.path, options, &target.file);
  if (status || !status.IsNotFound()) return status;
  // The key's folders do not exist yet: create the whole chain, then again.
  const size_t cut = target.path.find_last_of(platform.PathSeparator());
  if (cut == NUnicodeString::npos) return status;
  if (NStatus created = platform.CreateFolderChain(std::u16string_view(target.path).substr(0, cut), target.security);
      !created) {
    return created;
  }
  return platform.OpenFile(target.path, options, &target.file);
}

NStatus ReadOld(SaveTarget& target) {
  NFileInfo info;
  if (NStatus status = target.file->GetInfo(&info); !status) return status;
  if (info.size > NTextFile::kMaxFileSize) return NStatus::Error(NStatus::kNotEnoughMemory, "save (file too large)");
  target.old.resize(static_cast<size_t>(info.size));
  size_t got = 0;
  NStatus status = target.file->Read(0, target.old.data(), target.old.size(), &got);
  target.old.resize(got);
  return status;
}

// Cuts the file and writes its new content; on a failed write the old bytes
// are written back. Polite stop requests wait until the file is whole.
NStatus Rewrite(SaveTarget& target) {
  NTerminationSignalGuard holdStops;
  NStatus status = target.file->Truncate(0);
  if (status) status = target.file->Write(0, target.content.data(), target.content.size());
  if (!status) {
    (void)target.file->Truncate(0);
    (void)target.file->Write(0, target.old.data(), target.old.size());
  }
  return status;
}

}  // namespace

bool NIniFileKey::Flush(NReportMessageParams& params) {
  if (!m_map || !m_modified) return true;
  if (m_readOnly || m_path.IsRoot()) {
    const char* why = m_readOnly ? "save (the key was opened read-only)" : "save (the root key holds no values)";
    NReportStatus(NStatus::Error(NStatus::kAccessDenied, why, GetPath()), params);
    return false;
  }
  return SaveFiles(params);
}

bool NIniFileKey::SaveFiles(NReportMessageParams& params) {
  NPlatform& platform = m_store.Platform();
  // Personal values go to the private half once there is one to write, or
  // one that was deleted (so that a deleted password does not come back).
  const bool usePrivate = !m_store.PrivateRoot().empty() && (m_map->HasFixedData() || m_map->HasFixedChange());
  SaveTarget targets[2];
  const int count = usePrivate ? 2 : 1;
  targets[0].path = FileToSave(m_store.Root());
  if (usePrivate) {
    targets[1].path = FileToSave(m_store.PrivateRoot());
    targets[1].security = NFileSecurity::kOwnerOnly;
  }

  auto fail = [&](const NStatus& status) {
    for (int i = count - 1; i >= 0; --i) {
      if (targets[i].locked) (void)targets[i].file->Unlock(kLockOffset, kLockLength);
    }
    NReportStatus(status, params);
    return false;
  };

  // Lock every file first, main before private, so that two savers never
  // hold one each while waiting for the other.
  bool changedElsewhere = false;
  for (int i = 0; i < count; ++i) {
    SaveTarget& target = targets[i];
    if (NStatus status = OpenForSave(platform, target); !status) return fail(status);
    if (NStatus status = LockWithWarning(*target.file, NLockKind::kExclusive); !status) return fail(status);
    target.locked = true;
    if (NStatus status = ReadOld(target); !status) return fail(status);
    NKeyJournal::Outcome settled;
    if (NStatus status = NKeyJournal(platform, target.path).Settle(*target.file, &target.old, m_store.Options().syncOnSave,
                                                                   &settled);
        !status) {
      return fail(status);
    }
    const FileState& known = m_files[i];
    const bool existsNow = !target.old.empty();
    if (existsNow != known.existed || (existsNow && !known.SameAs(target.old))) {
      changedElsewhere = true;
    }
  }
  if (changedElsewhere) MergeOnto(targets[0].old, usePrivate ? targets[1].old : std::string());

  // The whole new content exists before any file is touched.
  NTextFile writers[2];
  for (NTextFile& writer : writers) writer.SetEncoding(NTextFile::Encoding::kUtf8);
  m_map->ForEach([&](const Map::Element& element) {
    const bool personal = usePrivate && m_map->IsPersonal(element);
    element.Data()->WriteRecord(writers[personal ? 1 : 0], element.Name());
  });
  for (int i = 0; i < count; ++i) {
    targets[i].content = writers[i].Encoded();
    // A full disk fails here, while the old content is still whole.
    if (NStatus status = targets[i].file->Reserve(targets[i].content.size()); !status) return fail(status);
  }
  // The private file first: a save cut short between the two then leaves the
  // personal values in both files (the main one may hold them from before
  // the private root was used) rather than in neither.
  const bool sync = m_store.Options().syncOnSave;
  for (int i = count - 1; i >= 0; --i) {
    SaveTarget& target = targets[i];
    NKeyJournal journal(platform, target.path);
    const bool journaled = m_store.Options().journal;
    if (NStatus status = journaled ? journal.Write(target.old, target.content, target.security, sync) : NStatus::Ok();
        !status) {
      return fail(status);
    }
    // On a failure the journal stays: the next opener finds the old bytes
    // or the new ones, whatever the failed call left.
    if (NStatus status = Rewrite(target); !status) return fail(status);
    if (sync) {
      if (NStatus status = target.file->Sync(); !status) return fail(status);
    }
    // The new bytes stand; a journal left now is settled as a completed save.
    if (NStatus status = journaled ? journal.Remove() : NStatus::Ok(); !status) return fail(status);
  }
  for (int i = count - 1; i >= 0; --i) {
    // Released before the close, not by it.
    NStatus status = targets[i].file->Unlock(kLockOffset, kLockLength);
    targets[i].locked = false;
    if (!status) return fail(status);
  }
  for (int i = 0; i < count; ++i) {
    m_files[i] = FileState();
    m_files[i].existed = true;
    m_files[i].hash = NHashBytes(targets[i].content.data(), targets[i].content.size());
  }
  m_map->ClearChanges();
  m_modified = false;
  return true;
}

void NIniFileKey::MergeOnto(const std::string& mainBytes, const std::string& privateBytes) {
  // The texts the states point into go with the old table.
  for (FileState& state : m_files) state.Hash();
  auto merged = std::make_unique<Map>();
  for (const std::string* bytes : {&mainBytes, &privateBytes}) {
    NTextFile::Encoding encoding;
    (void)merged->ReadRecords(merged->AdoptText(NTextFile::Decode(*bytes, &encoding)));
  }
  m_map->ForEachChanged([&merged](const Map::Element& element) {
    if (element.Data()) {
      merged->Put(element.Name(), element.Data()->CloneOwned(), true, true, false);
    } else {
      merged->Remove(element.Name(), false);
    }
  });
  m_map = std::move(merged);
  ++m_tableGeneration;
}

// ---- Sub-keys ----

namespace {

// Removes a folder with everything in it. Symbolic links are removed, never
// followed, so a deletion cannot reach outside the store.
NStatus RemoveTree(NPlatform& platform, const NUnicodeString& folder) {
  std::vector<NFolderEntry> entries;
  if (NStatus status = platform.ListFolder(folder, &entries); !status) return status;
  for (const NFolderEntry& entry : entries) {
    NUnicodeString path = folder;
    path.push_back(platform.PathSeparator());
    path += entry.name;
    NStatus status = entry.kind == NPathKind::kFolder ? RemoveTree(platform, path) : platform.DeleteFile(path);
    if (!status) return status;
  }
  return platform.RemoveFolder(folder);
}

// Removes the key's file and folder in every spelling that differs only in
// case, so that no other spelling is left to stand for the key. The way to
// it must be real folders (a symbolic link could lead out of the store).
NStatus RemoveKeyFiles(NPlatform& platform, std::u16string_view root, const NKeyPath& path) {
  NUnicodeString parent;
  if (NStatus status = NFindKeyPath(platform, root, path.Parent(), u"", &parent); !status) {
    return status.IsNotFound() ? NStatus::Ok() : status;
  }
  NUnicodeString fileName(path.Leaf());
  fileName += kKeyFileSuffix;
  NUnicodeString journalName = fileName;
  journalName += NKeyJournal::kSuffix;
  const std::u16string_view names[] = {path.Leaf(), fileName, journalName};
  std::vector<NFolderEntry> matches;
  if (NStatus status = NListIgnoringCase(platform, parent, names, &matches); !status) return status;
  for (const NFolderEntry& entry : matches) {
    NUnicodeString target = parent;
    if (target.back() != platform.PathSeparator()) target.push_back(platform.PathSeparator());
    target += entry.name;
    const bool isFolderName = NUnicodeString::CompareIgnoreCase(entry.name, path.Leaf()) == 0;
    // A link where the folder would be: the link goes, not what it names.
    NStatus status =
        isFolderName && entry.kind == NPathKind::kFolder ? RemoveTree(platform, target) : platform.DeleteFile(target);
    if (!status) return status;
  }
  return NStatus::Ok();
}

}  // namespace

bool NIniFileKey::DeleteSubKey(std::u16string_view name, NReportMessageParams& params) {
  NKeyPath path;
  if (!m_path.Child(name, &path)) {
    NReportStatus(NStatus::Error(NStatus::kInvalidParameter, "delete key (not a valid key name)", name), params);
    return false;
  }
  if (m_readOnly) {
    NReportStatus(NStatus::Error(NStatus::kAccessDenied, "delete key (the key was opened read-only)", name), params);
    return false;
  }
  NPlatform& platform = m_store.Platform();
  NStatus status = RemoveKeyFiles(platform, m_store.Root(), path);
  if (status && !m_store.PrivateRoot().empty()) status = RemoveKeyFiles(platform, m_store.PrivateRoot(), path);
  if (!status) {
    NReportStatus(status, params);
    return false;
  }
  return true;
}

bool NIniFileKey::SubKeyExists(std::u16string_view name) const {
  NKeyPath path = m_path;
  if (!path.Append(name)) return false;
  NPlatform& platform = m_store.Platform();
  NUnicodeString folder = path.Under(m_store.Root(), platform.PathSeparator());
  if (platform.GetPathKind(folder) == NPathKind::kFolder) return true;
  folder += kKeyFileSuffix;
  if (platform.GetPathKind(folder) == NPathKind::kFile) return true;
  NUnicodeString parent;
  if (!NFindKeyPath(platform, m_store.Root(), path.Parent(), u"", &parent)) return false;
  NUnicodeString fileName(path.Leaf());
  fileName += kKeyFileSuffix;
  const std::u16string_view names[] = {path.Leaf(), fileName};
  std::vector<NFolderEntry> matches;
  if (!NListIgnoringCase(platform, parent, names, &matches)) return false;
  return std::any_of(matches.begin(), matches.end(), [&path](const NFolderEntry& entry) {
    const bool isFolderName = NUnicodeString::CompareIgnoreCase(entry.name, path.Leaf()) == 0;
    return entry.kind == (isFolderName ? NPathKind::kFolder : NPathKind::kFile);
  });
}

std::unique_ptr<NProfileKey> NIniFileKey::OpenSubKey(std::u16string_view name, NReportMessageParams& params) {
  NKeyPath path;
  if (!m_path.Child(name, &path)) {
    NReportStatus(NStatus::Error(NStatus::kInvalidParameter, "open key (not a valid key name)", name), params);
    return nullptr;
  }
  return Open(m_store, std::move(path), m_readOnly, params);
}

std::unique_ptr<NIniFileKey> NIniFileKey::OpenFolderSubKey(std::u16string_view name) const {
  NKeyPath path;
  if (!m_path.Child(name, &path)) return nullptr;
  std::unique_ptr<NIniFileKey> key(new NIniFileKey(m_store, std::move(path), m_readOnly));
  key->m_map = std::make_unique<Map>();
  ++key->m_tableGeneration;
  return key;
}

std::unique_ptr<NProfileKeyIterator> NIniFileKey::CreateIterator(bool values) {
  if (values) return std::make_unique<Iterator>(*this);
  // The folder as the key spells it, with one listing; a folder reached
  // through a link is refused, as a key file would be.
  NPlatform& platform = m_store.Platform();
  NUnicodeString folder = FolderPath();
  std::vector<NFolderEntry> entries;
  NStatus listed = platform.ListFolderWithoutLinks(folder, &entries);
  if (listed.IsNotFound() && !m_path.IsRoot()) {
    // Only a folder missing as spelled pays for the search by case.
    NUnicodeString found;
    if (NStatus way = NFindKeyPath(platform, m_store.Root(), m_path, u"", &found); !way.IsNotFound()) {
      listed = way ? platform.ListFolderWithoutLinks(found, &entries) : std::move(way);
      folder = std::move(found);
    }
  }
  return std::make_unique<Iterator>(folder, std::move(listed), std::move(entries));
}
