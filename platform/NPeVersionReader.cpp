#include "platform/NPeVersionReader.h"

#include <cstdint>

namespace {

constexpr std::uint32_t kPeSignature = 0x00004550;  // "PE\0\0"
constexpr std::uint16_t kPe32Magic = 0x10B;
constexpr std::uint16_t kPe32PlusMagic = 0x20B;
constexpr std::uint32_t kResourceDirectoryIndex = 2;
constexpr std::uint64_t kSectionHeaderSize = 40;
constexpr std::uint64_t kResourceDirectorySize = 16;
constexpr std::uint64_t kResourceEntrySize = 8;
constexpr std::uint32_t kResourceHighBit = 0x80000000;
constexpr std::uint16_t kRtVersion = 16;
constexpr std::uint32_t kFixedFileInfoSignature = 0xFEEF04BD;
constexpr std::uint64_t kFixedFileInfoSize = 52;
constexpr std::u16string_view kVersionInfoKey{u"VS_VERSION_INFO", 16};  // with its NUL

// Little-endian reads that fail instead of reading past the bytes. Offsets
// are 64-bit so that adding two 32-bit file fields cannot wrap.
bool Has(std::string_view bytes, std::uint64_t offset, std::uint64_t size) {
  return offset <= bytes.size() && size <= bytes.size() - offset;
}

bool Read16(std::string_view bytes, std::uint64_t offset, std::uint16_t* value) {
  if (!Has(bytes, offset, 2)) return false;
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + offset);
  *value = static_cast<std::uint16_t>(p[0] | p[1] << 8);
  return true;
}

bool Read32(std::string_view bytes, std::uint64_t offset, std::uint32_t* value) {
  if (!Has(bytes, offset, 4)) return false;
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + offset);
  *value = static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
           static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
  return true;
}

// The headers of a PE file and the section table that maps its relative
// virtual addresses onto file offsets.
class PeImage {
 public:
  explicit PeImage(std::string_view bytes) : m_bytes(bytes) {}

  // Reads the headers up to the section table; false when they are not a
  // PE32 or PE32+ image with a resource directory.
  bool ReadHeaders() {
    std::uint16_t mz = 0;
    std::uint32_t peOffset = 0, signature = 0;
    if (!Read16(m_bytes, 0, &mz) || mz != 0x5A4D || !Read32(m_bytes, 0x3C, &peOffset)) return false;
    if (!Read32(m_bytes, peOffset, &signature) || signature != kPeSignature) return false;
    const std::uint64_t coff = std::uint64_t{peOffset} + 4;
    std::uint16_t optionalSize = 0, magic = 0;
    if (!Read16(m_bytes, coff + 2, &m_sectionCount) || !Read16(m_bytes, coff + 16, &optionalSize)) return false;
    const std::uint64_t optional = coff + 20;
    if (!Has(m_bytes, optional, optionalSize) || !Read16(m_bytes, optional, &magic)) return false;
    std::uint64_t countOffset = 0;
    if (magic == kPe32Magic) {
      countOffset = 92;
    } else if (magic == kPe32PlusMagic) {
      countOffset = 108;
    } else {
      return false;
    }
    // The directories follow their count; the one wanted must lie inside the
    // optional header as its size declares it.
    const std::uint64_t directory = countOffset + 4 + kResourceDirectoryIndex * 8;
    std::uint32_t directoryCount = 0;
    if (directory + 8 > optionalSize || !Read32(m_bytes, optional + countOffset, &directoryCount) ||
        directoryCount <= kResourceDirectoryIndex) {
      return false;
    }
    if (!Read32(m_bytes, optional + directory, &m_resourceRva) ||
        !Read32(m_bytes, optional + directory + 4, &m_resourceSize)) {
      return false;
    }
    m_sectionTable = optional + optionalSize;
    return m_resourceRva != 0 && m_resourceSize != 0 &&
           Has(m_bytes, m_sectionTable, m_sectionCount * kSectionHeaderSize);
  }

  // The file bytes of [rva, rva + size) when one section's data in the file
  // holds all of them. At most 65535 sections, all inside the file.
  bool Map(std::uint32_t rva, std::uint32_t size, std::string_view* out) const {
    for (std::uint64_t i = 0; i < m_sectionCount; ++i) {
      const std::uint64_t header = m_sectionTable + i * kSectionHeaderSize;
      std::uint32_t virtualSize = 0, virtualAddress = 0, rawSize = 0, rawOffset = 0;
      if (!Read32(m_bytes, header + 8, &virtualSize) || !Read32(m_bytes, header + 12, &virtualAddress) ||
          !Read32(m_bytes, header + 16, &rawSize) || !Read32(m_bytes, header + 20, &rawOffset)) {
        return false;
      }
      // Only the part of the raw data that the loader maps belongs to the
      // section; a virtual size of 0 means the raw size.
      const std::uint64_t mapped = virtualSize != 0 && virtualSize < rawSize ? virtualSize : rawSize;
      if (rva < virtualAddress || std::uint64_t{rva} - virtualAddress + size > mapped) continue;
      const std::uint64_t offset = std::uint64_t{rawOffset} + (rva - virtualAddress);
      if (!Has(m_bytes, offset, size)) return false;
      *out = m_bytes.substr(offset, size);
      return true;
    }
    return false;
  }

