#pragma once

#include <mutex>

#include "base/NArray.h"
#include "base/NStringArray.h"
#include "base/NUnicodeString.h"
#include "location/NReportMessageRouter.h"

class GlobalConfig;

// The library's process-wide state: what start-up was given and found.
struct NLibraryState {
  using NGuiMessageCallback = std::int64_t (*)(const char16_t* text, NArray<NUnicodeString>& items, void* parent);
  using NImageListCallback = void* (*)();
  using NPlatformColorProvider = void (*)(std::uint32_t* colors, int count);

  std::recursive_mutex mutex;  // guards everything below
  NReportMessageRouterGetter routerGetter = nullptr;
  NPlatformColorProvider colorProvider = nullptr;
  NGuiMessageCallback guiMessage = nullptr;
  NImageListCallback imageList = nullptr;
  int currentProductId = 0;
  GlobalConfig* global = nullptr;
  bool quennInstalled = false;
  bool skeldonInstalled = false;
  bool parrowInstalled = false;
  bool spareTransferInstalled = false;  // read by the transfer predicates; nothing sets it
  NUnicodeString quennPath;
  NUnicodeString skeldonPath;
  NUnicodeString parrowPath;
  NArray<void*> statusIcons;
  NStringArray emulations;
  NStringArray sharedCacheNames;
  int sharedCacheArgument = 0;

  static NLibraryState& Get();
  void Reset();
};
