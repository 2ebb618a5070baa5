#include "store/NIniFileData.h"

#include <cstring>
#include <new>

#include "store/NTextFile.h"

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";
constexpr std::size_t kBytesPerLine = 32;

void AppendHex8(std::string& out, std::uint32_t value) {
  char digits[8];
  for (int i = 7; i >= 0; --i) {
    digits[i] = kHexDigits[value & 0xF];
    value >>= 4;
  }
  out.append(digits, 8);
}

void AppendHeader(std::string& out, char kind, std::string_view name) {
  out.push_back(kind);
  out.append(":\"");
  out.append(name);
  out.append("\"=");
}

}  // namespace

// ---- NIniFileData: the base fails every getter and ignores every setter ----

bool NIniFileData::GetMultiString(NStringArray*) const { return false; }
bool NIniFileData::GetBinary(void*, std::uint32_t*) const { return false; }
bool NIniFileData::GetString(NUnicodeString*) const { return false; }
bool NIniFileData::GetDword(std::uint32_t*) const { return false; }
void NIniFileData::SetMultiString(const NStringArray&) {}
void NIniFileData::SetBinary(const void*, std::uint32_t) {}
void NIniFileData::SetString(std::u16string_view) {}
void NIniFileData::SetDword(std::uint32_t) {}

// ---- NIniBytes ----

void NIniBytes::Release() {
  if (m_owned) delete[] m_data;
  m_data = nullptr;
  m_size = 0;
  m_owned = false;
}

void NIniBytes::Borrow(std::string_view bytes) {
  Release();
  m_data = bytes.data();
  m_size = static_cast<std::uint32_t>(bytes.size());
}

void NIniBytes::Own(std::string_view bytes) {
  char* copy = new char[bytes.size() + 1];
  if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
  Release();
  m_data = copy;
  m_size = static_cast<std::uint32_t>(bytes.size());
  m_owned = true;
}

// ---- DWORD ----

bool NIniFileDataDword::GetDword(std::uint32_t* value) const {
  *value = m_value;
  return true;
}

void NIniFileDataDword::WriteRecord(NTextFile& file, std::string_view name) const {
  std::string& out = file.Pending();
  AppendHeader(out, 'D', name);
  AppendHex8(out, m_value);
  out.append("\r\n");
}

// ---- String ----

NIniFileDataString* NIniFileDataString::Borrowing(void* memory, std::string_view utf8) {
  auto* data = new (memory) NIniFileDataString();
  data->m_text.Borrow(utf8);
  return data;
}

NIniFileDataString* NIniFileDataString::Owning(std::string_view utf8) {
  auto* data = new NIniFileDataString();
  data->m_text.Own(utf8);
  return data;
}

bool NIniFileDataString::GetString(NUnicodeString* value) const {
  value->AssignUtf8(m_text.View());
  return true;
}

void NIniFileDataString::SetString(std::u16string_view value) { m_text.Own(NUnicodeString(value).ToUtf8()); }

void NIniFileDataString::WriteRecord(NTextFile& file, std::string_view name) const {
  std::string& out = file.Pending();
  AppendHeader(out, 'S', name);
  out.append(m_text.View());
  out.append("\r\n");
}

// ---- Multi-string ----

NIniFileDataStringSz* NIniFileDataStringSz::Borrowing(void* memory, std::string_view block, std::uint32_t count) {
  auto* data = new (memory) NIniFileDataStringSz();
  data->m_block.Borrow(block);
  data->m_count = count;
  return data;
}

NIniFileDataStringSz* NIniFileDataStringSz::Owning(std::string_view block, std::uint32_t count) {
  auto* data = new NIniFileDataStringSz();
  data->m_block.Own(block);
  data->m_count = count;
  return data;
}

std::string NIniFileDataStringSz::BlockOf(const NStringArray& strings) {
  std::string block;
  for (const NUnicodeString& s : strings) {
    if (!block.empty()) block.push_back('\n');
    block.push_back(' ');
    block.append(s.ToUtf8());
  }
  return block;
}

bool NIniFileDataStringSz::GetMultiString(NStringArray* value) const {
  // A block of one empty string is " ", so its lines always match the count.
  value->resize(m_count);
  NLineReader lines(m_block.View());
  std::string_view line;
  std::size_t filled = 0;
  while (filled < m_count && lines.Next(&line)) (*value)[filled++].AssignUtf8(line.substr(1));
  value->resize(filled);
  return true;
}

void NIniFileDataStringSz::SetMultiString(const NStringArray& value) {
  m_block.Own(BlockOf(value));
  m_count = static_cast<std::uint32_t>(value.size());
}

void NIniFileDataStringSz::WriteRecord(NTextFile& file, std::string_view name) const {
  std::string& out = file.Pending();
  AppendHeader(out, 'Z', name);
  AppendHex8(out, m_count);
  out.append("\r\n");
  NLineReader lines(m_block.View());
  std::string_view line;
  for (std::uint32_t i = 0; i < m_count && lines.Next(&line); ++i) {
    out.append(line);
    out.append("\r\n");
  }
}

// ---- Binary ----

NIniFileDataBinary* NIniFileDataBinary::Borrowing(void* memory, std::string_view bytes) {
  auto* data = new (memory) NIniFileDataBinary();
  data->m_bytes.Borrow(bytes);
  return data;
}

NIniFileDataBinary* NIniFileDataBinary::Owning(std::string_view bytes) {
  auto* data = new NIniFileDataBinary();
  data->m_bytes.Own(bytes);
  return data;
}

bool NIniFileDataBinary::GetBinary(void* buffer, std::uint32_t* length) const {
  const std::string_view bytes = m_bytes.View();
  const auto size = static_cast<std::uint32_t>(bytes.size());
  if (buffer == nullptr) {
    *length = size;
    return true;
  }
  if (*length < size) return false;
  if (size) std::memcpy(buffer, bytes.data(), size);
  *length = size;
  return true;
}

void NIniFileDataBinary::SetBinary(const void* data, std::uint32_t length) {
  m_bytes.Own(std::string_view(static_cast<const char*>(data), length));
}

void NIniFileDataBinary::WriteRecord(NTextFile& file, std::string_view name) const {
  std::string& out = file.Pending();
  const std::string_view bytes = m_bytes.View();
  AppendHeader(out, 'B', name);
  AppendHex8(out, static_cast<std::uint32_t>(bytes.size()));
  out.append("\r\n");
  for (std::size_t at = 0; at < bytes.size(); at += kBytesPerLine) {
    const std::size_t end = std::min(bytes.size(), at + kBytesPerLine);
    for (std::size_t i = at; i < end; ++i) {
      const auto byte = static_cast<unsigned char>(bytes[i]);
      out.push_back(kHexDigits[byte >> 4]);
      out.push_back(kHexDigits[byte & 0xF]);
    }
    out.append("\r\n");
  }
}
