#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "base/NStringArray.h"
#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"
#include "store/NProfileKeyIterator.h"
#include "store/NProfileValueType.h"
#include "store/NSecurityDescriptor.h"

// One key of a profile store: named, typed values and sub-keys. Records read
// and write their settings only through this interface; the backends (the
// INI folder store among them) implement it.
//
// Reading: a getter returns true when the value exists and has the asked
// kind; otherwise it returns false and leaves its output untouched, so the
// caller keeps its default. There is no conversion between kinds.
// Writing: setters change the key in memory and mark it modified; nothing
// reaches the backend before Flush. A setter replaces a value of the same
// name whatever its kind. A key opened read-only still accepts changes in
// memory but refuses Flush.
//
// Owned by whoever opened it, destroyed through the virtual destructor. Not
// thread-safe: one thread uses a key at a time.
class NProfileKey {
 public:
  NProfileKey() = default;
  NProfileKey(const NProfileKey&) = delete;
  NProfileKey& operator=(const NProfileKey&) = delete;

  // The slot order of the virtual operations below is fixed: backends of
  // other builds of the system are laid out the same way.

  virtual ~NProfileKey() = default;

  // Reads the text form from a multi-string value; failing that, a binary
  // value holding a valid self-relative descriptor.
  virtual bool GetSecurityDescriptorValue(std::u16string_view name, NSecurityDescriptor* value) const = 0;
  virtual bool GetMultiStringValue(std::u16string_view name, NStringArray* value) const = 0;
  // With a null buffer stores the value's length in *length. Otherwise fails
  // when *length is smaller than the value, and else copies the bytes and
  // stores their count in *length.
  virtual bool GetBinaryValue(std::u16string_view name, void* buffer, std::uint32_t* length) const = 0;
  virtual bool GetStringValue(std::u16string_view name, NUnicodeString* value) const = 0;
  virtual bool GetDwordValue(std::u16string_view name, std::uint32_t* value) const = 0;

  // Setters return false, changing nothing, when the backend cannot hold the
  // name or the value (for example a line break in a string of the INI
  // store).
  virtual bool SetSecurityDescriptorValue(std::u16string_view name, const NSecurityDescriptor& value) = 0;
  virtual bool SetMultiStringValue(std::u16string_view name, const NStringArray& value) = 0;
  virtual bool SetBinaryValue(std::u16string_view name, const void* data, std::uint32_t length) = 0;
  virtual bool SetStringValue(std::u16string_view name, std::u16string_view value) = 0;
  virtual bool SetDwordValue(std::u16string_view name, std::uint32_t value) = 0;

  // False when there was no such value.
  virtual bool DeleteValue(std::u16string_view name) = 0;
  // Deletes the sub-key with everything under it.
  virtual bool DeleteSubKey(std::u16string_view name, NReportMessageParams& params) = 0;
  virtual bool SubKeyExists(std::u16string_view name) const = 0;
  // False for a key opened read-only.
  virtual bool IsWritable() const = 0;
  // True for a key whose values live only in memory and are never written
  // anywhere. No backend of this library is volatile.
  virtual bool IsVolatile() const { return false; }
  // The key's path relative to the store's root, components separated by "\".
  virtual NUnicodeString GetPath() const = 0;
  // Reads the values again from the backend, discarding unsaved changes.
  virtual bool Reload(NReportMessageParams& params) = 0;
  // Saves the values to the backend.
  virtual bool Flush(NReportMessageParams& params) = 0;
  // Opens a sub-key by name or by a relative path of names separated by
  // "\"; it inherits this key's read-only state. Null when the name is not
  // valid or the key cannot be opened (params say why).
  virtual std::unique_ptr<NProfileKey> OpenSubKey(std::u16string_view name, NReportMessageParams& params) = 0;
  // An iterator over the sub-keys, or over the values when `values` is true.
  virtual std::unique_ptr<NProfileKeyIterator> CreateIterator(bool values) = 0;

  // Conveniences for callers that do not need the reason of a failure.
  bool Flush() {
    NReportMessageParams ignored;
    return Flush(ignored);
  }
  bool Reload() {
    NReportMessageParams ignored;
    return Reload(ignored);
  }
  std::unique_ptr<NProfileKey> OpenSubKey(std::u16string_view name) {
    NReportMessageParams ignored;
    return OpenSubKey(name, ignored);
  }
};
