#pragma once

#include <cstdint>
#include <string_view>

#include "base/NStringArray.h"
#include "base/NUnicodeString.h"
#include "store/NProfileValueType.h"

class NTextFile;

// One value of an INI key, owned by the key's value table. The base's
// getters fail and its setters do nothing; each value class overrides only
// the getter and setter of its own kind, so asking a value for another kind
// fails without conversion.
//
// Values keep their text as UTF-8, the way the file holds it: a value read
// from a file points into the key's copy of that file and is decoded only
// when it is asked for; a value that was set owns its bytes.
class NIniFileData {
 public:
  NIniFileData() = default;
  NIniFileData(const NIniFileData&) = delete;
  NIniFileData& operator=(const NIniFileData&) = delete;

  // The slot order of these operations is fixed.
  virtual ~NIniFileData() = default;
  virtual bool GetMultiString(NStringArray* value) const;
  // The usual two calls: with no buffer stores the length; with a buffer
  // smaller than the value fails; otherwise copies and stores the length.
  virtual bool GetBinary(void* buffer, std::uint32_t* length) const;
  virtual bool GetString(NUnicodeString* value) const;
  virtual bool GetDword(std::uint32_t* value) const;
  virtual void SetMultiString(const NStringArray& value);
  virtual void SetBinary(const void* data, std::uint32_t length);
  virtual void SetString(std::u16string_view value);
  virtual void SetDword(std::uint32_t value);
  virtual NProfileValueType TypeTag() const = 0;
  // Appends the record of this value under `name` (UTF-8) to the file's
  // pending output.
  virtual void WriteRecord(NTextFile& file, std::string_view name) const = 0;

  // A copy that owns all its bytes, for moving a value out of a table that
  // is about to go away.
  virtual NIniFileData* CloneOwned() const = 0;
};

// A byte block that either points at bytes owned elsewhere (the key's text
// or its arena) or owns a heap copy.
class NIniBytes {
 public:
  NIniBytes() = default;
  NIniBytes(const NIniBytes&) = delete;
  NIniBytes& operator=(const NIniBytes&) = delete;
  ~NIniBytes() { Release(); }

  void Borrow(std::string_view bytes);
  void Own(std::string_view bytes);
  std::string_view View() const { return std::string_view(m_data, m_size); }

 private:
  void Release();

  const char* m_data = nullptr;
  std::uint32_t m_size = 0;
  bool m_owned = false;
};

class NIniFileDataDword final : public NIniFileData {
 public:
  explicit NIniFileDataDword(std::uint32_t value) : m_value(value) {}
  bool GetDword(std::uint32_t* value) const override;
  void SetDword(std::uint32_t value) override { m_value = value; }
  NProfileValueType TypeTag() const override { return NProfileValueType::kDword; }
  void WriteRecord(NTextFile& file, std::string_view name) const override;
  NIniFileData* CloneOwned() const override { return new NIniFileDataDword(m_value); }

 private:
  std::uint32_t m_value;
};

// A string: UTF-8 text without line breaks.
class NIniFileDataString final : public NIniFileData {
 public:
  // Points at `utf8`, which must outlive the value (or be replaced first).
  static NIniFileDataString* Borrowing(void* memory, std::string_view utf8);
  static NIniFileDataString* Owning(std::string_view utf8);

  bool GetString(NUnicodeString* value) const override;
  void SetString(std::u16string_view value) override;
  NProfileValueType TypeTag() const override { return NProfileValueType::kString; }
  void WriteRecord(NTextFile& file, std::string_view name) const override;
  NIniFileData* CloneOwned() const override { return Owning(m_text.View()); }
  std::string_view Utf8() const { return m_text.View(); }

 private:
  NIniFileDataString() = default;
  NIniBytes m_text;
};

// A multi-string, held as the block of lines the file holds it in: each
// string preceded by one space, the strings separated by line ends.
class NIniFileDataStringSz final : public NIniFileData {
 public:
  static NIniFileDataStringSz* Borrowing(void* memory, std::string_view block, std::uint32_t count);
  static NIniFileDataStringSz* Owning(std::string_view block, std::uint32_t count);

  bool GetMultiString(NStringArray* value) const override;
  void SetMultiString(const NStringArray& value) override;
  NProfileValueType TypeTag() const override { return NProfileValueType::kMultiString; }
  void WriteRecord(NTextFile& file, std::string_view name) const override;
  NIniFileData* CloneOwned() const override { return Owning(m_block.View(), m_count); }

  // The block of lines of `strings`, each preceded by a space.
  static std::string BlockOf(const NStringArray& strings);

 private:
  NIniFileDataStringSz() = default;
  NIniBytes m_block;
  std::uint32_t m_count = 0;
};

class NIniFileDataBinary final : public NIniFileData {
 public:
  static NIniFileDataBinary* Borrowing(void* memory, std::string_view bytes);
  static NIniFileDataBinary* Owning(std::string_view bytes);

  bool GetBinary(void* buffer, std::uint32_t* length) const override;
  void SetBinary(const void* data, std::uint32_t length) override;
  NProfileValueType TypeTag() const override { return NProfileValueType::kBinary; }
  void WriteRecord(NTextFile& file, std::string_view name) const override;
  NIniFileData* CloneOwned() const override { return Owning(m_bytes.View()); }

 private:
  NIniFileDataBinary() = default;
  NIniBytes m_bytes;
};
