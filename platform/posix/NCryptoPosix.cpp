#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <memory>

#include "platform/NCrypto.h"

namespace {

struct CipherContextFree {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, CipherContextFree>;

// OpenSSL takes lengths as int; kCryptoMaxBytes keeps every one in range.
int Length(std::size_t size) { return static_cast<int>(size); }

// The update calls read a null output as "this is associated data", so an
// empty span (whose pointer may be null) must not reach them.
bool AddAssociatedData(EVP_CIPHER_CTX* context, bool encrypt, std::span<const std::uint8_t> data) {
  if (data.empty()) return true;
  int written = 0;
  return encrypt ? EVP_EncryptUpdate(context, nullptr, &written, data.data(), Length(data.size())) == 1
                 : EVP_DecryptUpdate(context, nullptr, &written, data.data(), Length(data.size())) == 1;
}

}  // namespace

bool NRandomBytes(std::span<std::uint8_t> out) {
  if (out.empty()) return true;
  if (out.size() <= kCryptoMaxBytes && RAND_bytes(out.data(), Length(out.size())) == 1) return true;
  std::fill(out.begin(), out.end(), std::uint8_t{0});
  return false;
}

bool NAesGcmSeal(const NAes256Key& key, const NAesGcmNonce& nonce, std::span<const std::uint8_t> associatedData,
                 std::span<const std::uint8_t> plaintext, std::vector<std::uint8_t>* sealed) {
  sealed->clear();
  if (associatedData.size() > kCryptoMaxBytes || plaintext.size() > kCryptoMaxBytes - kAesGcmTagSize) return false;
  const CipherContext context(EVP_CIPHER_CTX_new());
  if (!context) return false;
  std::vector<std::uint8_t> out(plaintext.size() + kAesGcmTagSize);
  std::uint8_t* const tag = out.data() + plaintext.size();
  int written = 0;
  // GCM is a stream mode: the update writes every byte and the final none.
  const bool ok = EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), nonce.data()) == 1 &&
                  AddAssociatedData(context.get(), true, associatedData) &&
                  (plaintext.empty() || (EVP_EncryptUpdate(context.get(), out.data(), &written, plaintext.data(),
                                                           Length(plaintext.size())) == 1 &&
                                         written == Length(plaintext.size()))) &&
                  EVP_EncryptFinal_ex(context.get(), tag, &written) == 1 && written == 0 &&
                  EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, static_cast<int>(kAesGcmTagSize), tag) == 1;
  if (ok) *sealed = std::move(out);
  return ok;
}

bool NAesGcmOpen(const NAes256Key& key, const NAesGcmNonce& nonce, std::span<const std::uint8_t> associatedData,
                 std::span<const std::uint8_t> sealed, std::vector<std::uint8_t>* plaintext) {
  plaintext->clear();
  if (sealed.size() < kAesGcmTagSize || sealed.size() > kCryptoMaxBytes || associatedData.size() > kCryptoMaxBytes) {
    return false;
  }
  const CipherContext context(EVP_CIPHER_CTX_new());
  if (!context) return false;
  const std::span<const std::uint8_t> ciphertext = sealed.first(sealed.size() - kAesGcmTagSize);
  // The control call takes a writable pointer.
  std::array<std::uint8_t, kAesGcmTagSize> tag;
  std::copy(sealed.end() - kAesGcmTagSize, sealed.end(), tag.begin());
  std::vector<std::uint8_t> out(ciphertext.size());
  std::array<std::uint8_t, kAesGcmTagSize> finalOut;  // GCM's final writes nothing, yet wants a buffer
  int written = 0;
  const bool ok =
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), nonce.data()) == 1 &&
      AddAssociatedData(context.get(), false, associatedData) &&
      (ciphertext.empty() ||
       (EVP_DecryptUpdate(context.get(), out.data(), &written, ciphertext.data(), Length(ciphertext.size())) == 1 &&
        written == Length(ciphertext.size()))) &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, static_cast<int>(kAesGcmTagSize), tag.data()) == 1 &&
      EVP_DecryptFinal_ex(context.get(), finalOut.data(), &written) == 1 && written == 0;
  if (ok) {
    *plaintext = std::move(out);
  } else {
    // The text was decrypted before the tag was checked: it must not linger.
    OPENSSL_cleanse(out.data(), out.size());
  }
  return ok;
}

bool NPbkdf2Sha256(std::string_view password, std::span<const std::uint8_t> salt, std::uint32_t iterations,
                   std::span<std::uint8_t> out) {
  if (out.empty()) return false;
  const bool ok = iterations >= 1 && iterations <= kPbkdf2MaxIterations && password.size() <= kCryptoMaxBytes &&
                  salt.size() <= kCryptoMaxBytes && out.size() <= kCryptoMaxBytes &&
                  PKCS5_PBKDF2_HMAC(password.data(), Length(password.size()), salt.data(), Length(salt.size()),
                                    static_cast<int>(iterations), EVP_sha256(), Length(out.size()), out.data()) == 1;
  if (!ok) std::fill(out.begin(), out.end(), std::uint8_t{0});
  return ok;
}

bool NConstantTimeEqual(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) {
  return a.size() == b.size() && (a.empty() || CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0);
}
