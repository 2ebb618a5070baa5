#pragma once

#include <cstdint>
#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

class NReportMessageParams;

// %1 the value's place. The administrator's policy forbids saving passwords.
inline constexpr std::uint32_t kMsgPasswordsNotSaved = 0xE138F087;

// A value the store holds only in encrypted form: a saved password, say.
// It is either a stored text, as read from the store, or a plain text a
// person typed, which is sealed (NSecretFormat) with the process's secret
// key (NSecretKeys) when its field is saved and never stored as it stands.
// A value type; thread-compatible.
class CFGDECK_API NEncryptedString {
 public:
  NEncryptedString() = default;
  static NEncryptedString FromStored(NUnicodeString stored);
  static NEncryptedString FromPlain(NUnicodeString plain);

  // The stored text; empty for a plain text not sealed yet.
  const NUnicodeString& Stored() const { return m_stored; }
  bool IsPlain() const { return m_isPlain; }
  // A plain value's text (what a person typed); empty for a stored one.
  const NUnicodeString& Typed() const { return m_plain; }
  bool IsEmpty() const { return m_isPlain ? m_plain.empty() : m_stored.empty(); }

  // The plain text: a plain value's own, else the stored text opened for
  // `place` (NSecretPlace) with the process's key; a text stored before
  // values were sealed is its own plain text. On failure *plain is
  // untouched and params says why.
  bool Plain(std::u16string_view place, NUnicodeString* plain, NReportMessageParams& params) const;
  // What the store is to keep for this value at `place`: a plain text
  // sealed with the process's key (failing, with params saying why, when
  // there is none or policy forbids saving passwords), a sealed text as it
  // is (sealed anew when its key was retired), and a text stored before
  // values were sealed sealed when there is a key and as it was otherwise.
  bool ToStore(std::u16string_view place, NUnicodeString* stored, NReportMessageParams& params) const;
  // A stored text from before values were sealed, which the next save
  // seals when it can: neither empty, sealed, nor a passphrase verifier.
  bool IsUnsealed() const;

  bool operator==(const NEncryptedString&) const = default;

 private:
  NUnicodeString m_stored;
  NUnicodeString m_plain;
  bool m_isPlain = false;
};
