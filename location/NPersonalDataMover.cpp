#include "location/NPersonalDataMover.h"

#include <chrono>
#include <cstdio>
#include <memory>

#include "config/NSessionTree.h"
#include "location/NPersonalDataFolder.h"
#include "location/NReportMessageRouter.h"
#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "store/NFindIgnoringCase.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"
#include "store/NProfileValueType.h"
#include "uicore/NAppName.h"

namespace {

bool IsSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

// The folder's absolute path with links resolved, as far as it exists; the
// missing rest as given.
NUnicodeString Normalized(NPlatform& platform, std::u16string_view path) {
  while (path.size() > 1 && IsSeparator(path.back())) path.remove_suffix(1);
  std::u16string canonical;
  if (platform.CanonicalPath(path, &canonical)) return NUnicodeString(std::move(canonical));
  const std::size_t cut = path.find_last_of(u"\\/");
  if (cut == std::u16string_view::npos || cut == 0) return NUnicodeString(path);
  NUnicodeString parent = Normalized(platform, path.substr(0, cut));
  if (parent.empty() || !IsSeparator(parent.back())) parent.push_back(platform.PathSeparator());
  parent += path.substr(cut + 1);
  return parent;
}

// Whether `inner` is `outer` or lies beneath it. Without case, on every
// system: refusing two folders that differ only in case is the safe mistake.
bool IsSameOrInside(std::u16string_view inner, std::u16string_view outer) {
  if (inner.size() < outer.size()) return false;
  if (NUnicodeString::CompareIgnoreCase(inner.substr(0, outer.size()), outer) != 0) return false;
  return inner.size() == outer.size() || IsSeparator(inner[outer.size()]) ||
         (!outer.empty() && IsSeparator(outer.back()));
}

NKeyPath SessionPath(std::u16string_view relative) {
  NKeyPath path;
  (void)path.Append(NSessionTree::kSessionsKey);
  (void)path.Append(relative);
  return path;
}

bool Failed(const NStatus& status, NReportMessageParams& params) {
  NReportStatus(status, params);
  return false;
}

// Copies one value of type `type` (a value type tag) from `from` to `to`.
bool CopyValue(const NProfileKey& from, NProfileKey& to, std::u16string_view name, std::uint32_t type) {
  switch (static_cast<NProfileValueType>(type)) {
    case NProfileValueType::kDword: {
      std::uint32_t value = 0;
      return from.GetDwordValue(name, &value) && to.SetDwordValue(name, value);
    }
    case NProfileValueType::kString: {
      NUnicodeString value;
      return from.GetStringValue(name, &value) && to.SetStringValue(name, value);
    }
    case NProfileValueType::kBinary: {
      std::uint32_t length = 0;
      if (!from.GetBinaryValue(name, nullptr, &length)) return false;
      std::string bytes(length, '\0');
      return from.GetBinaryValue(name, bytes.data(), &length) && to.SetBinaryValue(name, bytes.data(), length);
    }
    case NProfileValueType::kMultiString: {
      NStringArray value;
      return from.GetMultiStringValue(name, &value) && to.SetMultiStringValue(name, value);
    }
  }
  return false;
}

bool CopyFailed(const NKeyPath& path, std::u16string_view name, NReportMessageParams& params) {
  NUnicodeString where = path.Join(u'\\');
  where += u": ";
  where += name;
  return Failed(NStatus::Error(NStatus::kInvalidParameter, "copy value", where), params);
}

}  // namespace

NPersonalDataMover::NPersonalDataMover(NUnicodeString configFolder, NUnicodeString personalFolder, NPlatform& platform)
    : m_configFolder(std::move(configFolder)), m_personalFolder(std::move(personalFolder)), m_platform(platform) {}

