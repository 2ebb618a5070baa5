#include "platform/NSystemKeyStore.h"

#include <libsecret/secret.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace {

// Filled in field by field: its reserved fields have no initializers.
const SecretSchema kSchema = [] {
  SecretSchema schema{};
  schema.name = "org.cfgdeck.FolderKey";
  schema.flags = SECRET_SCHEMA_NONE;
  schema.attributes[0] = {"id", SECRET_SCHEMA_ATTRIBUTE_STRING};
  return schema;
}();

constexpr char kDigits[] = "0123456789abcdef";
using KeyHex = std::array<char, 2 * sizeof(NAes256Key) + 1>;

bool IsLowerHex(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

int DigitValue(char c) { return c <= '9' ? c - '0' : c - 'a' + 10; }

// Left to itself GDBus autolaunches a bus through X11 when it finds none.
// So look where it would, and let libsecret in only when a bus may answer:
// null then, else why none does.
const char* NoSessionBus() {
  if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr && *address != '\0') {
    if (std::string_view(address).find("autolaunch:") == std::string_view::npos) return nullptr;
    return "no session bus: DBUS_SESSION_BUS_ADDRESS asks for one to be launched";
  }
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  struct stat bus;
  if (runtime != nullptr && *runtime != '\0' && ::stat((std::string(runtime) + "/bus").c_str(), &bus) == 0 &&
      S_ISSOCK(bus.st_mode)) {
    return nullptr;
  }
  return "no session bus: DBUS_SESSION_BUS_ADDRESS is not set and $XDG_RUNTIME_DIR/bus is no socket";
}

class NSecretServiceKeyStore final : public NSystemKeyStore {
 public:
  const char* Name() const override { return "Secret Service"; }

  NSystemKeyResult Load(std::string_view id, NAes256Key* key) override {
    if (!Ready(id)) return NSystemKeyResult::kUnavailable;
    const std::string idText(id);
    GError* error = nullptr;
    gchar* stored = secret_password_lookup_sync(&kSchema, nullptr, &error, "id", idText.c_str(), nullptr);
    if (Failed(error)) return NSystemKeyResult::kUnavailable;
    if (stored == nullptr) return NSystemKeyResult::kMissing;
    const std::string_view hex(stored);
    NAes256Key bytes;
    const bool valid = hex.size() == 2 * bytes.size() && IsLowerHex(hex);
    for (std::size_t i = 0; valid && i < bytes.size(); ++i) {
      bytes[i] = static_cast<std::uint8_t>(DigitValue(hex[2 * i]) << 4 | DigitValue(hex[2 * i + 1]));
    }
    secret_password_free(stored);
    // Never kMissing: the caller would store a new key over the damaged item.
    if (!valid) {
      m_lastError = "the keyring item of id " + idText + " is not a key";
      return NSystemKeyResult::kUnavailable;
    }
    *key = bytes;
    explicit_bzero(bytes.data(), bytes.size());
    return NSystemKeyResult::kFound;
  }

  bool Store(std::string_view id, std::string_view label, const NAes256Key& key) override {
    if (!Ready(id)) return false;
    KeyHex hex{};
    for (std::size_t i = 0; i < key.size(); ++i) {
      hex[2 * i] = kDigits[key[i] >> 4];
      hex[2 * i + 1] = kDigits[key[i] & 0xF];
    }
    const std::string idText(id), labelText(label);
    GError* error = nullptr;
    secret_password_store_sync(&kSchema, SECRET_COLLECTION_DEFAULT, labelText.c_str(), hex.data(), nullptr, &error,
                               "id", idText.c_str(), nullptr);
    explicit_bzero(hex.data(), hex.size());
    return !Failed(error);
  }

  bool Remove(std::string_view id) override {
    if (!Ready(id)) return false;
    const std::string idText(id);
    GError* error = nullptr;
    // False without an error only says that nothing was there.
    secret_password_clear_sync(&kSchema, nullptr, &error, "id", idText.c_str(), nullptr);
    return !Failed(error);
  }

  std::string LastError() const override { return m_lastError; }

 private:
  bool Ready(std::string_view id) {
    m_lastError.clear();
    if (id.empty() || !IsLowerHex(id)) {
      m_lastError.append("\"").append(id).append("\" is no key id");
    } else if (const char* why = NoSessionBus()) {
      m_lastError = why;
    }
    return m_lastError.empty();
  }

  bool Failed(GError* error) {
    if (error == nullptr) return false;
    m_lastError = error->message;
    g_error_free(error);
    return true;
  }

  std::string m_lastError;
};

}  // namespace

std::unique_ptr<NSystemKeyStore> NSystemKeyStore::Create(std::u16string, NPlatform&) {
  return std::make_unique<NSecretServiceKeyStore>();
}
