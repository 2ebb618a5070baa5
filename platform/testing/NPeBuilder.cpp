#include "platform/testing/NPeBuilder.h"

#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kPeOffset = 0x80;
constexpr std::size_t kFileAlignment = 0x200;
constexpr std::uint32_t kSectionAlignment = 0x1000;
constexpr std::size_t kCodeOffset = 0x200;
constexpr std::uint32_t kCodeRva = 0x1000;
constexpr std::size_t kResourceOffset = 0x400;
constexpr std::uint32_t kResourceRva = 0x2000;

// Writers that grow the buffer as needed, filling gaps with zeros.
void PutBytes(std::string* bytes, std::size_t offset, std::string_view value) {
  if (bytes->size() < offset + value.size()) bytes->resize(offset + value.size());
  bytes->replace(offset, value.size(), value);
}

void Put16(std::string* bytes, std::size_t offset, std::uint32_t value) {
  const char pair[] = {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)};
  PutBytes(bytes, offset, std::string_view(pair, 2));
}

void Put32(std::string* bytes, std::size_t offset, std::uint32_t value) {
  Put16(bytes, offset, value & 0xFFFF);
  Put16(bytes, offset + 2, value >> 16);
}

void PutUtf16(std::string* bytes, std::size_t offset, std::u16string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) Put16(bytes, offset + 2 * i, text[i]);
}

std::size_t AlignUp(std::size_t value, std::size_t alignment) {
  return (value + alignment - 1) / alignment * alignment;
}

// One leaf of the resource tree: a type (named or by id) with a single name
// id and a single language.
struct Resource {
  std::u16string typeName;  // empty: typeId
  std::uint32_t typeId = 0;
  std::string data;
};

// The resource section: the root directory (named types first, then ids in
// ascending order, as resource compilers write them), a name directory and
// a language directory per type, the data entries, the type names and the
// data. Offsets of the version's parts go into *layout.
std::string ResourceSection(const std::vector<Resource>& resources, NPeLayout* layout) {
  const std::size_t count = resources.size();
  const std::size_t root = 0;
  const std::size_t nameDirectories = root + 16 + 8 * count;
  const std::size_t languageDirectories = nameDirectories + 24 * count;
  const std::size_t dataEntries = languageDirectories + 24 * count;
  std::size_t end = dataEntries + 16 * count;

  std::string section;
  std::uint32_t named = 0;
  for (const Resource& resource : resources) named += resource.typeName.empty() ? 0 : 1;
  Put16(&section, root + 12, named);
  Put16(&section, root + 14, static_cast<std::uint32_t>(count) - named);
  for (std::size_t i = 0; i < count; ++i) {
    const Resource& resource = resources[i];
    const std::size_t nameDirectory = nameDirectories + 24 * i;
    const std::size_t languageDirectory = languageDirectories + 24 * i;
    const std::size_t dataEntry = dataEntries + 16 * i;
    std::uint32_t typeField = resource.typeId;
    if (!resource.typeName.empty()) {
      Put16(&section, end, static_cast<std::uint32_t>(resource.typeName.size()));
      PutUtf16(&section, end + 2, resource.typeName);
      typeField = 0x80000000 | static_cast<std::uint32_t>(end);
      end += 2 + 2 * resource.typeName.size();
    }
    Put32(&section, root + 16 + 8 * i, typeField);
    Put32(&section, root + 16 + 8 * i + 4, 0x80000000 | static_cast<std::uint32_t>(nameDirectory));
    Put16(&section, nameDirectory + 14, 1);
    Put32(&section, nameDirectory + 16, 1);  // VS_VERSION_INFO and the manifest both use name id 1
    Put32(&section, nameDirectory + 20, 0x80000000 | static_cast<std::uint32_t>(languageDirectory));
    Put16(&section, languageDirectory + 14, 1);
    Put32(&section, languageDirectory + 16, 0x0409);
    Put32(&section, languageDirectory + 20, static_cast<std::uint32_t>(dataEntry));
    end = AlignUp(end, 8);
    Put32(&section, dataEntry, kResourceRva + static_cast<std::uint32_t>(end));
    Put32(&section, dataEntry + 4, static_cast<std::uint32_t>(resource.data.size()));
    Put32(&section, dataEntry + 8, 1200);  // UTF-16 code page
    section.resize(end);
    section += resource.data;
    if (resource.typeName.empty() && resource.typeId == 16 && layout != nullptr) {
      layout->versionTypeEntry = kResourceOffset + root + 16 + 8 * i;
      layout->versionDataEntry = kResourceOffset + dataEntry;
      layout->versionInfo = kResourceOffset + end;
      layout->fixedFileInfo = layout->versionInfo + 40;
    }
    end = section.size();
  }
  return section;
}

}  // namespace

