#include "config/NEncryptedString.h"

#include "config/NSecretKeyring.h"
#include "config/NSecretKeys.h"
#include "location/NPolicy.h"

NEncryptedString NEncryptedString::FromStored(NUnicodeString stored) {
  NEncryptedString value;
  value.m_stored = std::move(stored);
  return value;
}

NEncryptedString NEncryptedString::FromPlain(NUnicodeString plain) {
  NEncryptedString value;
  value.m_plain = std::move(plain);
  value.m_isPlain = true;
  return value;
}

bool NEncryptedString::IsUnsealed() const {
  return !m_isPlain && !m_stored.empty() && !NIsSealedSecret(m_stored) && !NSecretKeyring::IsVerifier(m_stored);
}

bool NEncryptedString::Plain(std::u16string_view place, NUnicodeString* plain, NReportMessageParams& params) const {
  if (m_isPlain) {
    *plain = m_plain;
    return true;
  }
  const std::optional<NSecretKeyId> id = NSealedSecretKeyId(m_stored);
  // An old clear text, or one too damaged to name its key: NOpenSecret says which.
  if (!id) return NOpenSecret(NSecretKey{}, place, m_stored, plain, params);
  NSecretKey key;
  if (!NSecretKeyById(*id, &key, params)) {
    if (params.GetCode() == kMsgSecretOtherKey && params.GetArguments().IsEmpty()) params.AddArgument(place);
    return false;
  }
  return NOpenSecret(key, place, m_stored, plain, params);
}

bool NEncryptedString::ToStore(std::u16string_view place, NUnicodeString* stored, NReportMessageParams& params) const {
  // Nothing needs no seal: an emptied password stays empty.
  if (m_isPlain && m_plain.empty()) {
    stored->clear();
    return true;
  }
  if (m_isPlain && NReadPolicy().FixesSavePasswords()) {
    params.SetCode(kMsgPasswordsNotSaved);
    params.AddArgument(place);
    return false;
  }
  NSecretKey key;
  NReportMessageParams ignored;
  if (!m_isPlain && NIsSealedSecret(m_stored)) {
    // Sealed with a key the folder has since retired (its passphrase was
    // changed while this value was in memory): sealed anew when that key is
    // still known, as it was otherwise.
    const std::optional<NSecretKeyId> id = NSealedSecretKeyId(m_stored);
    NSecretKey old;
    NUnicodeString plain;
    if (id && NHasSecretKeySource() && NCurrentSecretKey(&key, ignored) && key.id != *id &&
        NSecretKeyById(*id, &old, ignored) && NOpenSecret(old, place, m_stored, &plain, ignored) &&
        NSealSecret(key, place, plain, stored, ignored)) {
      return true;
    }
    *stored = m_stored;
    return true;
  }
  if (m_isPlain) return NCurrentSecretKey(&key, params) && NSealSecret(key, place, m_plain, stored, params);
  // A verifier, or an old clear text without a key to seal it with (none set
  // up, or the passphrase not given), stays as it was: no worse than before.
  if (IsUnsealed() && NCurrentSecretKey(&key, ignored) && NSealSecret(key, place, m_stored, stored, ignored)) {
    return true;
  }
  *stored = m_stored;
  return true;
}
