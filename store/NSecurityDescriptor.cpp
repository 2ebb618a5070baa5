#include "store/NSecurityDescriptor.h"

#include <cstring>

namespace {

// The self-relative layout: revision, padding, control (with the
// self-relative bit), then the offsets of owner, group, SACL and DACL.
constexpr std::size_t kHeaderSize = 20;
constexpr std::uint16_t kSelfRelative = 0x8000;

std::uint32_t Read32(const std::uint8_t* p) { return p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24; }
std::uint16_t Read16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | p[1] << 8); }

bool ValidSid(const std::uint8_t* bytes, std::size_t size, std::uint32_t offset) {
  if (offset == 0) return true;
  if (offset < kHeaderSize || offset + 8 > size) return false;
  const std::uint8_t* sid = bytes + offset;
  const std::size_t subAuthorities = sid[1];
  return sid[0] == 1 && subAuthorities <= 15 && offset + 8 + 4 * subAuthorities <= size;
}

bool ValidAcl(const std::uint8_t* bytes, std::size_t size, std::uint32_t offset) {
  if (offset == 0) return true;
  if (offset < kHeaderSize || offset + 8 > size) return false;
  const std::uint8_t* acl = bytes + offset;
  const std::uint16_t aclSize = Read16(acl + 2);
  const std::uint16_t aceCount = Read16(acl + 4);
  if ((acl[0] != 2 && acl[0] != 4) || aclSize < 8 || offset + aclSize > size) return false;
  std::size_t at = 8;
  for (std::uint16_t i = 0; i < aceCount; ++i) {
    if (at + 4 > aclSize) return false;
    const std::uint16_t aceSize = Read16(acl + at + 2);
    if (aceSize < 4 || aceSize % 4 != 0 || at + aceSize > aclSize) return false;
    at += aceSize;
  }
  return true;
}

}  // namespace

NSecurityDescriptor NSecurityDescriptor::FromText(NUnicodeString text) {
  NSecurityDescriptor descriptor;
  descriptor.m_text = std::move(text);
  return descriptor;
}

bool NSecurityDescriptor::FromBinary(const std::uint8_t* bytes, std::size_t size, NSecurityDescriptor* out) {
  if (size < kHeaderSize || bytes[0] != 1 || !(Read16(bytes + 2) & kSelfRelative)) return false;
  if (!ValidSid(bytes, size, Read32(bytes + 4)) || !ValidSid(bytes, size, Read32(bytes + 8)) ||
      !ValidAcl(bytes, size, Read32(bytes + 12)) || !ValidAcl(bytes, size, Read32(bytes + 16))) {
    return false;
  }
  NSecurityDescriptor descriptor;
  descriptor.m_binary.assign(bytes, bytes + size);
  *out = std::move(descriptor);
  return true;
}
