#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "base/NStringArray.h"
#include "config/NConfigTypes.h"
#include "config/NProfileData.h"
#include "config/NSecretKeys.h"

// What a field holds, in a form tools can print without knowing its type.
struct NFieldValue {
  enum class Kind { kBoolean, kNumber, kString, kStrings, kBytes };
  Kind kind = Kind::kNumber;
  bool boolean = false;
  std::int64_t number = 0;
  NUnicodeString text;
  NStringArray strings;
  NBytes bytes;
};

// Storage kinds: how a field's type is kept in one kind of store value.
// Each offers Read (true and the value when present and convertible, else
// false with the value untouched), Write, Kind, and Describe.

// DWORD values: booleans, 8-, 16- and 32-bit integers, tri-states, colours.
struct NProfileDword {
  template <typename T>
  static bool Read(const NProfileKey& key, std::u16string_view name, T* value) {
    std::uint32_t stored;
    if (!key.GetDwordValue(name, &stored)) return false;
    if constexpr (std::is_same_v<T, bool>) {
      *value = stored != 0;
    } else {
      *value = static_cast<T>(stored);  // narrower integers keep their low bits
    }
    return true;
  }
  template <typename T>
  static bool Write(NProfileKey& key, std::u16string_view name, const T& value) {
    if constexpr (std::is_same_v<T, NTriState>) {
      if (value == NTriState::kDefault) return true;  // the third state writes nothing
    }
    std::uint32_t stored;
    if constexpr (std::is_enum_v<T>) {
      stored = static_cast<std::uint32_t>(value);
    } else if constexpr (std::is_signed_v<T>) {
      stored = static_cast<std::uint32_t>(static_cast<std::int32_t>(value));
    } else {
      stored = static_cast<std::uint32_t>(value);
    }
    return key.SetDwordValue(name, stored);
  }
  template <typename T>
  static NFieldValue Describe(const T& value) {
    NFieldValue out;
    if constexpr (std::is_same_v<T, bool>) {
      out.kind = NFieldValue::Kind::kBoolean;
      out.boolean = value;
    } else if constexpr (std::is_enum_v<T>) {
      out.number = static_cast<std::int64_t>(value);
    } else {
      out.number = static_cast<std::int64_t>(value);
    }
    return out;
  }
};

// String values: texts, encrypted strings, and file times (as the decimal
// count of their ticks).
struct NProfileSz {
  static bool Read(const NProfileKey& key, std::u16string_view name, NUnicodeString* value) {
    return key.GetStringValue(name, value);
  }
  static bool Write(NProfileKey& key, std::u16string_view name, const NUnicodeString& value) {
    return key.SetStringValue(name, value);
  }
  static NFieldValue Describe(const NUnicodeString& value) { return Text(value); }

  static bool Read(const NProfileKey& key, std::u16string_view name, NEncryptedString* value) {
    NUnicodeString stored;
    if (!key.GetStringValue(name, &stored)) return false;
    *value = NEncryptedString::FromStored(std::move(stored));
    return true;
  }
  // Seals a plain value for its place, the key's path and the name; false
  // when there is no key to seal it with (nothing is written).
  static bool Write(NProfileKey& key, std::u16string_view name, const NEncryptedString& value);
  // A plain value not sealed yet shows as "(not saved)": never its text.
  static NFieldValue Describe(const NEncryptedString& value) {
    return Text(value.IsPlain() ? NUnicodeString(u"(not saved)") : value.Stored());
  }

  static bool Read(const NProfileKey& key, std::u16string_view name, NFileTime* value);
  static bool Write(NProfileKey& key, std::u16string_view name, const NFileTime& value);
  static NFieldValue Describe(const NFileTime& value);

 private:
  static NFieldValue Text(const NUnicodeString& value) {
    NFieldValue out;
    out.kind = NFieldValue::Kind::kString;
    out.text = value;
    return out;
  }
};

