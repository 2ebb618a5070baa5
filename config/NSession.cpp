#include "config/NSession.h"

#include <mutex>
#include <set>

#include "config/NSessionPath.h"
#include "config/NSessionTree.h"
#include "location/NStatusReport.h"
#include "platform/NStatus.h"
#include "store/NProfileStoreFactory.h"

namespace {

constexpr std::u16string_view kSessionsKey = u"Sessions";
constexpr std::u16string_view kDefaultSession = u"Default";

std::mutex g_lockedMutex;  // guards g_locked
std::set<NUnicodeString> g_locked;

bool IsLocked(std::u16string_view path) {
  std::lock_guard<std::mutex> lock(g_lockedMutex);
  return g_locked.count(NUnicodeString(path)) != 0;
}

bool Fail(std::uint32_t code, const char* operation, std::u16string_view path, NReportMessageParams& params) {
  NReportStatus(NStatus::Error(code, operation, path), params);
  return false;
}

bool SameValue(const NFieldValue& a, const NFieldValue& b) {
  return a.kind == b.kind && a.boolean == b.boolean && a.number == b.number && a.text == b.text &&
         a.strings == b.strings && a.bytes == b.bytes;
}

}  // namespace

std::unique_ptr<NProfileKey> NSession::OpenKey(NProfileStore& store, std::u16string_view path, bool readOnly,
                                               NReportMessageParams& params) {
  std::unique_ptr<NProfileKey> root = store.OpenRootKey(readOnly, params);
  if (!root) return nullptr;
  NUnicodeString relative(kSessionsKey);
  if (!path.empty()) {
    relative += u'\\';
    relative += path;
  }
  return root->OpenSubKey(relative, params);
}

bool NSession::Exists(NProfileStore& store, std::u16string_view path) {
  NReportMessageParams ignored;
  std::unique_ptr<NProfileKey> key = OpenKey(store, path, true, ignored);
  std::uint32_t isSession;
  return key && key->GetDwordValue(SessionConfig::kIsSessionName, &isSession);
}

NSession::NSession(NUnicodeString path, bool readOnly) : m_path(std::move(path)), m_readOnly(readOnly) {}

NUnicodeString NSession::Name() const { return NUnicodeString(NSessionNameOf(m_path)); }

bool NSession::IsReadOnly() const { return m_readOnly || m_lockedByHost || IsLocked(m_path); }

bool NSession::Save(NReportMessageParams& params) {
  if (IsReadOnly()) return Fail(NStatus::kAccessDenied, "save the read-only session", m_path, params);
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(NStatus::kInvalidHandle, "save the session (no store)", m_path, params);
  std::unique_ptr<NProfileKey> key = OpenKey(*store, m_path, false, params);
  if (!key || !m_config.Save(*key, m_unsaved, params)) return false;
  m_unsaved = false;
  return true;
}

bool NSession::WriteCopy(std::u16string_view path, NReportMessageParams& params) const {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(NStatus::kInvalidHandle, "write the session (no store)", path, params);
  std::unique_ptr<NProfileKey> key = OpenKey(*store, path, false, params);
  if (!key) return false;
  // A copy of the current values, every one of them, into a key of its own.
  SessionConfig copy;
  copy.CopyFrom(m_config);
  return copy.Save(*key, true, params);
}

bool NSession::DeleteKey(std::u16string_view path, NReportMessageParams& params) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(NStatus::kInvalidHandle, "delete the session (no store)", path, params);
  std::unique_ptr<NProfileKey> parent = OpenKey(*store, NSessionFolderOf(path), false, params);
  if (!parent) return false;
  return parent->DeleteSubKey(NSessionNameOf(path), params);
}

bool NSession::Rename(std::u16string_view newName, NReportMessageParams& params) {
  if (IsReadOnly()) return Fail(NStatus::kAccessDenied, "rename the read-only session", m_path, params);
  NUnicodeString newPath = NJoinSessionPath(NSessionFolderOf(m_path), newName);
  if (newPath == m_path) return true;
  // The new key is written before the old one goes, so a failure midway
  // leaves two copies, never none. A change of case only may name the same
  // file, so it goes through a name of its own first.
  if (NUnicodeString::CompareIgnoreCase(newPath, m_path) == 0) {
    NUnicodeString step = newPath;
    step += u"~rename";
    if (!WriteCopy(step, params) || !DeleteKey(m_path, params) || !WriteCopy(newPath, params) ||
        !DeleteKey(step, params)) {
      return false;
    }
  } else if (!WriteCopy(newPath, params) || !DeleteKey(m_path, params)) {
    return false;
  }
  m_path = std::move(newPath);
  m_unsaved = false;
  return true;
}

