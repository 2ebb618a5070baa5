#include "config/NProfileData.h"

#include "config/NSecretKeys.h"
#include "location/NStatusReport.h"
#include "platform/NStatus.h"

NProfileData* NProfileRecord::FindField(std::u16string_view name) const {
  for (NProfileData* field : m_fields) {
    if (field->Name() == name) return field;
  }
  return nullptr;
}

std::size_t NProfileRecord::ReadFields(const NProfileKey& key) {
  std::size_t found = 0;
  for (NProfileData* field : m_fields) found += field->Read(key) ? 1 : 0;
  return found;
}

bool NProfileRecord::WriteFields(NProfileKey& key, bool all) {
  NReportMessageParams ignored;
  return WriteFields(key, all, ignored);
}

bool NProfileRecord::WriteFields(NProfileKey& key, bool all, NReportMessageParams& params) {
  bool ok = true;
  for (NProfileData* field : m_fields) {
    if (field->Write(key, all)) continue;
    // The first refusal is reported; every one's note is taken, so none is
    // left behind for a later save.
    NReportMessageParams why;
    if (!NTakeSecretRefusal(&why)) NReportRefusedValue(key, *field, why);
    if (ok) params = why;
    ok = false;
  }
  return ok;
}

bool NProfileRecord::IsModified() const {
  for (const NProfileData* field : m_fields) {
    if (field->IsModified()) return true;
  }
  return false;
}

void NProfileRecord::Revert() {
  for (NProfileData* field : m_fields) field->Revert();
}

void NProfileRecord::Reset() {
  for (NProfileData* field : m_fields) field->Reset();
}

bool NHasValue(const NProfileKey& key, std::u16string_view name) {
  std::uint32_t dword;
  NUnicodeString text;
  NStringArray strings;
  std::uint32_t length = 0;
  // The kinds that copy nothing first.
  return key.GetDwordValue(name, &dword) || key.GetBinaryValue(name, nullptr, &length) ||
         key.GetStringValue(name, &text) || key.GetMultiStringValue(name, &strings);
}

NStringArray NReadListValue(const NProfileKey& key, std::u16string_view name) {
  NStringArray items;
  if (key.GetMultiStringValue(name, &items)) return items;
  NUnicodeString joined;
  if (!key.GetStringValue(name, &joined)) return items;
  std::size_t begin = 0;
  while (begin <= joined.size()) {
    std::size_t end = joined.find(u';', begin);
    if (end == NUnicodeString::npos) end = joined.size();
    if (end > begin) items.Add(NUnicodeString(std::u16string_view(joined).substr(begin, end - begin)));
    begin = end + 1;
  }
  return items;
}

void NReportRefusedValue(const NProfileKey& key, const NProfileData& field, NReportMessageParams& params) {
  NUnicodeString where = key.GetPath();
  where += u": ";
  where += field.Name();
  NReportStatus(NStatus::Error(NStatus::kInvalidParameter, "store the value", where), params);
}
