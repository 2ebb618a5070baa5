#include "config/NEncryptedString.h"

#include "config/NSecretKeyring.h"
#include "config/NSecretKeys.h"

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
  if (!NIsSealedSecret(m_stored)) return NOpenSecret(NSecretKey{}, place, m_stored, plain, params);
  NSecretKey key;
  return NCurrentSecretKey(&key, params) && NOpenSecret(key, place, m_stored, plain, params);
}

bool NEncryptedString::ToStore(std::u16string_view place, NUnicodeString* stored, NReportMessageParams& params) const {
  // Nothing needs no seal: an emptied password stays empty.
  if (m_isPlain && m_plain.empty()) {
    stored->clear();
    return true;
  }
  if (!m_isPlain && !IsUnsealed()) {
    *stored = m_stored;
    return true;
  }
  // An unsealed old text without a key stays as it was: no worse than before.
  if (!m_isPlain && !NHasSecretKeySource()) {
    *stored = m_stored;
    return true;
  }
  NSecretKey key;
  return NCurrentSecretKey(&key, params) && NSealSecret(key, place, m_isPlain ? m_plain : m_stored, stored, params);
}
