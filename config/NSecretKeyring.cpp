#include "config/NSecretKeyring.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <vector>

#include "config/GlobalConfig.h"
#include "config/NLibraryState.h"
#include "config/NSecretKeys.h"
#include "config/NSecretRekeyer.h"
#include "location/NStatusReport.h"
#include "platform/NPlatform.h"
#include "platform/NSystemKeyStore.h"
#include "platform/NUnicode.h"
#include "platform/NUserFolders.h"
#include "store/NProfileStoreFactory.h"

namespace {

constexpr std::u16string_view kVerifierMark = u"P1:";
// The key "Global" and its values that say what protects the folder.
constexpr std::u16string_view kGlobalKey = u"global";
constexpr std::u16string_view kPassphraseValue = u"Config Passphrase";
constexpr std::u16string_view kChangeValue = u"Change Config Passphrase";
// While a change is under way: the key values may still be sealed with,
// itself sealed with the new key.
constexpr std::u16string_view kPreviousKeyValue = u"Config Passphrase Previous Key";
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

// Names a folder's keys by a one-way function of its path, without case:
// neither the key folder nor the system's keyring lists the user's
// configuration folders.
NUnicodeString FolderId(const NUnicodeString& configFolder) {
  NUnicodeString folded(configFolder);
  std::transform(folded.begin(), folded.end(), folded.begin(), NFoldCase);
  static constexpr std::string_view kLabel = "cfgdeck folder id";
  std::array<std::uint8_t, 8> id{};
  if (!NPbkdf2Sha256(NUtf16ToUtf8(folded), NSecretBytes(kLabel), 1, id)) id.fill(0);
  return Hex(id);
}

// The process's global record, when loaded, learns what "Global" now says,
// so that a later save of it does not put the old state back.
void SyncGlobalRecord(const NUnicodeString& verifier, bool changePending) {
  NLibraryState& state = NLibraryState::Get();
  std::lock_guard<std::recursive_mutex> lock(state.mutex);
  if (!state.global) return;
  state.global->Lock();
  state.global->m_configPassphrase.Load(NEncryptedString::FromStored(verifier));
  state.global->m_changeConfigPassphrase.Load(changePending);
  state.global->Unlock();
}

bool Fail(std::uint32_t code, std::u16string_view argument, NReportMessageParams& params) {
  params.SetCode(code);
  if (!argument.empty()) params.AddArgument(argument);
  return false;
}

}  // namespace

struct NSecretKeyring::State {
  NUnicodeString verifier;
  bool changePending = false;
  NUnicodeString previousKey;  // sealed, for previousPlace
  NUnicodeString previousPlace;
  bool previousOpened = false;
};

NSecretKeyring::NSecretKeyring(NUnicodeString configFolder, NUnicodeString keyFolder, NPlatform& platform,
                               std::unique_ptr<NSystemKeyStore> system)
    : m_configFolder(std::move(configFolder)),
      m_keyFolder(std::move(keyFolder)),
      m_platform(platform),
      m_system(std::move(system)) {}

NSecretKeyring::~NSecretKeyring() = default;

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

std::uint32_t NSecretKeyring::VerifierIterations(std::u16string_view verifier) {
  Verifier parsed;
  return ParseVerifier(verifier, &parsed) ? parsed.iterations : 0;
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
  return m_keyFolder + m_platform.PathSeparator() + FolderId(m_configFolder) + u".key";
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

std::shared_ptr<NSecretKeyring> NSecretKeyring::Use(std::u16string_view configFolder) {
  static std::mutex mutex;
  static std::vector<std::shared_ptr<NSecretKeyring>> keyrings;
  std::shared_ptr<NSecretKeyring> keyring;
  {
    std::lock_guard<std::mutex> lock(mutex);
    const NUnicodeString id = FolderId(NUnicodeString(configFolder));
    for (const auto& held : keyrings) {
      if (FolderId(held->m_configFolder) == id) keyring = held;
    }
    if (!keyring) {
      NPlatform& platform = NPlatform::Default();
      NUnicodeString keyFolder(NUserConfigRoot());
      keyFolder += platform.PathSeparator();
      keyFolder += u"keys";
      keyring = std::make_shared<NSecretKeyring>(NUnicodeString(configFolder), keyFolder, platform,
                                                 NSystemKeyStore::Create(keyFolder, platform));
      keyrings.push_back(keyring);
    }
  }
  NSetSecretKeySource([keyring](const NSecretKeyId* wanted, NSecretKey* key, NReportMessageParams& params) {
    return keyring->Key(wanted, key, params);
  });
  return keyring;
}

bool NSecretKeyring::ReadState(NReportMessageParams& params) {
  if (m_state) return true;
  auto state = std::make_unique<State>();
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(kMsgNoSecretKey, {}, params);
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params);
  if (!root) return false;
  // A folder without "Global" has no passphrase.
  if (root->SubKeyExists(kGlobalKey)) {
    std::unique_ptr<NProfileKey> global = root->OpenSubKey(kGlobalKey, params);
    if (!global) return false;
    std::uint32_t change = 0;
    global->GetStringValue(kPassphraseValue, &state->verifier);
    state->changePending = global->GetDwordValue(kChangeValue, &change) && change != 0 &&
                           global->GetStringValue(kPreviousKeyValue, &state->previousKey);
    state->previousPlace = NSecretPlace(global->GetPath(), kPreviousKeyValue);
  }
  if (!state->verifier.empty() && !IsVerifier(state->verifier)) {
    return Fail(kMsgBadPassphraseVerifier, state->verifier, params);
  }
  m_state = std::move(state);
  return true;
}

