#pragma once

#include <cstdint>
#include <vector>

#include "base/NUnicodeString.h"

// A security descriptor as a store value holds it: its text form (the
// security descriptor definition language), or the binary self-relative
// form. Stores keep the text form in a multi-string value.
class NSecurityDescriptor {
 public:
  NSecurityDescriptor() = default;
  static NSecurityDescriptor FromText(NUnicodeString text);
  // Null when `bytes` is not a structurally valid self-relative descriptor.
  static bool FromBinary(const std::uint8_t* bytes, std::size_t size, NSecurityDescriptor* out);

  bool IsText() const { return m_binary.empty(); }
  const NUnicodeString& Text() const { return m_text; }
  const std::vector<std::uint8_t>& Binary() const { return m_binary; }

 private:
  NUnicodeString m_text;
  std::vector<std::uint8_t> m_binary;
};
