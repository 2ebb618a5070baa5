#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/NCrypto.h"

class NPlatform;

enum class NSystemKeyResult {
  kFound,
  kMissing,      // the store answered and holds no key of that id
  kUnavailable,  // no store answers here (no session bus, no keyring, ...)
};

// Keys kept for the user by the operating system: on Linux items of the
// Secret Service (through libsecret), when a session bus and a keyring
// answer; on Windows keys protected by DPAPI for the user, each in an
// owner-only file of `folder`. A key is found by an id of the caller's
// (lower-case hex); what the system shows the user is `label`.
//
// Each call stands alone; an instance may be used from one thread at a time.
class NSystemKeyStore {
 public:
  // The store of this system. `folder` is where a system that hands back
  // protected bytes (DPAPI) keeps them; made owner-only when first needed.
  static std::unique_ptr<NSystemKeyStore> Create(std::u16string folder, NPlatform& platform);
  virtual ~NSystemKeyStore() = default;

  // What keeps the keys, as people know it: "Secret Service", "DPAPI".
  virtual const char* Name() const = 0;
  // The key of `id`; *key is untouched unless kFound.
  virtual NSystemKeyResult Load(std::string_view id, NAes256Key* key) = 0;
  // Keeps `key` as `id`, replacing any key of that id. False when no store
  // answers or it refuses.
  [[nodiscard]] virtual bool Store(std::string_view id, std::string_view label, const NAes256Key& key) = 0;
  // Forgets the key of `id`; true when none is kept any more.
  [[nodiscard]] virtual bool Remove(std::string_view id) = 0;
  // Why the last call that failed or found no store failed, for messages.
  virtual std::string LastError() const = 0;
};
