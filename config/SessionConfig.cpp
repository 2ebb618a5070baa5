#include "config/SessionConfig.h"

SessionConfig::SessionConfig() : NProfileRecord(112) {}

SessionConfig::~SessionConfig() = default;

NStringArray SessionConfig::DefaultScpShellPrompts() {
  // One prompt: the text, a number, and the reply, in their quoted form.
  NStringArray prompts;
  prompts.Add(NUnicodeString(u"\"? \",0,\"\\n\""));
  return prompts;
}

ProfileExpectSendList SessionConfig::LoginScript() const {
  ProfileExpectSendList script;
  if (!ProfileExpectSendList::FromStrings(m_loginScriptStrings.Get(), &script)) return {};
  return script;
}

bool SessionConfig::MigrateLoginScript(NProfileKey& key) {
  constexpr std::u16string_view kVersion1 = u"Login Script";
  constexpr std::u16string_view kVersion2 = u"Login Script V2";
  if (NHasValue(key, m_loginScriptStrings.Name())) return false;
  ProfileExpectSendList converted;
  bool found = false;
  NUnicodeString text;
  const bool version1 = key.GetStringValue(kVersion1, &text) && !text.empty();
  if (version1) {
    converted = ProfileExpectSendList::FromVersion1(text);
    found = true;
  }
  NStringArray lines;
  const bool version2 = key.GetMultiStringValue(kVersion2, &lines) && !lines.empty();
  if (version2) {
    converted = ProfileExpectSendList::FromVersion2(lines);  // the newer form wins
    found = true;
  }
  if (!found) return false;
  key.SetMultiStringValue(m_loginScriptStrings.Name(), converted.ToStrings());
  if (version1) key.SetStringValue(kVersion1, u"");
  if (version2) key.SetStringValue(kVersion2, u"");
  return true;
}

void SessionConfig::CarryForwardOlderNames(const NProfileKey& key) {
  // The newest name wins; an older one is read only when it is absent, and
  // then saved under the new name.
  auto carry = [&key](auto& field, std::u16string_view oldName) {
    if (field.Found() || NHasValue(key, field.Name())) return;
    using Field = std::remove_reference_t<decltype(field)>;
    Field older(nullptr, oldName);
    if (!older.Read(key)) return;
    field.Set(older.Get());
    field.Touch();
  };
  carry(m_monitorPassword, u"Monitor Password");
  carry(m_scpShellPassword, u"SCP Shell Password");
  carry(m_pgpUploadCommand, u"PGP Upload Command");
  carry(m_pgpDownloadCommand, u"PGP Download Command");
}

bool SessionConfig::Load(NProfileKey& key, NReportMessageParams& params) {
  ReadFields(key);
  const bool migrated = !m_loginScriptStrings.Found() && MigrateLoginScript(key);
  if (migrated) m_loginScriptStrings.Read(key);
  CarryForwardOlderNames(key);
  m_connect.ReadFields(key);
  m_terminal.Load(key);
  // The converted script is written at once, so that it never runs twice;
  // a read-only key keeps it in memory.
  if (migrated && key.IsWritable()) return key.Flush(params);
  return true;
}

bool SessionConfig::Save(NProfileKey& key, bool all, NReportMessageParams& params) {
  // A refused value fails the save before anything reaches the file.
  if (!WriteFields(key, all, params) || !m_connect.WriteFields(key, all, params) ||
      !m_terminal.WriteFields(key, all, params)) {
    return false;
  }
  return key.Flush(params);
}

std::vector<NProfileData*> SessionConfig::AllFields() const {
  std::vector<NProfileData*> fields = Fields();
  fields.insert(fields.end(), m_connect.Fields().begin(), m_connect.Fields().end());
  fields.insert(fields.end(), m_terminal.Fields().begin(), m_terminal.Fields().end());
  return fields;
}

bool SessionConfig::IsModified() const {
  return NProfileRecord::IsModified() || m_connect.IsModified() || m_terminal.IsModified();
}

void SessionConfig::CopyFrom(const SessionConfig& other) {
  const std::vector<NProfileData*> mine = AllFields();
  const std::vector<NProfileData*> theirs = other.AllFields();
  for (std::size_t i = 0; i < mine.size(); ++i) mine[i]->CopyFrom(*theirs[i]);
}
