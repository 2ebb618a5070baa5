#pragma once

#include <cstdint>
#include <string_view>

#include "base/NUnicodeString.h"
#include "config/NSecretFormat.h"
#include "location/NReportMessageParams.h"

class NPlatform;

// %1 nothing. The passphrase given is not the configuration passphrase.
inline constexpr std::uint32_t kMsgWrongPassphrase = 0xE138F083;
// %1 the stored text. "Config Passphrase" holds something that is no verifier.
inline constexpr std::uint32_t kMsgBadPassphraseVerifier = 0xE138F084;
// %1 the key file. It exists but does not hold a key.
inline constexpr std::uint32_t kMsgBadKeyFile = 0xE138F085;

// Where the keys of a configuration folder's encrypted values come from.
//
// With a configuration passphrase, the key is derived from it with
// PBKDF2-HMAC-SHA256; "Config Passphrase" then holds only a verifier:
//
//   P1:<iterations>:<salt>:<check>
//
// (salt 16 bytes, check 32 bytes, in lower-case hex). The same derivation
// gives the key and the check, so the verifier confirms a passphrase without
// holding anything that opens a value. The work factor is stored with it, so
// it can grow with the machines.
//
// Without one, the key is 32 random bytes in a file of the folder's own in
// the user's configuration directory, which only the user can read: never in
// the configuration folder, so that a copy of the folder alone opens nothing.
//
// Stateless but for the paths; thread-compatible.
class NSecretKeyring {
 public:
  // The keyring of `configFolder`, keeping key files in `keyFolder` (made,
  // owner-only, when first needed).
  NSecretKeyring(NUnicodeString configFolder, NUnicodeString keyFolder, NPlatform& platform);

  // ---- The configuration passphrase
  // A new verifier of `passphrase` at `iterations`, with the key it gives.
  static bool MakeVerifier(std::u16string_view passphrase, std::uint32_t iterations, NUnicodeString* verifier,
                           NSecretKey* key, NReportMessageParams& params);
  // Whether a "Config Passphrase" value is a verifier: a passphrase is set.
  static bool IsVerifier(std::u16string_view stored);
  // The key `passphrase` gives when `verifier` confirms it; kMsgWrongPassphrase
  // otherwise, with *key untouched.
  static bool OpenVerifier(std::u16string_view passphrase, std::u16string_view verifier, NSecretKey* key,
                           NReportMessageParams& params);
  // The work factor that takes about `seconds` on this machine (at least
  // kMinimumIterations).
  static std::uint32_t MeasureIterations(double seconds);
  static constexpr std::uint32_t kMinimumIterations = 100'000;

  // ---- Without a passphrase
  // The folder's key from its key file, made with a fresh random key when
  // there is none. Processes that ask at once get the same key.
  bool KeyFileKey(NSecretKey* key, NReportMessageParams& params);
  // The key file of this keyring's folder.
  NUnicodeString KeyFilePath() const;

 private:
  NUnicodeString m_configFolder;
  NUnicodeString m_keyFolder;
  NPlatform& m_platform;
};
