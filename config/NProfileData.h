#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "base/NUnicodeString.h"
#include "store/NProfileKey.h"

class NProfileRecord;
struct NFieldValue;

// One typed field of a record, bound to a value name under the record's
// key. The typed fields (NProfile2 and its aliases) derive from it; a record
// walks its fields through this interface to load and save them.
class NProfileData {
 public:
  // Registers the field with `record`, in declaration order (a null record
  // makes a field of its own). `name` must outlive the field (records pass
  // literals).
  // Inlined into the record's constructor, which makes hundreds of fields:
  // a call each would cost more than the registration itself.
  [[gnu::always_inline]] inline NProfileData(NProfileRecord* record, std::u16string_view name);
  NProfileData(const NProfileData&) = delete;
  NProfileData& operator=(const NProfileData&) = delete;
  virtual ~NProfileData() = default;

  std::u16string_view Name() const { return m_name; }
  // Binds the field to another value name, kept in the field.
  void Rename(std::u16string_view name) {
    m_ownedName = std::make_unique<NUnicodeString>(name);
    m_name = *m_ownedName;
  }

  // Reads the value from `key`: true when it was present and readable, and
  // is then both the current and the loaded value. Otherwise the field keeps
  // what it holds.
  virtual bool Read(const NProfileKey& key) = 0;
  // Writes the value to `key` when it is modified, or always when `all`;
  // the written value becomes the loaded one. False when the key refused it.
  virtual bool Write(NProfileKey& key, bool all) = 0;
  // Current value differs from the one last loaded or saved.
  virtual bool IsModified() const = 0;
  // Takes the loaded value back.
  virtual void Revert() = 0;
  // Takes the default back, as current and as loaded value.
  virtual void Reset() = 0;
  // Counts the field as modified until it is saved, whatever it holds.
  virtual void Touch() = 0;
  // The current value, for printing.
  virtual NFieldValue Describe() const = 0;
  // Takes the current value of `other`, a field of the same type.
  virtual void CopyFrom(const NProfileData& other) = 0;

 private:
  std::u16string_view m_name;
  std::unique_ptr<NUnicodeString> m_ownedName;  // only for a renamed field
};

// A record: the fields declared in it, in declaration order.
class NProfileRecord {
 public:
  // Records hold tens to hundreds of fields: `fields` is room for them
  // ahead of their declaration.
  explicit NProfileRecord(std::size_t fields = 64) { m_fields.reserve(fields); }
  // Fields point back at their record: a record is never copied or moved.
  NProfileRecord(const NProfileRecord&) = delete;
  NProfileRecord& operator=(const NProfileRecord&) = delete;
  virtual ~NProfileRecord() = default;

  const std::vector<NProfileData*>& Fields() const { return m_fields; }
  // The field bound to `name`, or null. For tools and tests; hosts read the
  // members.
  NProfileData* FindField(std::u16string_view name) const;

  // Reads every field from `key`; the count of values found.
  std::size_t ReadFields(const NProfileKey& key);
  // Writes every field with the save flag `all`; false when any was refused.
  bool WriteFields(NProfileKey& key, bool all);
  // As WriteFields; a refused value is reported in params, naming the key.
  bool WriteFields(NProfileKey& key, bool all, NReportMessageParams& params);
  bool IsModified() const;
  void Revert();
  void Reset();

 private:
  friend class NProfileData;
  std::vector<NProfileData*> m_fields;
};

NProfileData::NProfileData(NProfileRecord* record, std::u16string_view name) : m_name(name) {
  if (record) record->m_fields.push_back(this);
}

// Whether `key` holds a value called `name`, of any kind.
bool NHasValue(const NProfileKey& key, std::u16string_view name);

// A list of strings as older records kept it: a multi-string already, or one
// string of items separated by ";" (empty items dropped). Empty when absent.
NStringArray NReadListValue(const NProfileKey& key, std::u16string_view name);

// Reports in params that `key` refused a value of `field` (a text holding a
// line break, say), so nothing of it was saved.
void NReportRefusedValue(const NProfileKey& key, const NProfileData& field, NReportMessageParams& params);
