#include "platform/NSystemKeyStore.h"

#include <windows.h>
#include <wincrypt.h>

// The interface's own names, not the Win32 A/W macros.
#undef DeleteFile
#undef MoveFile

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/NPlatform.h"
#include "platform/NUnicode.h"

namespace {

// Mixed into every blob: what another program protected for this user does
// not open as one of ours.
constexpr char kEntropy[] = "cfgdeck folder key";
// Far more than a blob of 32 bytes takes, with a long label.
constexpr std::size_t kMostBlobBytes = 16 * 1024;

bool IsKeyId(std::string_view id) {
  return !id.empty() &&
         std::all_of(id.begin(), id.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

const wchar_t* Wide(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

DATA_BLOB Blob(const void* data, std::size_t size) {
  return {static_cast<DWORD>(size), static_cast<BYTE*>(const_cast<void*>(data))};
}

class NDpapiKeyStore final : public NSystemKeyStore {
 public:
  NDpapiKeyStore(std::u16string folder, NPlatform& platform) : m_folder(std::move(folder)), m_platform(platform) {}

  const char* Name() const override { return "DPAPI"; }

  NSystemKeyResult Load(std::string_view id, NAes256Key* key) override {
    if (!Ready(id)) return NSystemKeyResult::kUnavailable;
    const std::u16string path = PathOf(id);
    std::unique_ptr<NFile> file;
    NStatus status = m_platform.OpenFile(path, {.noFollow = true, .anyMissingIsFile = true}, &file);
    if (status.IsNotFound()) return NSystemKeyResult::kMissing;
    std::vector<std::uint8_t> stored(kMostBlobBytes + 1);
    std::size_t read = 0;
    if (status.IsOk()) status = file->Read(0, stored.data(), stored.size(), &read);
    if (!Succeeded(status)) return NSystemKeyResult::kUnavailable;
    // Never kMissing from here: the caller would store a new key over it.
    if (read > kMostBlobBytes) return Damaged(path, "is too long for a key");
    DATA_BLOB sealed = Blob(stored.data(), read);
    DATA_BLOB entropy = Blob(kEntropy, sizeof kEntropy - 1);
    DATA_BLOB plain = {};
    if (!CryptUnprotectData(&sealed, nullptr, &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &plain)) {
      const DWORD error = GetLastError();
      Failed(NUtf16ToUtf8(path) + " does not unprotect", error);
      return NSystemKeyResult::kUnavailable;
    }
    const bool valid = plain.cbData == key->size();
    if (valid) std::copy_n(plain.pbData, key->size(), key->begin());
    SecureZeroMemory(plain.pbData, plain.cbData);
    LocalFree(plain.pbData);
    return valid ? NSystemKeyResult::kFound : Damaged(path, "holds no key of 32 bytes");
  }

  bool Store(std::string_view id, std::string_view label, const NAes256Key& key) override {
    if (!Ready(id)) return false;
    if (!Succeeded(m_platform.CreateFolderChain(m_folder, NFileSecurity::kOwnerOnly))) return false;
    const std::u16string description = NUtf8ToUtf16(label);
    DATA_BLOB plain = Blob(key.data(), key.size());
    DATA_BLOB entropy = Blob(kEntropy, sizeof kEntropy - 1);
    DATA_BLOB sealed = {};
    if (!CryptProtectData(&plain, Wide(description), &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &sealed)) {
      const DWORD error = GetLastError();
      return Failed("protect the key", error);
    }
    // Written whole under another name, then put in the old one's place in
    // one step: NPlatform's MoveFile never replaces, and deleting first
    // would leave a moment without any key.
    const std::u16string path = PathOf(id), pending = PendingPathOf(id);
    const NStatus written = WriteWhole(pending, sealed.pbData, sealed.cbData);
    LocalFree(sealed.pbData);
    if (written.IsOk() &&
        MoveFileExW(Wide(pending), Wide(path), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
      return true;
    }
    const DWORD error = GetLastError();
    static_cast<void>(m_platform.DeleteFile(pending));
    return written.IsOk() ? Failed("replace " + NUtf16ToUtf8(path), error) : Succeeded(written);
  }

  bool Remove(std::string_view id) override {
    if (!Ready(id)) return false;
    for (const std::u16string& path : {PendingPathOf(id), PathOf(id)}) {
      const NStatus status = m_platform.DeleteFile(path);
      if (!status.IsOk() && !status.IsNotFound()) return Succeeded(status);
    }
    return true;
  }

  std::string LastError() const override { return m_lastError; }

 private:
  std::u16string PathOf(std::string_view id) const {
    return m_folder + m_platform.PathSeparator() + NUtf8ToUtf16(id) + u".dpapi";
  }
  std::u16string PendingPathOf(std::string_view id) const { return PathOf(id) + u".new"; }

  NStatus WriteWhole(const std::u16string& path, const void* data, std::size_t size) {
    NOpenOptions options;
    options.mode = NOpenMode::kCreateAlways;
    options.access = NFileAccess::kReadWrite;
    options.share = kShareNone;
    options.security = NFileSecurity::kOwnerOnly;
    options.noFollow = true;
    std::unique_ptr<NFile> file;
    NStatus status = m_platform.OpenFile(path, options, &file);
    if (status.IsOk()) status = file->Write(0, data, size);
    if (status.IsOk()) status = file->Sync();
    return status;
  }

  bool Ready(std::string_view id) {
    m_lastError.clear();
    if (IsKeyId(id)) return true;
    m_lastError.append("\"").append(id).append("\" is no key id");
    return false;
  }

  bool Succeeded(const NStatus& status) {
    if (status.IsOk()) return true;
    return Failed(status.Operation() + " " + NUtf16ToUtf8(status.Path()), status.Code());
  }

  bool Failed(const std::string& what, DWORD code) {
    std::u16string text;
    if (!m_platform.LookupSystemMessage(code, &text)) text = u"error " + NUtf8ToUtf16(std::to_string(code));
    while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.pop_back();
    m_lastError = what + ": " + NUtf16ToUtf8(text);
    return false;
  }

  NSystemKeyResult Damaged(const std::u16string& path, const char* how) {
    m_lastError = NUtf16ToUtf8(path) + " " + how;
    return NSystemKeyResult::kUnavailable;
  }

  std::u16string m_folder;
  NPlatform& m_platform;
  std::string m_lastError;
};

}  // namespace

std::unique_ptr<NSystemKeyStore> NSystemKeyStore::Create(std::u16string folder, NPlatform& platform) {
  return std::make_unique<NDpapiKeyStore>(std::move(folder), platform);
}
