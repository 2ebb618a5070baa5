#pragma once

#include "platform/NPlatform.h"

// Passes every call on to another platform. Test platforms derive from it
// and override only what they change (the clock, one failing call, ...).
class NForwardingPlatform : public NPlatform {
 public:
  explicit NForwardingPlatform(NPlatform& target) : m_target(target) {}

  NStatus OpenFile(std::u16string_view path, const NOpenOptions& options, std::unique_ptr<NFile>* file) override {
    return m_target.OpenFile(path, options, file);
  }
  NStatus DeleteFile(std::u16string_view path) override { return m_target.DeleteFile(path); }
  NStatus MoveFile(std::u16string_view from, std::u16string_view to) override { return m_target.MoveFile(from, to); }
  NStatus CreateFolder(std::u16string_view path, NFileSecurity security) override {
    return m_target.CreateFolder(path, security);
  }
  NStatus RemoveFolder(std::u16string_view path) override { return m_target.RemoveFolder(path); }
  NStatus SyncFolder(std::u16string_view path) override { return m_target.SyncFolder(path); }
  NStatus ListFolder(std::u16string_view path, std::vector<NFolderEntry>* entries) override {
    return m_target.ListFolder(path, entries);
  }
  NStatus ListFolderWithoutLinks(std::u16string_view path, std::vector<NFolderEntry>* entries) override {
    return m_target.ListFolderWithoutLinks(path, entries);
  }
  bool GetFolderStamp(std::u16string_view path, NFolderStamp* stamp) override {
    return m_target.GetFolderStamp(path, stamp);
  }
  NStatus CanonicalPath(std::u16string_view path, std::u16string* canonical) override {
    return m_target.CanonicalPath(path, canonical);
  }
  NPathKind GetPathKind(std::u16string_view path) override { return m_target.GetPathKind(path); }
  bool LookupSystemMessage(std::uint32_t code, std::u16string* text) override {
    return m_target.LookupSystemMessage(code, text);
  }
  bool LookupNtStatusMessage(std::uint32_t code, std::u16string* text) override {
    return m_target.LookupNtStatusMessage(code, text);
  }
  std::uint64_t CurrentFileTime() override { return m_target.CurrentFileTime(); }
  std::u16string ExecutablePath() override { return m_target.ExecutablePath(); }
  char16_t PathSeparator() const override { return m_target.PathSeparator(); }

 protected:
  NPlatform& Target() const { return m_target; }

 private:
  NPlatform& m_target;
};
