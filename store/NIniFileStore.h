#pragma once

#include <chrono>
#include <memory>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "store/NProfileStore.h"

class NFolderListingCache;
class NPlatform;

struct NIniFileStoreOptions {
  // Flush each saved file to the disk before its lock is released.
  bool syncOnSave = true;
  // Write a rollback journal beside each key file a save rewrites, so that
  // a save that dies midway leaves the old content or the new one. Off, a
  // killed save can leave a key file short: for measuring what it costs.
  bool journal = true;
  // A wait for a file's lock longer than this is logged, and goes on.
  std::chrono::milliseconds lockWarning{5000};
  // The roots are given already resolved to their real paths, so the store
  // takes them as they are.
  bool rootsResolved = false;
  // Folder listings shared by the stores on one root, for keys looked up
  // by case; null lists the folder at each lookup.
  std::shared_ptr<NFolderListingCache> listings;
};

// The INI folder store: a tree of keys kept as folders and ".ini" files
// under a root folder, with an optional private root that receives each
// key's personal values. Its files are created with the platform's default
// access, those of the private half owner-only. The roots are resolved to
// their real paths when the store is made; below them, a symbolic link is
// never followed, so nothing outside the roots is ever read, written or
// deleted through the store.
//
// Immutable after construction; keys opened from it may be used by
// different threads at once (each key by one thread). It must outlive its
// keys, and `platform` must outlive it.
class CFGDECK_API NIniFileStore final : public NProfileStore {
 public:
  NIniFileStore(NUnicodeString root, NUnicodeString privateRoot);
  NIniFileStore(NUnicodeString root, NUnicodeString privateRoot, NPlatform& platform,
                NIniFileStoreOptions options = {});
  ~NIniFileStore() override;

  std::unique_ptr<NProfileKey> OpenRootKey(bool readOnly, NReportMessageParams& params) override;

  const NUnicodeString& Root() const { return m_root; }
  const NUnicodeString& PrivateRoot() const { return m_privateRoot; }
  NPlatform& Platform() const { return m_platform; }
  const NIniFileStoreOptions& Options() const { return m_options; }

 private:
  NUnicodeString m_root;
  NUnicodeString m_privateRoot;
  NPlatform& m_platform;
  NIniFileStoreOptions m_options;
};