// String values that may hold line breaks, which a key file cannot: stored
// with CR, LF and the backslash escaped as \r, \n and \\, as command
// strings are written elsewhere.
struct NProfileEscapedSz {
  static bool Read(const NProfileKey& key, std::u16string_view name, NUnicodeString* value);
  static bool Write(NProfileKey& key, std::u16string_view name, const NUnicodeString& value);
  static NFieldValue Describe(const NUnicodeString& value) { return NProfileSz::Describe(value); }
};

// Multi-string values: string lists.
struct NProfileMultiSz {
  static bool Read(const NProfileKey& key, std::u16string_view name, NStringArray* value) {
    return key.GetMultiStringValue(name, value);
  }
  static bool Write(NProfileKey& key, std::u16string_view name, const NStringArray& value) {
    return key.SetMultiStringValue(name, value);
  }
  static NFieldValue Describe(const NStringArray& value) {
    NFieldValue out;
    out.kind = NFieldValue::Kind::kStrings;
    out.strings = value;
    return out;
  }
};

// Binary values: fixed structures, read only when the stored length is
// exactly theirs, and variable byte strings.
struct NProfileBinary {
  template <NFixedStructure T>
  static bool Read(const NProfileKey& key, std::u16string_view name, T* value) {
    std::uint32_t length = 0;
    if (!key.GetBinaryValue(name, nullptr, &length) || length != sizeof(T)) return false;
    T read;
    if (!key.GetBinaryValue(name, &read, &length) || length != sizeof(T)) return false;
    *value = read;
    return true;
  }
  template <NFixedStructure T>
  static bool Write(NProfileKey& key, std::u16string_view name, const T& value) {
    return key.SetBinaryValue(name, &value, sizeof(T));
  }
  template <NFixedStructure T>
  static NFieldValue Describe(const T& value) {
    return Bytes(NBytes(reinterpret_cast<const char*>(&value), sizeof(T)));
  }

  static bool Read(const NProfileKey& key, std::u16string_view name, NBytes* value);
  static bool Write(NProfileKey& key, std::u16string_view name, const NBytes& value) {
    return key.SetBinaryValue(name, value.data(), static_cast<std::uint32_t>(value.size()));
  }
  static NFieldValue Describe(const NBytes& value) { return Bytes(value); }

 private:
  static NFieldValue Bytes(NBytes bytes) {
    NFieldValue out;
    out.kind = NFieldValue::Kind::kBytes;
    out.bytes = std::move(bytes);
    return out;
  }
};

// A typed field: a value of type T kept in the store kind `Data`, with its
// default, its current value and the value last loaded or saved.
template <typename T, typename Data>
class NProfile2 final : public NProfileData {
 public:
  // Records make hundreds of fields: each default is built in place, from
  // nothing or from what the record passes (a text literal, say), never made
  // first and moved, which costs a copy for a short string.
  NProfile2(NProfileRecord* record, std::u16string_view name) : NProfileData(record, name), m_default() {}
  NProfile2(NProfileRecord* record, std::u16string_view name, T defaultValue)
      : NProfileData(record, name), m_default(std::move(defaultValue)) {}
  template <typename Arg, typename = std::enable_if_t<!std::is_same_v<std::decay_t<Arg>, T>>>
  NProfile2(NProfileRecord* record, std::u16string_view name, Arg&& defaultValue)
      : NProfileData(record, name), m_default(std::forward<Arg>(defaultValue)) {}
  // Records declare their fields by literal: the names' lengths are known
  // here rather than counted each time a record is made.
  template <std::size_t N>
  NProfile2(NProfileRecord* record, const char16_t (&name)[N]) : NProfile2(record, std::u16string_view(name, N - 1)) {}
  template <std::size_t N>
  NProfile2(NProfileRecord* record, const char16_t (&name)[N], T defaultValue)
      : NProfile2(record, std::u16string_view(name, N - 1), std::move(defaultValue)) {}
  template <std::size_t N, typename Arg, typename = std::enable_if_t<!std::is_same_v<std::decay_t<Arg>, T>>>
  NProfile2(NProfileRecord* record, const char16_t (&name)[N], Arg&& defaultValue)
      : NProfile2(record, std::u16string_view(name, N - 1), std::forward<Arg>(defaultValue)) {}

