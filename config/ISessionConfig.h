#pragma once

#include <cstdint>

#include "base/NUnknown.h"
#include "base/NUnicodeString.h"
#include "config/SessionConfig.h"
#include "location/NReportMessageParams.h"

// One session of the "Sessions" tree, as the rest of the system reaches it.
// Reference counted: the creator holds the first reference. Paths are
// relative to "Sessions", with "\" between folder and session names.
class ISessionConfig : public NUnknown {
 public:
  static constexpr NInterfaceId kIID = {0x6a1f3c52, 0x8e0d, 0x4b7a, {0x9c, 0x21, 0x5d, 0x3e, 0x77, 0x10, 0xa4, 0x6b}};

  bool QueryInterface(const NInterfaceId& iid, void** object) override {
    if (iid == kIID) {
      AddRef();
      *object = this;
      return true;
    }
    return NUnknown::QueryInterface(iid, object);
  }

  // The slot order of these operations is fixed.
  virtual SessionConfig& Config() = 0;
  virtual const NUnicodeString& Path() const = 0;
  // The last component of the path.
  virtual NUnicodeString Name() const = 0;
  // Opened read-only, or used by a session the host has locked.
  virtual bool IsReadOnly() const = 0;
  virtual void SetLockedByHost(bool locked) = 0;
  // Writes the record's changed values (every value for a session made
  // here and not yet saved).
  virtual bool Save(NReportMessageParams& params) = 0;
  // Gives the session a new name in its folder; the old key goes once the
  // new one is written.
  virtual bool Rename(std::u16string_view newName, NReportMessageParams& params) = 0;
  // A copy of the session at `newPath`, saved; null on failure.
  virtual ISessionConfig* Copy(std::u16string_view newPath, NReportMessageParams& params) = 0;
  virtual bool Delete(NReportMessageParams& params) = 0;
  // Remembers the values as they are before an edit; IsModified then tells
  // whether the edit changed any.
  virtual void PreEdit() = 0;
  virtual bool IsModified() const = 0;
  // For the default session: copies the values changed since PreEdit into
  // every other saved session and saves each. *sessions receives how many
  // there are, *updated how many took the changes (read-only ones do not).
  virtual bool ApplyDefaultChanges(std::uint32_t* sessions, std::uint32_t* updated, NReportMessageParams& params) = 0;

 protected:
  ~ISessionConfig() override = default;
};

// The session at `path`; null when there is none (params say why).
CFGDECK_API ISessionConfig* NOpenSession(std::u16string_view path, bool readOnly, NReportMessageParams& params);
// A new session at `path`, starting from the session "Default": it takes
// every value of "Default" but the host, the user name and the
// description. Not saved until Save; null when `path` is taken.
CFGDECK_API ISessionConfig* NCreateSession(std::u16string_view path, NReportMessageParams& params);
// Marks the session at `path` as used by a locked session of the host:
// it then opens read-only and takes no default changes.
CFGDECK_API void NSetSessionLocked(std::u16string_view path, bool locked);