bool NSecretKeyring::HasPassphrase(NReportMessageParams& params) {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  return ReadState(params) && !m_state->verifier.empty();
}

bool NSecretKeyring::Unlock(std::u16string_view passphrase, NReportMessageParams& params) {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  if (!ReadState(params)) return false;
  if (!m_state->verifier.empty()) {
    NSecretKey key;
    if (!OpenVerifier(passphrase, m_state->verifier, &key, params)) return false;
    m_passphraseKey = key;
    m_protection = NSecretProtection::kPassphrase;
  }
  return FinishChange({}, params);
}

bool NSecretKeyring::CurrentKey(NSecretKey* key, NReportMessageParams& params) {
  if (!ReadState(params)) return false;
  if (!m_state->verifier.empty()) {
    if (!m_passphraseKey) return Fail(kMsgPassphraseNeeded, {}, params);
    *key = *m_passphraseKey;
  } else if (!SystemKey(key, params)) {
    return false;
  }
  // The key of an interrupted change comes with the key that sealed it;
  // without it the change could not finish, so nothing goes on.
  if (m_state->changePending && !m_state->previousOpened) {
    NUnicodeString hex;
    NAes256Key bytes;
    NSecretKey previous;
    const bool opened = NOpenSecret(*key, m_state->previousPlace, m_state->previousKey, &hex, params) &&
                        NSecretFromHex(hex, bytes) && NSecretKey::From(bytes, &previous);
    std::fill(hex.begin(), hex.end(), u'\0');
    bytes.fill(0);
    if (!opened) return params.GetCode() != 0 ? false : Fail(kMsgSecretDamaged, m_state->previousPlace, params);
    m_retired.push_back(previous);
    m_state->previousOpened = true;
  }
  return true;
}

bool NSecretKeyring::Key(const NSecretKeyId* wanted, NSecretKey* key, NReportMessageParams& params) {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  NSecretKey current;
  if (!CurrentKey(&current, params)) return false;
  if (!wanted || *wanted == current.id) {
    *key = current;
    return true;
  }
  for (const NSecretKey& retired : m_retired) {
    if (retired.id == *wanted) {
      *key = retired;
      return true;
    }
  }
  params.SetCode(kMsgSecretOtherKey);  // the caller knows the value's place
  return false;
}

std::optional<NSecretProtection> NSecretKeyring::Protection() const {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  return m_protection;
}

NUnicodeString NSecretKeyring::KeptIn() const {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  if (m_protection == NSecretProtection::kSystemKeyring) return NUnicodeString::FromUtf8(m_system->Name());
  if (m_protection == NSecretProtection::kKeyFile) return KeyFilePath();
  return m_protection ? NUnicodeString(u"Config Passphrase") : NUnicodeString();
}

bool NSecretKeyring::SystemKey(NSecretKey* key, NReportMessageParams& params) {
  if (m_randomKey) {
    *key = *m_randomKey;
    return true;
  }
  // One process at a time decides where the folder's key lives, so that two
  // never make two keys.
  const NUnicodeString id = FolderId(m_configFolder);
  std::unique_ptr<NFile> lock;
  NStatus status = m_platform.CreateFolderChain(m_keyFolder, NFileSecurity::kOwnerOnly);
  if (status.IsOk()) {
    NOpenOptions options;
    options.mode = NOpenMode::kCreateIfMissing;
    options.access = NFileAccess::kReadWrite;
    options.security = NFileSecurity::kOwnerOnly;
    options.noFollow = true;
    status = m_platform.OpenFile(m_keyFolder + m_platform.PathSeparator() + id + u".lock", options, &lock);
  }
  if (status.IsOk()) status = lock->Lock(0, 1, NLockKind::kExclusive);
  if (!status.IsOk()) {
    NReportStatus(status, params);
    return false;
  }
  NAes256Key bytes{};
  NSecretKey made;
  NSecretProtection protection = NSecretProtection::kKeyFile;
  const NSystemKeyResult found = m_system ? m_system->Load(id.ToUtf8(), &bytes) : NSystemKeyResult::kUnavailable;
  bool ok;
  if (found == NSystemKeyResult::kFound) {
    ok = NSecretKey::From(bytes, &made) || Fail(kMsgSecretNotSealed, m_configFolder, params);
    protection = NSecretProtection::kSystemKeyring;
  } else {
    ok = KeyFileKey(&made, params);
    // A keyring that answers takes over the key file's key; the file goes
    // once the keyring gives the key back.
    if (ok && found == NSystemKeyResult::kMissing &&
        m_system->Store(id.ToUtf8(), "cfgdeck key of " + m_configFolder.ToUtf8(), made.bytes) &&
        m_system->Load(id.ToUtf8(), &bytes) == NSystemKeyResult::kFound && bytes == made.bytes) {
      static_cast<void>(m_platform.DeleteFile(KeyFilePath()));
      protection = NSecretProtection::kSystemKeyring;
    }
  }
  bytes.fill(0);
  static_cast<void>(lock->Unlock(0, 1));
  if (!ok) return false;
  m_randomKey = made;
  m_protection = protection;
  *key = made;
  return true;
}

