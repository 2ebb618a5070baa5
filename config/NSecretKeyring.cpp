#include "config/NSecretKeyring.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <vector>

#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "platform/NUnicode.h"

namespace {

constexpr std::u16string_view kVerifierMark = u"P1:";
constexpr std::size_t kSaltSize = 16;
constexpr std::size_t kCheckSize = 32;

NUnicodeString Hex(std::span<const std::uint8_t> bytes) {
  NUnicodeString out;
  NSecretHex(bytes, &out);
  return out;
}

// Key and check from one derivation: 64 bytes, the key first.
bool Derive(std::u16string_view passphrase, std::span<const std::uint8_t> salt, std::uint32_t iterations,
            NAes256Key* key, std::array<std::uint8_t, kCheckSize>* check) {
  std::array<std::uint8_t, 64> derived;
  if (!NPbkdf2Sha256(NUtf16ToUtf8(passphrase), salt, iterations, derived)) return false;
  std::copy_n(derived.begin(), key->size(), key->begin());
  std::copy_n(derived.begin() + 32, check->size(), check->begin());
  derived.fill(0);
  return true;
}

struct Verifier {
  std::uint32_t iterations = 0;
  std::array<std::uint8_t, kSaltSize> salt{};
  std::array<std::uint8_t, kCheckSize> check{};
};

bool ParseVerifier(std::u16string_view stored, Verifier* verifier) {
  if (!stored.starts_with(kVerifierMark)) return false;
  stored.remove_prefix(kVerifierMark.size());
  const std::size_t colon = stored.find(u':');
  if (colon == 0 || colon == std::u16string_view::npos ||
      stored.size() != colon + 1 + 2 * kSaltSize + 1 + 2 * kCheckSize) {
    return false;
  }
  const std::string digits = NUtf16ToUtf8(stored.substr(0, colon));
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), verifier->iterations);
  return error == std::errc() && end == digits.data() + digits.size() && verifier->iterations >= 1 &&
         verifier->iterations <= kPbkdf2MaxIterations &&
         NSecretFromHex(stored.substr(colon + 1, 2 * kSaltSize), verifier->salt) &&
         stored[colon + 1 + 2 * kSaltSize] == u':' &&
         NSecretFromHex(stored.substr(colon + 2 + 2 * kSaltSize), verifier->check);
}

bool Fail(std::uint32_t code, std::u16string_view argument, NReportMessageParams& params) {
  params.SetCode(code);
  if (!argument.empty()) params.AddArgument(argument);
  return false;
}

}  // namespace

NSecretKeyring::NSecretKeyring(NUnicodeString configFolder, NUnicodeString keyFolder, NPlatform& platform)
    : m_configFolder(std::move(configFolder)), m_keyFolder(std::move(keyFolder)), m_platform(platform) {}

bool NSecretKeyring::MakeVerifier(std::u16string_view passphrase, std::uint32_t iterations, NUnicodeString* verifier,
                                  NSecretKey* key, NReportMessageParams& params) {
  Verifier made;
  made.iterations = iterations;
  NAes256Key bytes;
  NSecretKey derived;
  if (!NRandomBytes(made.salt) || !Derive(passphrase, made.salt, iterations, &bytes, &made.check) ||
      !NSecretKey::From(bytes, &derived)) {
    return Fail(kMsgSecretNotSealed, u"Config Passphrase", params);
  }
  *verifier = NUnicodeString(kVerifierMark) + NUnicodeString::FromUtf8(std::to_string(iterations)) + u":" +
              Hex(made.salt) + u":" + Hex(made.check);
  *key = derived;
  return true;
}

bool NSecretKeyring::IsVerifier(std::u16string_view stored) {
  Verifier ignored;
  return ParseVerifier(stored, &ignored);
}

