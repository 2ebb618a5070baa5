#pragma once

#include "platform/NPlatform.h"

// The Win32 implementation of NPlatform. Stateless apart from the NTDLL
// module handle, which is looked up once; thread-safe.
class NWindowsPlatform final : public NPlatform {
 public:
  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override;
  NStatus DeleteFile(std::u16string_view path) override;
  NStatus MoveFile(std::u16string_view from, std::u16string_view to) override;
  NStatus CreateFolder(std::u16string_view path, NFileSecurity security) override;
  NStatus RemoveFolder(std::u16string_view path) override;
  NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) override;
  NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) override;
  NStatus CanonicalPath(std::u16string_view path, std::u16string* canonical) override;
  NPathKind GetPathKind(std::u16string_view path) override;
  bool LookupSystemMessage(std::uint32_t code, std::u16string* text) override;
  bool LookupNtStatusMessage(std::uint32_t code, std::u16string* text) override;
  std::u16string ExecutablePath() override;
  char16_t PathSeparator() const override { return u'\\'; }
};
