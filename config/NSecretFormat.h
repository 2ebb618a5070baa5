#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"
#include "platform/NCrypto.h"

// How an encrypted value is kept in the store:
//
//   E1:<key id><nonce><ciphertext><tag>
//
// all after the colon in lower-case hex: the id of the key it was sealed
// with (8 bytes), a nonce drawn afresh for every value (12 bytes), the
// value's UTF-8 text encrypted with AES-256-GCM, and the 16-byte tag. The
// value's place (its key's path and its name) is authenticated with it, so
// a value copied under another name or into another session does not open,
// and neither does one changed or cut short by a single character. The same
// text on Windows and POSIX.
//
// A stored text that does not begin with "E1:" was kept before values were
// encrypted; it is read as it stands, and sealed at its next save.

// %1: the value's place. The stored text was changed, cut short or copied.
inline constexpr std::uint32_t kMsgSecretDamaged = 0xE138F080;
// %1: the value's place. Sealed with a key this folder does not hold now.
inline constexpr std::uint32_t kMsgSecretOtherKey = 0xE138F081;
// %1: the value's place. The system's cryptography failed.
inline constexpr std::uint32_t kMsgSecretNotSealed = 0xE138F082;

// The secrets' texts keep bytes in lower-case hex. NSecretHex appends
// `bytes`; NSecretFromHex reads exactly two digits per byte of `out` (upper
// case is not what a secret's text holds), false on anything else.
void NSecretHex(std::span<const std::uint8_t> bytes, NUnicodeString* out);
bool NSecretFromHex(std::u16string_view text, std::span<std::uint8_t> out);
// The bytes of a text, for the crypto functions.
inline std::span<const std::uint8_t> NSecretBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The id a stored value names its key by.
using NSecretKeyId = std::array<std::uint8_t, 8>;

// A key for values, with the id that stored values name it by.
struct NSecretKey {
  NAes256Key bytes{};
  NSecretKeyId id{};

  // The key `bytes`, with its id (a one-way function of the key: the id
  // tells nothing of the key). False only when the system's crypto failed.
  [[nodiscard]] static bool From(const NAes256Key& bytes, NSecretKey* key);
};

// A value's place, as it is bound to the value: the key's path and the
// value's name, without case (the store finds keys and names without case).
CFGDECK_API NUnicodeString NSecretPlace(std::u16string_view keyPath, std::u16string_view valueName);

// Whether `stored` is a sealed value rather than one kept before sealing.
bool NIsSealedSecret(std::u16string_view stored);

// The id of the key `stored` was sealed with; nothing for a value kept
// before sealing or one too short to name a key.
std::optional<NSecretKeyId> NSealedSecretKeyId(std::u16string_view stored);

// Seals `plain` for `place` with `key` into `*stored`. On failure (the
// system's crypto) `*stored` is untouched and params says why.
bool NSealSecret(const NSecretKey& key, std::u16string_view place, std::u16string_view plain, NUnicodeString* stored,
                 NReportMessageParams& params);

// Opens `stored` for `place` with `key` into `*plain`; a value kept before
// sealing is its own plain text. On failure `*plain` is untouched and params
// says why: kMsgSecretOtherKey when another key sealed it, kMsgSecretDamaged
// when it does not open.
bool NOpenSecret(const NSecretKey& key, std::u16string_view place, std::u16string_view stored, NUnicodeString* plain,
                 NReportMessageParams& params);