std::string NPeBuilder::VersionInfo() const {
  // VS_VERSIONINFO with its fixed part only: the string and variable tables
  // that may follow are of no interest to the reader.
  std::string info;
  Put16(&info, 0, 40 + 52);
  Put16(&info, 2, 52);
  Put16(&info, 4, 0);
  PutUtf16(&info, 6, std::u16string_view(u"VS_VERSION_INFO", 16));
  Put32(&info, 40, 0xFEEF04BD);
  Put32(&info, 44, 0x00010000);
  Put32(&info, 48, m_versionMs);
  Put32(&info, 52, m_versionLs);
  Put32(&info, 56, m_versionMs);  // product version
  Put32(&info, 60, m_versionLs);
  Put32(&info, 64, 0x3F);        // file flags mask
  Put32(&info, 72, 0x00040004);  // VOS_NT_WINDOWS32
  Put32(&info, 76, m_fileType);
  Put32(&info, 88, 0);  // file date, low part: the last field
  return info;
}

std::string NPeBuilder::Build(NPeLayout* layout) const {
  NPeLayout found;
  std::vector<Resource> resources;
  resources.push_back({u"DATA", 0, std::string(24, 'd')});
  if (m_withVersion) resources.push_back({u"", 16, VersionInfo()});
  resources.push_back({u"", 24, "<assembly manifestVersion=\"1.0\"/>"});
  const std::string rsrc = m_withResources ? ResourceSection(resources, &found) : std::string();

  std::string file;
  Put16(&file, 0, 0x5A4D);  // "MZ"
  Put32(&file, 0x3C, kPeOffset);
  found.peHeader = kPeOffset;
  Put32(&file, kPeOffset, 0x00004550);

  const std::size_t coff = kPeOffset + 4;
  const std::uint32_t sectionCount = m_withResources ? 2 : 1;
  const std::size_t optionalSize = m_pe32Plus ? 240 : 224;
  Put16(&file, coff, m_pe32Plus ? 0x8664 : 0x014C);
  Put16(&file, coff + 2, sectionCount);
  Put16(&file, coff + 16, static_cast<std::uint32_t>(optionalSize));
  Put16(&file, coff + 18, m_pe32Plus ? 0x0022 : 0x0102);

  const std::size_t optional = coff + 20;
  found.optionalHeader = optional;
  const std::uint32_t imageSize =
      kResourceRva + static_cast<std::uint32_t>(AlignUp(rsrc.size() + 1, kSectionAlignment));
  Put16(&file, optional, m_pe32Plus ? 0x20B : 0x10B);
  Put32(&file, optional + 16, kCodeRva);                              // entry point
  Put32(&file, optional + 20, kCodeRva);                              // base of code
  Put32(&file, optional + 28, m_pe32Plus ? 0x00000001 : 0x00400000);  // image base; of PE32+, the high half
  Put32(&file, optional + 32, kSectionAlignment);
  Put32(&file, optional + 36, static_cast<std::uint32_t>(kFileAlignment));
  Put16(&file, optional + 40, 6);  // operating system version
  Put16(&file, optional + 48, 6);  // subsystem version
  Put32(&file, optional + 56, imageSize);
  Put32(&file, optional + 60, static_cast<std::uint32_t>(kCodeOffset));  // size of headers
  Put16(&file, optional + 68, 2);                                        // Windows GUI
  const std::size_t directories = optional + (m_pe32Plus ? 112 : 96);
  Put32(&file, directories - 4, 16);
  found.resourceDirectory = m_withResources ? directories + 2 * 8 : 0;
  if (m_withResources) {
    Put32(&file, directories + 2 * 8, kResourceRva);
    Put32(&file, directories + 2 * 8 + 4, static_cast<std::uint32_t>(rsrc.size()));
  }

  const std::size_t sections = optional + optionalSize;
  found.sectionTable = sections;
  PutBytes(&file, sections, std::string_view(".text\0\0\0", 8));
  Put32(&file, sections + 8, 0x10);
  Put32(&file, sections + 12, kCodeRva);
  Put32(&file, sections + 16, static_cast<std::uint32_t>(kFileAlignment));
  Put32(&file, sections + 20, static_cast<std::uint32_t>(kCodeOffset));
  Put32(&file, sections + 36, 0x60000020);  // code, execute, read
  if (m_withResources) {
    const std::size_t header = sections + 40;
    PutBytes(&file, header, std::string_view(".rsrc\0\0\0", 8));
    Put32(&file, header + 8, static_cast<std::uint32_t>(rsrc.size()));
    Put32(&file, header + 12, kResourceRva);
    Put32(&file, header + 16, static_cast<std::uint32_t>(AlignUp(rsrc.size(), kFileAlignment)));
    Put32(&file, header + 20, static_cast<std::uint32_t>(kResourceOffset));
    Put32(&file, header + 36, 0x40000040);  // initialised data, read
  }

  file.resize(kCodeOffset, '\0');
  file.append(kFileAlignment, '\xCC');
  if (m_withResources) {
    found.resourceSection = kResourceOffset;
    file += rsrc;
    file.resize(kResourceOffset + AlignUp(rsrc.size(), kFileAlignment), '\0');
  }
  found.size = file.size();
  if (layout != nullptr) *layout = found;
  return file;
}