ISessionConfig* NSession::Copy(std::u16string_view newPath, NReportMessageParams& params) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) {
    Fail(NStatus::kInvalidHandle, "copy the session (no store)", newPath, params);
    return nullptr;
  }
  if (Exists(*store, newPath)) {
    Fail(NStatus::kAlreadyExists, "copy the session to", newPath, params);
    return nullptr;
  }
  if (!WriteCopy(newPath, params)) return nullptr;
  return NOpenSession(newPath, false, params);
}

bool NSession::Delete(NReportMessageParams& params) {
  if (IsReadOnly()) return Fail(NStatus::kAccessDenied, "delete the read-only session", m_path, params);
  return DeleteKey(m_path, params);
}

void NSession::PreEdit() {
  m_snapshot.clear();
  for (const NProfileData* field : m_config.AllFields()) m_snapshot.push_back(field->Describe());
}

bool NSession::IsModified() const {
  if (m_snapshot.empty()) return m_config.IsModified();
  const std::vector<NProfileData*> fields = m_config.AllFields();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (!SameValue(fields[i]->Describe(), m_snapshot[i])) return true;
  }
  return false;
}

bool NSession::ApplyDefaultChanges(std::uint32_t* sessions, std::uint32_t* updated, NReportMessageParams& params) {
  *sessions = 0;
  *updated = 0;
  const std::vector<NProfileData*> fields = m_config.AllFields();
  std::vector<std::size_t> changed;
  for (std::size_t i = 0; i < fields.size() && i < m_snapshot.size(); ++i) {
    if (!SameValue(fields[i]->Describe(), m_snapshot[i])) changed.push_back(i);
  }
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(NStatus::kInvalidHandle, "update the sessions (no store)", m_path, params);
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params);
  if (!root) return false;
  std::vector<NUnicodeString> paths;
  NSessionTree tree(*root);
  const bool walked = tree.Walk(
      [&](const NSessionTreeEntry& entry) {
        if (entry.isSession && NUnicodeString::CompareIgnoreCase(entry.path, m_path) != 0) paths.push_back(entry.path);
        return true;
      },
      params);
  if (!walked) return false;
  for (const NUnicodeString& path : paths) {
    ++*sessions;
    if (changed.empty() || IsLocked(path)) continue;
    NReportMessageParams ignored;
    std::unique_ptr<NProfileKey> key = OpenKey(*store, path, false, ignored);
    SessionConfig session;
    if (!key || !session.Load(*key, ignored)) continue;
    const std::vector<NProfileData*> theirs = session.AllFields();
    for (const std::size_t i : changed) theirs[i]->CopyFrom(*fields[i]);
    if (session.Save(*key, false, ignored)) ++*updated;
  }
  return true;
}

ISessionConfig* NOpenSession(std::u16string_view path, bool readOnly, NReportMessageParams& params) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) {
    Fail(NStatus::kInvalidHandle, "open the session (no store)", path, params);
    return nullptr;
  }
  const bool locked = readOnly || IsLocked(path);
  std::unique_ptr<NProfileKey> key = NSession::OpenKey(*store, path, locked, params);
  if (!key) return nullptr;
  std::uint32_t isSession;
  if (!key->GetDwordValue(SessionConfig::kIsSessionName, &isSession)) {
    Fail(NStatus::kFileNotFound, "open the session", path, params);
    return nullptr;
  }
  auto* session = new NSession(NUnicodeString(path), locked);
  if (!session->Config().Load(*key, params)) {
    session->Release();
    return nullptr;
  }
  return session;
}

ISessionConfig* NCreateSession(std::u16string_view path, NReportMessageParams& params) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) {
    Fail(NStatus::kInvalidHandle, "create the session (no store)", path, params);
    return nullptr;
  }
  if (NSession::Exists(*store, path)) {
    Fail(NStatus::kAlreadyExists, "create the session", path, params);
    return nullptr;
  }
  auto* session = new NSession(NUnicodeString(path), false);
  SessionConfig& config = session->Config();
  NReportMessageParams ignored;
  std::unique_ptr<NProfileKey> defaults = NSession::OpenKey(*store, kDefaultSession, true, ignored);
  if (defaults && NSession::Exists(*store, kDefaultSession)) {
    SessionConfig model;
    model.Load(*defaults, ignored);
    config.CopyFrom(model);
    // What names one connection stays the record's own.
    config.m_connect.m_hostname.Reset();
    config.m_connect.m_username.Reset();
    config.m_connect.m_password.Reset();
    config.m_description.Reset();
  }
  config.m_isSession = true;
  session->MarkUnsaved();
  return session;
}

void NSetSessionLocked(std::u16string_view path, bool locked) {
  std::lock_guard<std::mutex> lock(g_lockedMutex);
  if (locked) {
    g_locked.insert(NUnicodeString(path));
  } else {
    g_locked.erase(NUnicodeString(path));
  }
}
