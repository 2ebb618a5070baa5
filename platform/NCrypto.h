#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

// The cryptographic primitives that encrypted values are built from, taken
// from the system's own libraries: OpenSSL's libcrypto on POSIX, CNG
// (bcrypt.dll) on Windows. Both produce the same bytes for the same inputs,
// so that what one system stores the other reads. All functions are
// thread-safe and keep no state between calls. Any failure, including one of
// the system library, is a false return, after which the outputs hold
// nothing that was computed (see each function). An output must not be the
// storage that an input views: outputs are cleared first.

using NAes256Key = std::array<std::uint8_t, 32>;
using NAesGcmNonce = std::array<std::uint8_t, 12>;

// The authentication tag that follows the ciphertext in a sealed value.
inline constexpr std::size_t kAesGcmTagSize = 16;

// The longest input any of these functions takes (a plaintext, a sealed
// value, associated data, a password, a salt, an output): what both systems'
// libraries accept in one call. Anything longer fails.
inline constexpr std::size_t kCryptoMaxBytes = 0x7FFF'FFF0;

// The most PBKDF2 iterations both systems' libraries take.
inline constexpr std::uint32_t kPbkdf2MaxIterations = 0x7FFF'FFFF;

// Fills `out` with bytes from the system's cryptographically secure
// generator. On failure `out` is all zeros.
[[nodiscard]] bool NRandomBytes(std::span<std::uint8_t> out);

// Encrypts `plaintext` with AES-256 in GCM mode, authenticating it together
// with `associatedData` (which is not encrypted, and is needed again to
// open). `*sealed` becomes the ciphertext, as long as the plaintext, followed
// by the kAesGcmTagSize-byte tag. A nonce must never be used twice with the
// same key. Either span may be empty. On failure `*sealed` is empty.
[[nodiscard]] bool NAesGcmSeal(const NAes256Key& key, const NAesGcmNonce& nonce,
                               std::span<const std::uint8_t> associatedData, std::span<const std::uint8_t> plaintext,
                               std::vector<std::uint8_t>* sealed);

// Undoes NAesGcmSeal. False when `sealed` is shorter than a tag or when
// anything differs from what was sealed: a changed or missing byte, another
// key, nonce or associated data. On failure `*plaintext` is empty: no byte of
// an unauthenticated decryption is handed out.
[[nodiscard]] bool NAesGcmOpen(const NAes256Key& key, const NAesGcmNonce& nonce,
                               std::span<const std::uint8_t> associatedData, std::span<const std::uint8_t> sealed,
                               std::vector<std::uint8_t>* plaintext);

// Derives `out.size()` bytes from a password with PBKDF2-HMAC-SHA256. The
// password is taken as the bytes given (UTF-8 by convention; it may be empty
// or hold NULs). False when `iterations` is 0 or above kPbkdf2MaxIterations,
// or `out` is empty; on failure `out` is all zeros.
[[nodiscard]] bool NPbkdf2Sha256(std::string_view password, std::span<const std::uint8_t> salt,
                                 std::uint32_t iterations, std::span<std::uint8_t> out);

// True when `a` and `b` hold the same bytes. The time taken depends on the
// lengths only, not on where the bytes differ, so comparing a secret (a
// key check value, a tag) tells an attacker nothing about it.
[[nodiscard]] bool NConstantTimeEqual(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b);
