#include "config/NSecretFormat.h"

#include <algorithm>
#include <vector>

#include "platform/NUnicode.h"

namespace {

constexpr std::u16string_view kMark = u"E1:";
constexpr std::size_t kIdSize = 8;
constexpr std::size_t kNonceSize = std::tuple_size_v<NAesGcmNonce>;
// Binds a value to this format as well as to its place.
constexpr std::string_view kAssociatedPrefix{"cfgdeck secret E1", 18};  // with its NUL

using Bytes = std::vector<std::uint8_t>;

// The bytes after the mark; nothing when the text is not lower-case hex.
std::optional<Bytes> SealedBytes(std::u16string_view stored) {
  if (!stored.starts_with(kMark)) return std::nullopt;
  stored.remove_prefix(kMark.size());
  if (stored.size() % 2 != 0) return std::nullopt;
  Bytes bytes(stored.size() / 2);
  if (!NSecretFromHex(stored, bytes)) return std::nullopt;
  return bytes;
}

std::string AssociatedData(std::u16string_view place) { return std::string(kAssociatedPrefix) + NUtf16ToUtf8(place); }

bool Fail(std::uint32_t code, std::u16string_view place, NReportMessageParams& params) {
  params.SetCode(code);
  params.AddArgument(place);
  return false;
}

}  // namespace

void NSecretHex(std::span<const std::uint8_t> bytes, NUnicodeString* out) {
  static constexpr char16_t kDigits[] = u"0123456789abcdef";
  for (std::uint8_t byte : bytes) {
    out->push_back(kDigits[byte >> 4]);
    out->push_back(kDigits[byte & 15]);
  }
}

bool NSecretFromHex(std::u16string_view text, std::span<std::uint8_t> out) {
  if (text.size() != out.size() * 2) return false;
  auto digit = [](char16_t c) {
    return c >= u'0' && c <= u'9' ? c - u'0' : c >= u'a' && c <= u'f' ? c - u'a' + 10 : -1;
  };
  for (std::size_t i = 0; i < out.size(); ++i) {
    const int high = digit(text[2 * i]), low = digit(text[2 * i + 1]);
    if (high < 0 || low < 0) return false;
    out[i] = static_cast<std::uint8_t>(high << 4 | low);
  }
  return true;
}

bool NSecretKey::From(const NAes256Key& bytes, NSecretKey* key) {
  NSecretKey made;
  made.bytes = bytes;
  // PBKDF2 with one iteration is HMAC-SHA256 keyed by the key: one way.
  static constexpr std::string_view kIdLabel = "cfgdeck key id";
  const std::string_view secret(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (!NPbkdf2Sha256(secret, NSecretBytes(kIdLabel), 1, made.id)) return false;
  *key = made;
  return true;
}

NUnicodeString NSecretPlace(std::u16string_view keyPath, std::u16string_view valueName) {
  NUnicodeString place(keyPath);
  place += u'\\';
  place += valueName;
  std::transform(place.begin(), place.end(), place.begin(), NFoldCase);
  return place;
}

bool NIsSealedSecret(std::u16string_view stored) { return stored.starts_with(kMark); }

std::optional<NSecretKeyId> NSealedSecretKeyId(std::u16string_view stored) {
  const std::optional<Bytes> bytes = SealedBytes(stored.substr(0, kMark.size() + 2 * kIdSize));
  if (!bytes || bytes->size() != kIdSize) return std::nullopt;
  NSecretKeyId id;
  std::copy(bytes->begin(), bytes->end(), id.begin());
  return id;
}

bool NSealSecret(const NSecretKey& key, std::u16string_view place, std::u16string_view plain, NUnicodeString* stored,
                 NReportMessageParams& params) {
  NAesGcmNonce nonce;
  Bytes sealed;
  const std::string text = NUtf16ToUtf8(plain);
  if (!NRandomBytes(nonce) ||
      !NAesGcmSeal(key.bytes, nonce, NSecretBytes(AssociatedData(place)), NSecretBytes(text), &sealed)) {
    return Fail(kMsgSecretNotSealed, place, params);
  }
  NUnicodeString out(kMark);
  NSecretHex(key.id, &out);
  NSecretHex(nonce, &out);
  NSecretHex(sealed, &out);
  *stored = std::move(out);
  return true;
}

bool NOpenSecret(const NSecretKey& key, std::u16string_view place, std::u16string_view stored, NUnicodeString* plain,
                 NReportMessageParams& params) {
  if (!NIsSealedSecret(stored)) {
    *plain = NUnicodeString(stored);
    return true;
  }
  const std::optional<Bytes> bytes = SealedBytes(stored);
  if (!bytes || bytes->size() < kIdSize + kNonceSize + kAesGcmTagSize) {
    return Fail(kMsgSecretDamaged, place, params);
  }
  if (!std::equal(key.id.begin(), key.id.end(), bytes->begin())) return Fail(kMsgSecretOtherKey, place, params);
  NAesGcmNonce nonce;
  std::copy_n(bytes->begin() + kIdSize, kNonceSize, nonce.begin());
  const std::span<const std::uint8_t> sealed(bytes->data() + kIdSize + kNonceSize,
                                             bytes->size() - kIdSize - kNonceSize);
  Bytes text;
  if (!NAesGcmOpen(key.bytes, nonce, NSecretBytes(AssociatedData(place)), sealed, &text) ||
      !NIsValidUtf8({reinterpret_cast<const char*>(text.data()), text.size()})) {
    return Fail(kMsgSecretDamaged, place, params);
  }
  *plain = NUnicodeString::FromUtf8({reinterpret_cast<const char*>(text.data()), text.size()});
  return true;
}