NUnicodeString NPersonalDataMover::MergedFolderName(std::uint64_t fileTime) {
  using namespace std::chrono;
  constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
  const std::int64_t seconds =
      fileTime > kUnixEpochAsFileTime ? static_cast<std::int64_t>((fileTime - kUnixEpochAsFileTime) / 10000000) : 0;
  const sys_seconds time{std::chrono::seconds(seconds)};
  const sys_days day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss<std::chrono::seconds> clock(time - day);
  char stamp[32];
  std::snprintf(stamp, sizeof stamp, "%04d%02u%02u-%02d%02d%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  NUnicodeString name = u"Sessions-merged-";
  name += NUnicodeString::FromUtf8(stamp);
  return name;
}

bool NPersonalDataMover::CheckFolders(NReportMessageParams& params) const {
  if (m_configFolder.empty() || !m_platform.IsFolder(m_configFolder)) {
    return Failed(NStatus::Error(NStatus::kPathNotFound, "open the configuration folder", m_configFolder), params);
  }
  if (m_personalFolder.empty()) {
    return Failed(NStatus::Error(NStatus::kPathNotFound, "open the personal data folder", m_personalFolder), params);
  }
  // A personal data folder inside the configuration folder would travel
  // with it and show up among its keys; the same folder would have the
  // private files overwrite the main ones.
  const NUnicodeString config = Normalized(m_platform, m_configFolder);
  const NUnicodeString personal = Normalized(m_platform, m_personalFolder);
  if (IsSameOrInside(personal, config)) {
    params.Clear();
    params.SetCode(kMsgPersonalDataSameFolder);
    return false;
  }
  return true;
}

bool NPersonalDataMover::Stepped(std::size_t done, std::size_t total, NReportMessageParams& params) const {
  if (!m_step || m_step(done, total)) return true;
  params.Clear();
  params.SetCode(kMsgPersonalDataInterrupted);
  return false;
}

bool NPersonalDataMover::FindSessions(NIniFileStore& store, std::vector<Session>* sessions,
                                      NReportMessageParams& params) const {
  std::unique_ptr<NProfileKey> root = store.OpenRootKey(true, params);
  if (!root) return false;
  NSessionTree tree(*root);
  return tree.Walk(
      [sessions](const NSessionTreeEntry& entry) {
        if (!entry.isSession) return true;
        // The walk has read the main file already: whether it holds
        // personal values comes free.
        const auto* key = dynamic_cast<const NIniFileKey*>(entry.key);
        sessions->push_back({SessionPath(entry.path), entry.path, !key || key->Values().HasFixedData()});
        return true;
      },
      params);
}

bool NPersonalDataMover::Migrate(NReportMessageParams& params) {
  if (!CheckFolders(params)) return false;
  if (NStatus status = m_platform.CreateFolderChain(m_personalFolder, NFileSecurity::kOwnerOnly); !status) {
    return Failed(status, params);
  }
  NIniFileStore plain(m_configFolder, NUnicodeString(), m_platform);
  NIniFileStore split(m_configFolder, m_personalFolder, m_platform);
  std::vector<Session> sessions;
  if (!FindSessions(plain, &sessions, params)) return false;
  if (!Stepped(0, sessions.size(), params)) return false;

  for (std::size_t i = 0; i < sessions.size(); ++i) {
    const NKeyPath& path = sessions[i].path;
    if (sessions[i].personalInMain) {
      std::unique_ptr<NIniFileKey> main = NIniFileKey::Open(plain, path, true, params);
      if (!main) return false;
      std::unique_ptr<NIniFileKey> key = NIniFileKey::Open(split, path, false, params);
      if (!key) return false;
      bool copied = true;
      main->Values().ForEach([&](const NIniFileKey::Map::Element& element) {
        if (!copied || !main->Values().IsPersonal(element)) return;
        const NUnicodeString name = NUnicodeString::FromUtf8(element.Name());
        copied = CopyValue(*main, *key, name, static_cast<std::uint32_t>(element.Data()->TypeTag()));
        if (!copied) CopyFailed(path, name, params);
      });
      if (!copied || !key->Flush(params)) return false;
    }
    if (!Stepped(i + 1, sessions.size(), params)) return false;
  }
  return true;
}

bool NPersonalDataMover::FindPersonalKeys(NProfileKey& folder, const NUnicodeString& prefix,
                                          std::vector<NUnicodeString>* keys, NReportMessageParams& params) const {
  std::unique_ptr<NProfileKeyIterator> children = folder.CreateIterator(false);
  if (children && !NSessionTree::Listed(*children, params)) return false;
  NUnicodeString name;
  std::uint32_t kind = 0;
  while (children && children->Next(&name, &kind)) {
    if (NSessionTree::IsFolderData(name) || !NKeyPath::IsValidName(name)) continue;
    const NUnicodeString path = prefix.empty() ? name : prefix + u"\\" + name;
    std::unique_ptr<NProfileKey> child = folder.OpenSubKey(name, params);
    if (!child) return false;
    if (kind != kSubKeyFolder) {
      NUnicodeString value;
      if (child->CreateIterator(true)->NextName(&value)) keys->push_back(path);
    }
    if (kind != kSubKeyFile && !FindPersonalKeys(*child, path, keys, params)) return false;
  }
  return true;
}

bool NPersonalDataMover::MatchFolders(NIniFileStore& personal, const std::vector<Session>& sessions,
                                      KeySet* personalKeys, NReportMessageParams& params) const {
  std::unique_ptr<NProfileKey> root = personal.OpenRootKey(true, params);
  if (!root) return false;
  if (!root->SubKeyExists(NSessionTree::kSessionsKey)) return true;
  std::unique_ptr<NProfileKey> top = root->OpenSubKey(NSessionTree::kSessionsKey, params);
  if (!top) return false;
  std::vector<NUnicodeString> keys;
  if (!FindPersonalKeys(*top, NUnicodeString(), &keys, params)) return false;

  // Key names match without case, as the store opens them.
  KeySet known;
  for (const Session& session : sessions) known.insert(session.relative);
  bool matched = true;
  for (NUnicodeString& key : keys) {
    if (!known.count(key)) {
      NTrace(u"NPersonalDataMover: personal values for Sessions\\" + key + u", which is no session\n");
      matched = false;
    }
    personalKeys->insert(std::move(key));
  }
  if (!matched) {
    params.Clear();
    params.SetCode(kMsgPersonalDataMismatch);
  }
  return matched;
}

bool NPersonalDataMover::ArchiveMergedSessions(const NUnicodeString& personalRoot, NReportMessageParams& params) const {
  NKeyPath sessions;
  (void)sessions.Append(NSessionTree::kSessionsKey);
  NUnicodeString folder;
  if (!NFindKeyPath(m_platform, personalRoot, sessions, u"", &folder) || !m_platform.IsFolder(folder)) return true;
  NUnicodeString base = personalRoot;
  if (base.empty() || !IsSeparator(base.back())) base.push_back(m_platform.PathSeparator());
  base += MergedFolderName(m_platform.CurrentFileTime());
  NUnicodeString target = base;
  NStatus status = m_platform.MoveFile(folder, target);
  // Taken by a merge within the same second: numbered.
  for (int n = 2; !status && n < 100 && m_platform.GetPathKind(target) != NPathKind::kNone; ++n) {
    target = base + u"-" + NUnicodeString::FromUtf8(std::to_string(n));
    status = m_platform.MoveFile(folder, target);
  }
  return status ? true : Failed(status, params);
}

bool NPersonalDataMover::Merge(NReportMessageParams& params) {
  if (!CheckFolders(params)) return false;
  NIniFileStore plain(m_configFolder, NUnicodeString(), m_platform);
  std::vector<Session> sessions;
  if (!FindSessions(plain, &sessions, params)) return false;
  // No folder: nothing to merge (or a run that got as far as the renaming).
  std::unique_ptr<NIniFileStore> personal;
  KeySet personalKeys;
  if (m_platform.IsFolder(m_personalFolder)) {
    personal = std::make_unique<NIniFileStore>(m_personalFolder, NUnicodeString(), m_platform);
    if (!MatchFolders(*personal, sessions, &personalKeys, params)) return false;
  }
  if (!Stepped(0, sessions.size(), params)) return false;

  for (std::size_t i = 0; i < sessions.size(); ++i) {
    const NKeyPath& path = sessions[i].path;
    if (personalKeys.count(sessions[i].relative)) {
      std::unique_ptr<NIniFileKey> values = NIniFileKey::Open(*personal, path, true, params);
      if (!values) return false;
      std::unique_ptr<NIniFileKey> key = NIniFileKey::Open(plain, path, false, params);
      if (!key) return false;
      std::unique_ptr<NProfileKeyIterator> names = values->CreateIterator(true);
      NUnicodeString name;
      std::uint32_t type = 0;
      while (names->Next(&name, &type)) {
        if (!CopyValue(*values, *key, name, type)) return CopyFailed(path, name, params);
      }
      NReportMessageParams why;
      if (!key->Flush(why)) {
        NTrace(u"NPersonalDataMover: " + path.Join(u'\\') + u": " + why.GetText());
        params.Clear();
        params.SetCode(kMsgPersonalDataMergeFailed);
        params.AddArgument(NGetAppName());
        return false;
      }
    }
    if (!Stepped(i + 1, sessions.size(), params)) return false;
  }
  return !personal || ArchiveMergedSessions(personal->Root(), params);
}