bool NSecretKeyring::OpenVerifier(std::u16string_view passphrase, std::u16string_view verifier, NSecretKey* key,
                                  NReportMessageParams& params) {
  Verifier parsed;
  if (!ParseVerifier(verifier, &parsed)) return Fail(kMsgBadPassphraseVerifier, verifier, params);
  NAes256Key bytes;
  std::array<std::uint8_t, kCheckSize> check;
  NSecretKey derived;
  if (!Derive(passphrase, parsed.salt, parsed.iterations, &bytes, &check) || !NSecretKey::From(bytes, &derived)) {
    return Fail(kMsgSecretNotSealed, u"Config Passphrase", params);
  }
  if (!NConstantTimeEqual(check, parsed.check)) return Fail(kMsgWrongPassphrase, {}, params);
  *key = derived;
  return true;
}

std::uint32_t NSecretKeyring::MeasureIterations(double seconds) {
  constexpr std::uint32_t kProbe = 20'000;
  static constexpr std::uint8_t kSalt[kSaltSize] = {};
  std::array<std::uint8_t, 64> out;
  const auto start = std::chrono::steady_clock::now();
  if (!NPbkdf2Sha256("probe", kSalt, kProbe, out)) return kMinimumIterations;
  const double took = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const double wanted = took > 0 ? kProbe * seconds / took : kPbkdf2MaxIterations;
  return static_cast<std::uint32_t>(std::clamp(wanted, double{kMinimumIterations}, double{kPbkdf2MaxIterations}));
}

NUnicodeString NSecretKeyring::KeyFilePath() const {
  // Named by a one-way function of the folder's path, without case: the
  // key folder does not list the user's configuration folders.
  NUnicodeString folded(m_configFolder);
  std::transform(folded.begin(), folded.end(), folded.begin(), NFoldCase);
  static constexpr std::string_view kLabel = "cfgdeck folder id";
  std::array<std::uint8_t, 8> id{};
  if (!NPbkdf2Sha256(NUtf16ToUtf8(folded), NSecretBytes(kLabel), 1, id)) id.fill(0);
  return m_keyFolder + m_platform.PathSeparator() + Hex(id) + u".key";
}

bool NSecretKeyring::KeyFileKey(NSecretKey* key, NReportMessageParams& params) {
  const NUnicodeString path = KeyFilePath();
  if (NStatus made = m_platform.CreateFolderChain(m_keyFolder, NFileSecurity::kOwnerOnly); !made.IsOk()) {
    NReportStatus(made, params);
    return false;
  }
  NOpenOptions options;
  options.mode = NOpenMode::kCreateIfMissing;
  options.access = NFileAccess::kReadWrite;
  options.security = NFileSecurity::kOwnerOnly;
  options.noFollow = true;
  std::unique_ptr<NFile> file;
  NStatus status = m_platform.OpenFile(path, options, &file);
  // One process makes the key; the others wait for it and read it.
  if (status.IsOk()) status = file->Lock(0, 1, NLockKind::kExclusive);
  // One byte more than a key: a longer file is no key file of ours.
  std::array<std::uint8_t, sizeof(NAes256Key) + 1> stored{};
  std::size_t read = 0;
  if (status.IsOk()) status = file->Read(0, stored.data(), stored.size(), &read);
  NAes256Key bytes;
  std::copy_n(stored.begin(), bytes.size(), bytes.begin());
  if (status.IsOk() && read == 0) {
    if (!NRandomBytes(bytes)) {
      static_cast<void>(file->Unlock(0, 1));
      return Fail(kMsgSecretNotSealed, path, params);
    }
    status = file->Write(0, bytes.data(), bytes.size());
    if (status.IsOk()) status = file->Sync();
    if (!status.IsOk()) static_cast<void>(file->Truncate(0));  // no half key for the next one to read
    read = bytes.size();
  }
  if (file) static_cast<void>(file->Unlock(0, 1));
  if (!status.IsOk()) {
    NReportStatus(status, params);
    return false;
  }
  NSecretKey made;
  const bool valid = read == bytes.size() && NSecretKey::From(bytes, &made);
  bytes.fill(0);
  stored.fill(0);
  if (!valid) return Fail(kMsgBadKeyFile, path, params);
  *key = made;
  return true;
}
