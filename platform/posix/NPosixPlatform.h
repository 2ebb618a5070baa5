#pragma once

#include "platform/NPlatform.h"

// The POSIX (Linux) implementation of NPlatform. Paths are converted from
// UTF-16 to UTF-8 at each system call. Stateless, so thread-safe.
class NPosixPlatform final : public NPlatform {
 public:
  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override;
  NStatus DeleteFile(std::u16string_view path) override;
  NStatus MoveFile(std::u16string_view from, std::u16string_view to) override;
  NStatus CreateFolder(std::u16string_view path, NFileSecurity security) override;
  NStatus RemoveFolder(std::u16string_view path) override;
  NStatus SyncFolder(std::u16string_view path) override;
  NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) override;
  NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) override;
  bool GetFolderStamp(std::u16string_view path, NFolderStamp* stamp) override;
  NStatus CanonicalPath(std::u16string_view path, std::u16string* canonical) override;
  NPathKind GetPathKind(std::u16string_view path) override;
  bool LookupSystemMessage(std::uint32_t code, std::u16string* text) override;
  bool LookupNtStatusMessage(std::uint32_t code, std::u16string* text) override;
  std::u16string ExecutablePath() override;
  char16_t PathSeparator() const override { return u'/'; }
};
