#include <windows.h>

#include <bcrypt.h>

#include <algorithm>
#include <memory>

#include "platform/NCrypto.h"

namespace {

struct AlgorithmClose {
  void operator()(BCRYPT_ALG_HANDLE algorithm) const { BCryptCloseAlgorithmProvider(algorithm, 0); }
};
using Algorithm = std::unique_ptr<void, AlgorithmClose>;

struct KeyDestroy {
  void operator()(BCRYPT_KEY_HANDLE key) const { BCryptDestroyKey(key); }
};
using Key = std::unique_ptr<void, KeyDestroy>;

// CNG takes buffers as writable pointers even where it only reads them.
PUCHAR Writable(const void* bytes) { return static_cast<PUCHAR>(const_cast<void*>(bytes)); }
ULONG Length(std::size_t size) { return static_cast<ULONG>(size); }

// BCryptEncrypt and BCryptDecrypt read a null output as a question for the
// size alone, answered without computing or checking the tag: an empty text
// (whose data pointer may be null) must still come with a real buffer.
PUCHAR NonNull(const std::uint8_t* bytes, std::uint8_t* none) { return bytes ? Writable(bytes) : none; }

Algorithm OpenAlgorithm(LPCWSTR name, ULONG flags) {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  if (!BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&algorithm, name, nullptr, flags))) return nullptr;
  return Algorithm(algorithm);
}

// An AES-256 key in GCM mode. The provider must outlive the key, so both
// come back together. Empty when CNG refuses either.
struct GcmKey {
  Algorithm algorithm;
  Key key;
};

GcmKey MakeGcmKey(const NAes256Key& bytes) {
  GcmKey made;
  made.algorithm = OpenAlgorithm(BCRYPT_AES_ALGORITHM, 0);
  if (!made.algorithm) return made;
  static constexpr wchar_t kGcm[] = BCRYPT_CHAIN_MODE_GCM;
  BCRYPT_KEY_HANDLE key = nullptr;
  if (BCRYPT_SUCCESS(BCryptSetProperty(made.algorithm.get(), BCRYPT_CHAINING_MODE, Writable(kGcm), sizeof kGcm, 0)) &&
      BCRYPT_SUCCESS(BCryptGenerateSymmetricKey(made.algorithm.get(), &key, nullptr, 0, Writable(bytes.data()),
                                                Length(bytes.size()), 0))) {
    made.key.reset(key);
  }
  return made;
}

BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO GcmInfo(const NAesGcmNonce& nonce, std::span<const std::uint8_t> associatedData,
                                              std::uint8_t* tag) {
  BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO info;
  BCRYPT_INIT_AUTH_MODE_INFO(info);
  info.pbNonce = Writable(nonce.data());
  info.cbNonce = Length(nonce.size());
  info.pbAuthData = associatedData.empty() ? nullptr : Writable(associatedData.data());
  info.cbAuthData = Length(associatedData.size());
  info.pbTag = tag;
  info.cbTag = Length(kAesGcmTagSize);
  return info;
}

}  // namespace

bool NRandomBytes(std::span<std::uint8_t> out) {
  if (out.empty()) return true;
  if (out.size() <= kCryptoMaxBytes &&
      BCRYPT_SUCCESS(BCryptGenRandom(nullptr, out.data(), Length(out.size()), BCRYPT_USE_SYSTEM_PREFERRED_RNG))) {
    return true;
  }
  std::fill(out.begin(), out.end(), std::uint8_t{0});
  return false;
}

bool NAesGcmSeal(const NAes256Key& key, const NAesGcmNonce& nonce, std::span<const std::uint8_t> associatedData,
                 std::span<const std::uint8_t> plaintext, std::vector<std::uint8_t>* sealed) {
  sealed->clear();
  if (associatedData.size() > kCryptoMaxBytes || plaintext.size() > kCryptoMaxBytes - kAesGcmTagSize) return false;
  const GcmKey gcm = MakeGcmKey(key);
  if (!gcm.key) return false;
  std::vector<std::uint8_t> out(plaintext.size() + kAesGcmTagSize);
  BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO info = GcmInfo(nonce, associatedData, out.data() + plaintext.size());
  std::uint8_t none = 0;
  ULONG written = 0;
  const bool ok =
      BCRYPT_SUCCESS(BCryptEncrypt(gcm.key.get(), NonNull(plaintext.data(), &none), Length(plaintext.size()), &info,
                                   nullptr, 0, NonNull(out.data(), &none), Length(plaintext.size()), &written, 0)) &&
      written == plaintext.size();
  if (ok) *sealed = std::move(out);
  return ok;
}

bool NAesGcmOpen(const NAes256Key& key, const NAesGcmNonce& nonce, std::span<const std::uint8_t> associatedData,
                 std::span<const std::uint8_t> sealed, std::vector<std::uint8_t>* plaintext) {
  plaintext->clear();
  if (sealed.size() < kAesGcmTagSize || sealed.size() > kCryptoMaxBytes || associatedData.size() > kCryptoMaxBytes) {
    return false;
  }
  const GcmKey gcm = MakeGcmKey(key);
  if (!gcm.key) return false;
  const std::size_t textSize = sealed.size() - kAesGcmTagSize;
  std::vector<std::uint8_t> out(textSize);
  BCRYPT_AUTHENTICATED_CIPHER_MODE_INFO info = GcmInfo(nonce, associatedData, Writable(sealed.data() + textSize));
  std::uint8_t none = 0;
  ULONG written = 0;
  const bool ok =
      BCRYPT_SUCCESS(BCryptDecrypt(gcm.key.get(), NonNull(sealed.data(), &none), Length(textSize), &info, nullptr, 0,
                                   NonNull(out.data(), &none), Length(textSize), &written, 0)) &&
      written == textSize;
  if (ok) {
    *plaintext = std::move(out);
  } else {
    // CNG may have decrypted before it compared the tag: nothing may linger.
    SecureZeroMemory(out.data(), out.size());
  }
  return ok;
}

bool NPbkdf2Sha256(std::string_view password, std::span<const std::uint8_t> salt, std::uint32_t iterations,
                   std::span<std::uint8_t> out) {
  if (out.empty()) return false;
  bool ok = iterations >= 1 && iterations <= kPbkdf2MaxIterations && password.size() <= kCryptoMaxBytes &&
            salt.size() <= kCryptoMaxBytes && out.size() <= kCryptoMaxBytes;
  if (ok) {
    const Algorithm hmac = OpenAlgorithm(BCRYPT_SHA256_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG);
    ok = hmac &&
         BCRYPT_SUCCESS(BCryptDeriveKeyPBKDF2(hmac.get(), password.empty() ? nullptr : Writable(password.data()),
                                              Length(password.size()), salt.empty() ? nullptr : Writable(salt.data()),
                                              Length(salt.size()), iterations, out.data(), Length(out.size()), 0));
  }
  if (!ok) std::fill(out.begin(), out.end(), std::uint8_t{0});
  return ok;
}

bool NConstantTimeEqual(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
  if (a.size() != b.size()) return false;
  // Every byte is looked at whatever came before; volatile keeps the
  // compiler from stopping at the first difference.
  volatile std::uint8_t difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) difference = difference | (a[i] ^ b[i]);
  return difference == 0;
}