  std::uint32_t ResourceRva() const { return m_resourceRva; }
  std::uint32_t ResourceSize() const { return m_resourceSize; }

 private:
  std::string_view m_bytes;
  std::uint16_t m_sectionCount = 0;
  std::uint64_t m_sectionTable = 0;
  std::uint32_t m_resourceRva = 0;
  std::uint32_t m_resourceSize = 0;
};

// One step down the resource tree: the entry of the directory at `directory`
// (an offset into `tree`) with the given id, or its first entry when `id` is
// negative. Sets *target to the offset the entry points at, which must be a
// subdirectory or a data entry as `wantDirectory` says. The tree's depth is
// fixed, so a directory that points at itself only ends the walk early.
bool Descend(std::string_view tree, std::uint32_t directory, int id, bool wantDirectory, std::uint32_t* target) {
  std::uint16_t named = 0, ids = 0;
  if (!Read16(tree, std::uint64_t{directory} + 12, &named) || !Read16(tree, std::uint64_t{directory} + 14, &ids)) {
    return false;
  }
  const std::uint64_t entries = std::uint64_t{directory} + kResourceDirectorySize;
  const std::uint64_t count = std::uint64_t{named} + ids;
  if (!Has(tree, entries, count * kResourceEntrySize)) return false;
  for (std::uint64_t i = id < 0 ? 0 : named; i < count; ++i) {
    std::uint32_t name = 0, offset = 0;
    if (!Read32(tree, entries + i * kResourceEntrySize, &name) ||
        !Read32(tree, entries + i * kResourceEntrySize + 4, &offset)) {
      return false;
    }
    if (id >= 0 && name != static_cast<std::uint32_t>(id)) continue;
    if (((offset & kResourceHighBit) != 0) != wantDirectory) return false;
    *target = offset & ~kResourceHighBit;
    return true;
  }
  return false;
}

// VS_VERSIONINFO: wLength, wValueLength, wType, the key with its NUL, then
// the VS_FIXEDFILEINFO at the next DWORD boundary.
bool ReadVersionInfo(std::string_view data, NFileVersion* version) {
  std::uint16_t length = 0, valueLength = 0;
  if (!Read16(data, 0, &length) || !Read16(data, 2, &valueLength) || length > data.size()) return false;
  const std::string_view block = data.substr(0, length);
  constexpr std::uint64_t keyOffset = 6;
  for (std::size_t i = 0; i < kVersionInfoKey.size(); ++i) {
    std::uint16_t unit = 0;
    if (!Read16(block, keyOffset + 2 * i, &unit) || unit != kVersionInfoKey[i]) return false;
  }
  const std::uint64_t value = (keyOffset + 2 * kVersionInfoKey.size() + 3) & ~std::uint64_t{3};
  std::uint32_t signature = 0, versionMs = 0, versionLs = 0, fileType = 0;
  if (valueLength < kFixedFileInfoSize || !Has(block, value, kFixedFileInfoSize)) return false;
  if (!Read32(block, value, &signature) || signature != kFixedFileInfoSignature) return false;
  if (!Read32(block, value + 8, &versionMs) || !Read32(block, value + 12, &versionLs) ||
      !Read32(block, value + 36, &fileType)) {
    return false;
  }
  version->fileType = fileType;
  version->major = static_cast<std::uint16_t>(versionMs >> 16);
  version->minor = static_cast<std::uint16_t>(versionMs & 0xFFFF);
  version->build = static_cast<std::uint16_t>(versionLs >> 16);
  version->revision = static_cast<std::uint16_t>(versionLs & 0xFFFF);
  return true;
}

}  // namespace

bool NParsePeFileVersion(std::string_view fileBytes, NFileVersion* version) {
  PeImage image(fileBytes);
  std::string_view tree;
  if (!image.ReadHeaders() || !image.Map(image.ResourceRva(), image.ResourceSize(), &tree)) return false;
  // Type, then name, then language; the data entry gives the data's RVA.
  std::uint32_t names = 0, languages = 0, dataEntry = 0;
  if (!Descend(tree, 0, kRtVersion, true, &names) || !Descend(tree, names, -1, true, &languages) ||
      !Descend(tree, languages, -1, false, &dataEntry)) {
    return false;
  }
  std::uint32_t dataRva = 0, dataSize = 0;
  std::string_view data;
  if (!Read32(tree, dataEntry, &dataRva) || !Read32(tree, std::uint64_t{dataEntry} + 4, &dataSize) ||
      !image.Map(dataRva, dataSize, &data)) {
    return false;
  }
  return ReadVersionInfo(data, version);
}
