#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "config/NSecretFormat.h"
#include "location/NReportMessageParams.h"
#include "platform/NSystemKeyStore.h"

class NPlatform;
class NProfileKey;

// %1 nothing. The passphrase given is not the configuration passphrase.
inline constexpr std::uint32_t kMsgWrongPassphrase = 0xE138F083;
// %1 the stored text. "Config Passphrase" holds something that is no verifier.
inline constexpr std::uint32_t kMsgBadPassphraseVerifier = 0xE138F084;
// %1 the key file. It exists but does not hold a key.
inline constexpr std::uint32_t kMsgBadKeyFile = 0xE138F085;
// %1 nothing. A passphrase is set and this process was not given it.
inline constexpr std::uint32_t kMsgPassphraseNeeded = 0xE138F088;
// %1 the number of values, %2 the first key that failed with its reason.
inline constexpr std::uint32_t kMsgRekeyUnfinished = 0xE138F089;

// What protects the values a keyring seals now.
enum class NSecretProtection {
  kPassphrase,     // a key derived from the configuration passphrase
  kSystemKeyring,  // a random key the operating system keeps for the user
  kKeyFile,        // a random key in an owner-only file of the user's
};

// The keys of one configuration folder's encrypted values, in this order:
//
// - With a configuration passphrase, a key derived from it with
//   PBKDF2-HMAC-SHA256. "Config Passphrase" under "Global" then holds only
//   a verifier, "P1:<iterations>:<salt>:<check>" (salt 16 bytes, check 32,
//   in lower-case hex): the same derivation gives the key and the check, so
//   the verifier confirms a passphrase without holding anything that opens
//   a value. The work factor is stored with it, so it can grow.
// - Else a random key that the operating system keeps for the user
//   (NSystemKeyStore), when one answers.
// - Else a random key in a file of the folder's own in `keyFolder`, which
//   only the user can read.
// Neither random key is ever in the configuration folder, so a copy of the
// folder alone opens nothing.
//
// Changing the passphrase re-seals every sealed value of the folder. It is
// resumable: the folder first gets the new verifier, "Change Config
// Passphrase" 1, and the old key sealed with the new one; then every key is
// re-sealed and saved on its own; last the old key and the flag go. Values
// stay readable with one key or the other throughout, and the next Unlock
// (or first key asked for without a passphrase) followed by FinishChange
// completes an interrupted change.
//
// The folder's "Global" key is read and written through the registered
// store (NCreateProfileStore), which must be on `configFolder`.
// Thread-safe.
class CFGDECK_API NSecretKeyring {
 public:
  // The keyring of `configFolder`, keeping key files in `keyFolder` (made,
  // owner-only, when first needed); `system` null for none.
  NSecretKeyring(NUnicodeString configFolder, NUnicodeString keyFolder, NPlatform& platform,
                 std::unique_ptr<NSystemKeyStore> system);
  ~NSecretKeyring();
  NSecretKeyring(const NSecretKeyring&) = delete;
  NSecretKeyring& operator=(const NSecretKeyring&) = delete;

  // The library's keyring of `configFolder`, made on first use with the
  // system's key store and key files under the user's configuration
  // directory, and installed as the process's key source (NSecretKeys).
  static std::shared_ptr<NSecretKeyring> Use(std::u16string_view configFolder);

  // ---- The configuration passphrase
  // Whether the folder has a passphrase; false when "Global" cannot be read.
  bool HasPassphrase(NReportMessageParams& params);
  // Opens the folder with its passphrase (kMsgWrongPassphrase when it is
  // not; any text when the folder has none), and finishes a change that was
  // interrupted. A host calls it once at start-up.
  bool Unlock(std::u16string_view passphrase, NReportMessageParams& params);
  // Sets the passphrase to `passphrase` (empty: removes it) with the work
  // factor `iterations`, and re-seals every value. A folder with a
  // passphrase must be unlocked first. `progress` is told each key done.
  bool ChangePassphrase(std::u16string_view passphrase, std::uint32_t iterations,
                        const std::function<void(std::size_t keysDone)>& progress, NReportMessageParams& params);
  // Whether a change was interrupted; FinishChange completes it.
  bool IsChangePending(NReportMessageParams& params);
  bool FinishChange(const std::function<void(std::size_t keysDone)>& progress, NReportMessageParams& params);

  // ---- Keys (the process's key source)
  // The key new values are sealed with (`wanted` null), or the key of a
  // stored value's id: kMsgPassphraseNeeded while locked, kMsgSecretOtherKey
  // for a key this folder does not hold.
  bool Key(const NSecretKeyId* wanted, NSecretKey* key, NReportMessageParams& params);
  // What protects new values; nothing until a key was had.
  std::optional<NSecretProtection> Protection() const;
  // Where the key is kept, for people: the key store's name or the key file.
  NUnicodeString KeptIn() const;

  // ---- Stateless helpers
  // A new verifier of `passphrase` at `iterations`, with the key it gives.
  static bool MakeVerifier(std::u16string_view passphrase, std::uint32_t iterations, NUnicodeString* verifier,
                           NSecretKey* key, NReportMessageParams& params);
  // Whether a "Config Passphrase" value is a verifier: a passphrase is set.
  static bool IsVerifier(std::u16string_view stored);
  // The key `passphrase` gives when `verifier` confirms it; kMsgWrongPassphrase
  // otherwise, with *key untouched.
  static bool OpenVerifier(std::u16string_view passphrase, std::u16string_view verifier, NSecretKey* key,
                           NReportMessageParams& params);
  // The work factor stored in `verifier`; 0 for no verifier.
  static std::uint32_t VerifierIterations(std::u16string_view verifier);
  // The work factor that takes about `seconds` on this machine (at least
  // kMinimumIterations).
  static std::uint32_t MeasureIterations(double seconds);
  static constexpr std::uint32_t kMinimumIterations = 100'000;

  // The key file of this keyring's folder, and its key, made with a fresh
  // random key when there is none. Processes that ask at once get the same.
  NUnicodeString KeyFilePath() const;
  bool KeyFileKey(NSecretKey* key, NReportMessageParams& params);

 private:
  struct State;
  bool ReadState(NReportMessageParams& params);
  bool RandomKey(NSecretKey* key, NReportMessageParams& params);
  bool SystemKey(NSecretKey* key, NReportMessageParams& params);
  bool CurrentKey(NSecretKey* key, NReportMessageParams& params);
  bool WriteGlobal(const std::function<bool(NProfileKey& global)>& change, NReportMessageParams& params);
  bool Rekey(const std::function<void(std::size_t)>& progress, NReportMessageParams& params);

  NUnicodeString m_configFolder;
  NUnicodeString m_keyFolder;
  NPlatform& m_platform;
  std::unique_ptr<NSystemKeyStore> m_system;
  mutable std::recursive_mutex m_mutex;  // guards everything below
  std::unique_ptr<State> m_state;
  std::optional<NSecretKey> m_passphraseKey;
  std::optional<NSecretKey> m_randomKey;
  std::optional<NSecretProtection> m_protection;
  std::vector<NSecretKey> m_retired;  // keys values may still be sealed with
};
