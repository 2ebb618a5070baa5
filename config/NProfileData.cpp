#include "config/NProfileData.h"

NProfileData::NProfileData(NProfileRecord* record, std::u16string_view name) : m_name(name) {
  record->m_fields.push_back(this);
}

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
  bool ok = true;
  for (NProfileData* field : m_fields) ok = field->Write(key, all) && ok;
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
