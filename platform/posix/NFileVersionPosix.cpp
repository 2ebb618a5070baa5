#include <memory>
#include <string>

#include "platform/NFileVersion.h"
#include "platform/NPeVersionReader.h"
#include "platform/NPlatform.h"

bool NReadFileVersion(std::u16string_view path, NFileVersion* version) {
  std::unique_ptr<NFile> file;
  NFileInfo info;
  if (!NPlatform::Default().OpenFile(path, {}, &file) || !file->GetInfo(&info) || info.size > kMaxPeFileSize) {
    return false;
  }
  // One read: a short one is the end of a file that shrank meanwhile, and
  // whatever it grew by is beyond what was sized.
  std::string bytes(static_cast<std::size_t>(info.size), '\0');
  std::size_t read = 0;
  if (!file->Read(0, bytes.data(), bytes.size(), &read)) return false;
  bytes.resize(read);
  return NParsePeFileVersion(bytes, version);
}
