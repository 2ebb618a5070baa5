#pragma once

#include <memory>
#include <vector>

#include "config/ISessionConfig.h"
#include "store/NProfileStore.h"

// The session of the configuration store: a SessionConfig bound to its
// path under "Sessions". Every operation opens the store afresh through the
// registered factory, so a session never holds a file open.
class NSession final : public ISessionConfig {
 public:
  NSession(NUnicodeString path, bool readOnly);

  SessionConfig& Config() override { return m_config; }
  const NUnicodeString& Path() const override { return m_path; }
  NUnicodeString Name() const override;
  bool IsReadOnly() const override;
  void SetLockedByHost(bool locked) override { m_lockedByHost = locked; }
  bool Save(NReportMessageParams& params) override;
  bool Rename(std::u16string_view newName, NReportMessageParams& params) override;
  ISessionConfig* Copy(std::u16string_view newPath, NReportMessageParams& params) override;
  bool Delete(NReportMessageParams& params) override;
  void PreEdit() override;
  bool IsModified() const override;
  bool ApplyDefaultChanges(std::uint32_t* sessions, std::uint32_t* updated, NReportMessageParams& params) override;

  // The next save writes every value, not only the changed ones.
  void MarkUnsaved() { m_unsaved = true; }

  // The key of the session at `path` ("" for "Sessions" itself).
  static std::unique_ptr<NProfileKey> OpenKey(NProfileStore& store, std::u16string_view path, bool readOnly,
                                              NReportMessageParams& params);
  // Whether a session (a key holding "Is Session") is at `path`.
  static bool Exists(NProfileStore& store, std::u16string_view path);

 private:
  bool WriteCopy(std::u16string_view path, NReportMessageParams& params) const;
  static bool DeleteKey(std::u16string_view path, NReportMessageParams& params);

  NUnicodeString m_path;
  bool m_readOnly;
  bool m_lockedByHost = false;
  bool m_unsaved = false;
  SessionConfig m_config;
  std::vector<NFieldValue> m_snapshot;  // the values before an edit
};
