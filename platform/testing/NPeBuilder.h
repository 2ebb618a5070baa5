#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// File offsets of the fields of a built image that tests corrupt.
struct NPeLayout {
  std::size_t peHeader = 0;  // "PE\0\0", followed by the COFF header
  std::size_t optionalHeader = 0;
  std::size_t resourceDirectory = 0;  // data directory 2: RVA, then size; 0 without resources
  std::size_t sectionTable = 0;
  std::size_t resourceSection = 0;   // the root of the resource tree; 0 without resources
  std::size_t versionTypeEntry = 0;  // the root's entry for RT_VERSION; 0 without it
  std::size_t versionDataEntry = 0;  // its IMAGE_RESOURCE_DATA_ENTRY
  std::size_t versionInfo = 0;       // VS_VERSIONINFO
  std::size_t fixedFileInfo = 0;     // VS_FIXEDFILEINFO
  std::size_t size = 0;              // the whole file
};

// Builds small PE images in memory for tests of the version reader: a code
// section and a resource section whose tree holds a named resource type, a
// manifest and, unless left out, a version resource with the chosen fixed
// fields. The resource section comes last in the file.
class NPeBuilder {
 public:
  NPeBuilder& Pe32Plus(bool on) {
    m_pe32Plus = on;
    return *this;
  }
  NPeBuilder& FileVersion(std::uint16_t major, std::uint16_t minor, std::uint16_t build, std::uint16_t revision) {
    m_versionMs = static_cast<std::uint32_t>(major) << 16 | minor;
    m_versionLs = static_cast<std::uint32_t>(build) << 16 | revision;
    return *this;
  }
  NPeBuilder& FileType(std::uint32_t type) {
    m_fileType = type;
    return *this;
  }
  NPeBuilder& WithVersion(bool on) {
    m_withVersion = on;
    return *this;
  }
  NPeBuilder& WithResources(bool on) {
    m_withResources = on;
    return *this;
  }

  std::string Build(NPeLayout* layout = nullptr) const;

 private:
  std::string VersionInfo() const;

  bool m_pe32Plus = true;
  std::uint32_t m_versionMs = 0x00010000;
  std::uint32_t m_versionLs = 0;
  std::uint32_t m_fileType = 1;
  bool m_withVersion = true;
  bool m_withResources = true;
};