bool NSecretKeyring::WriteGlobal(const std::function<bool(NProfileKey&)>& change, NReportMessageParams& params) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(kMsgNoSecretKey, {}, params);
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(false, params);
  std::unique_ptr<NProfileKey> global = root ? root->OpenSubKey(kGlobalKey, params) : nullptr;
  if (!global) return false;
  if (!change(*global)) {
    if (params.GetCode() == 0) NReportStatus(NStatus::Error(NStatus::kInvalidParameter, "store the value", global->GetPath()), params);
    return false;
  }
  return global->Flush(params);
}

bool NSecretKeyring::ChangePassphrase(std::u16string_view passphrase, std::uint32_t iterations,
                                      const std::function<void(std::size_t)>& progress, NReportMessageParams& params) {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  // An earlier change is finished first: it holds the key it came from.
  if (IsChangePending(params) && !FinishChange(progress, params)) return false;
  NSecretKey old;
  if (!CurrentKey(&old, params)) return false;
  NUnicodeString verifier;
  NSecretKey next;
  if (passphrase.empty()) {
    if (m_state->verifier.empty()) return true;
    if (!SystemKey(&next, params)) return false;
  } else if (!MakeVerifier(passphrase, iterations, &verifier, &next, params)) {
    return false;
  }
  NUnicodeString hex, sealedOld;
  NSecretHex(old.bytes, &hex);
  // One save of "Global" turns the folder over to the new key.
  const bool written = WriteGlobal(
      [&](NProfileKey& global) {
        m_state->previousPlace = NSecretPlace(global.GetPath(), kPreviousKeyValue);
        return NSealSecret(next, m_state->previousPlace, hex, &sealedOld, params) &&
               global.SetStringValue(kPassphraseValue, verifier) && global.SetDwordValue(kChangeValue, 1) &&
               global.SetStringValue(kPreviousKeyValue, sealedOld);
      },
      params);
  std::fill(hex.begin(), hex.end(), u'\0');
  if (!written) return false;
  m_state->verifier = verifier;
  m_state->changePending = true;
  SyncGlobalRecord(verifier, true);
  m_state->previousKey = sealedOld;
  m_state->previousOpened = true;
  m_passphraseKey = passphrase.empty() ? std::nullopt : std::optional<NSecretKey>(next);
  if (!passphrase.empty()) m_protection = NSecretProtection::kPassphrase;
  m_retired.push_back(old);
  return Rekey(progress, params);
}

bool NSecretKeyring::IsChangePending(NReportMessageParams& params) {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  return ReadState(params) && m_state->changePending;
}

bool NSecretKeyring::FinishChange(const std::function<void(std::size_t)>& progress, NReportMessageParams& params) {
  std::lock_guard<std::recursive_mutex> lock(m_mutex);
  if (!ReadState(params)) return false;
  if (!m_state->changePending) return true;
  NSecretKey current;
  return CurrentKey(&current, params) && Rekey(progress, params);
}

bool NSecretKeyring::Rekey(const std::function<void(std::size_t)>& progress, NReportMessageParams& params) {
  NSecretKey current;
  if (!CurrentKey(&current, params)) return false;
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  if (!store) return Fail(kMsgNoSecretKey, {}, params);
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(false, params);
  if (!root) return false;
  NSecretRekeyer rekeyer(current, m_retired);
  rekeyer.Run(*root, progress);
  if (!rekeyer.Failures().empty()) {
    // The change stays pending, and the next run goes on with it.
    const NSecretRekeyer::Failure& first = rekeyer.Failures().front();
    params.SetCode(kMsgRekeyUnfinished);
    params.AddUnsigned(static_cast<std::uint32_t>(rekeyer.Failures().size()));
    params.AddArgument(first.key + u": " + first.why);
    return false;
  }
  if (!WriteGlobal(
          [](NProfileKey& global) {
            return global.DeleteValue(kPreviousKeyValue) && global.SetDwordValue(kChangeValue, 0);
          },
          params)) {
    return false;
  }
  m_state->changePending = false;
  m_state->previousKey.clear();
  SyncGlobalRecord(m_state->verifier, false);
  return true;
}