  const T& Get() const { return m_valueIsDefault ? m_default : m_value; }
  const T& Loaded() const { return m_loadedIsValue ? Get() : m_loaded; }
  const T& Default() const { return m_default; }
  operator const T&() const { return Get(); }
  void Set(T value) {
    KeepLoaded();
    m_value = std::move(value);
    m_valueIsDefault = false;
  }
  NProfile2& operator=(T value) {
    Set(std::move(value));
    return *this;
  }
  // Takes the other field's current value.
  void CopyFrom(const NProfile2& other) { Set(other.Get()); }
  void CopyFrom(const NProfileData& other) override { CopyFrom(dynamic_cast<const NProfile2&>(other)); }
  // Makes `value` the current and the loaded value, as a read would.
  void Load(T value) {
    m_value = std::move(value);
    m_valueIsDefault = false;
    m_loadedIsValue = true;
    m_touched = false;
  }
  // Counts the field as modified until it is saved, whatever it holds: a
  // value converted from an older name must reach its new name.
  void Touch() override { m_touched = true; }

  bool Read(const NProfileKey& key) override {
    // Straight into the current value, whose room a string reuses: a storage
    // kind leaves it untouched when the value is absent or unreadable.
    m_found = Data::Read(key, Name(), &m_value);
    if (m_found) {
      m_valueIsDefault = false;
      m_loadedIsValue = true;
      m_touched = false;
      // A secret stored before values were sealed is sealed at the next save.
      if constexpr (std::is_same_v<T, NEncryptedString>) m_touched = m_value.IsUnsealed() && NHasSecretKeySource();
    }
    return m_found;
  }
  // Whether the last Read found the value: a record's own later steps ask
  // this rather than read the value again.
  bool Found() const { return m_found; }
  bool Write(NProfileKey& key, bool all) override {
    if (!all && !IsModified()) return true;
    if (!Data::Write(key, Name(), Get())) return false;
    m_loadedIsValue = true;
    m_touched = false;
    return true;
  }
  bool IsModified() const override { return m_touched || (!m_loadedIsValue && !(Get() == m_loaded)); }
  void Revert() override {
    if (!m_loadedIsValue) {
      m_value = std::move(m_loaded);
      m_valueIsDefault = false;
    }
    m_loadedIsValue = true;
    m_touched = false;
  }
  void Reset() override {
    m_valueIsDefault = true;
    m_loadedIsValue = true;
    m_touched = false;
  }
  NFieldValue Describe() const override { return Data::Describe(Get()); }

 private:
  // Before the current value changes: the loaded one gets a copy of its own.
  void KeepLoaded() {
    if (!m_loadedIsValue) return;
    m_loaded = m_valueIsDefault ? m_default : std::move(m_value);
    m_loadedIsValue = false;
  }

  // A record makes a few hundred fields and reads most of them once, and
  // never sets most: the current value is the default until it is read or
  // set, and the loaded value is the current one until that changes, so
  // that neither costs a copy of its own.
  T m_default;
  T m_value;   // unless m_valueIsDefault
  T m_loaded;  // unless m_loadedIsValue
  bool m_valueIsDefault = true;
  bool m_loadedIsValue = true;
  bool m_touched = false;
  bool m_found = false;
};

template <typename T>
using NProfile = NProfile2<T, NProfileDword>;
using NProfileBool = NProfile<bool>;
using NProfileInt = NProfile<std::int32_t>;
using NProfileUInt = NProfile<std::uint32_t>;
using NProfileShort = NProfile<std::int16_t>;
using NProfileTriState = NProfile<NTriState>;
using NProfileColor = NProfile<NColor>;
using NProfileString = NProfile2<NUnicodeString, NProfileSz>;
using NProfileEscapedString = NProfile2<NUnicodeString, NProfileEscapedSz>;
using NProfileEncrypted = NProfile2<NEncryptedString, NProfileSz>;
using NProfileTime = NProfile2<NFileTime, NProfileSz>;
using NProfileStrings = NProfile2<NStringArray, NProfileMultiSz>;
template <typename T>
using NProfileStruct = NProfile2<T, NProfileBinary>;
using NProfileBytes = NProfile2<NBytes, NProfileBinary>;
