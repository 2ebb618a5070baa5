#include "config/NLibraryState.h"

NLibraryState& NLibraryState::Get() {
  static NLibraryState state;
  return state;
}

void NLibraryState::Reset() {
  std::lock_guard<std::recursive_mutex> lock(mutex);
  routerGetter = nullptr;
  colorProvider = nullptr;
  guiMessage = nullptr;
  imageList = nullptr;
  currentProductId = 0;
  global = nullptr;
  quennInstalled = skeldonInstalled = parrowInstalled = spareTransferInstalled = false;
  quennPath.clear();
  skeldonPath.clear();
  parrowPath.clear();
  statusIcons.clear();
  emulations.clear();
  sharedCacheNames.clear();
  sharedCacheArgument = 0;
}
