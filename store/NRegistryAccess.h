#pragma once

#include "platform/NRegistry.h"

// The registry the library reads and writes: the folder-backed one where
// the platform names a folder for the hive (NRegistryFolder: always on
// POSIX, and on Windows when CFGDECK_REGISTRY_DIR is set), else the native
// one. The choice is made again at every OpenKey, so a change of the
// environment takes effect at once. Lives for the whole process;
// thread-safe.
NRegistry& NGetRegistry();
