#pragma once

// The library's flat entry points for start-up, shut-down, the global record,
// the product ids and the installed companion applications. A host calls
// them from its main thread, in this order: CfgdeckInitProfileFactory,
// CfgdeckInit, CfgdeckInitGUI (GUI hosts), then the global-record functions,
// and last FreeGlobalConfig and CfgdeckCleanupForUnload.

#include <cstdint>

#include "base/NArray.h"
#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "config/GlobalConfig.h"
#include "location/NReportMessageRouter.h"
#include "store/NProfileStoreFactory.h"

using NGuiMessageCallback = std::int64_t (*)(const char16_t* text, NArray<NUnicodeString>& items, void* parent);
using NImageListCallback = void* (*)();

// Remembers the router getter, registers the platform colours, builds the
// emulation table, loads the status icons, detects the companion
// applications in the running program's folder and names the shared
// configuration cache for `cacheArgument`.
CFGDECK_EXTERN_C void CfgdeckInit(NReportMessageRouterGetter routerGetter, int cacheArgument);
// Remembers the two callbacks of a GUI host, creates the global record when
// there is none, and rebuilds the emulation table.
CFGDECK_EXTERN_C void CfgdeckInitGUI(NGuiMessageCallback message, NImageListCallback imageList);
// Releases what start-up made (the cache names and the status icons); the
// global record is left alone.
CFGDECK_EXTERN_C void CfgdeckCleanupForUnload();

// The process-wide global record, created and loaded from "Global" on the
// first call for `productId` (-1: the application's); no reference is added.
CFGDECK_EXTERN_C void GetGlobalConfig(GlobalConfig*& config, int productId);
CFGDECK_EXTERN_C void FreeGlobalConfig();
CFGDECK_EXTERN_C void ResetGlobalConfig(GlobalConfig*& config);
CFGDECK_EXTERN_C void ReloadGlobalConfig(GlobalConfig*& config);
CFGDECK_EXTERN_C void SaveGlobalConfig(bool all);
CFGDECK_EXTERN_C void MergeGlobalConfig(const NProfileKey& key);

// The colours the platform draws windows with, for the colour controls:
// window text, window background, selection text, selection background.
CFGDECK_EXTERN_C void GetPlatformColors(std::uint32_t* colors, int count);
// The status icons, in the order 5018, 5019, 5021, 5020.
CFGDECK_API NArray<void*>& GetIconStatusArray();
// The names of the shared configuration cache's two objects.
CFGDECK_API NArray<NUnicodeString> GetSharedCacheNames();

CFGDECK_EXTERN_C void SetCurrentAppProductID(int productId);
CFGDECK_EXTERN_C int GetCurrentAppProductID();
// The product id of the running application's name.
CFGDECK_EXTERN_C int GetAppProductID();
CFGDECK_EXTERN_C int GetTransferAppProductID();

CFGDECK_EXTERN_C bool IsQuennInstalled();
CFGDECK_EXTERN_C bool IsSkeldonInstalled();
CFGDECK_EXTERN_C bool CanLaunchTerminalApp();        // the same function as IsSkeldonInstalled
CFGDECK_EXTERN_C bool HasSecureTerminalProtocols();  // the same function as IsSkeldonInstalled
CFGDECK_EXTERN_C bool IsSkeldonOrQuennInstalled();
CFGDECK_EXTERN_C bool HasTerminalProtocols();  // the same function as IsSkeldonOrQuennInstalled
CFGDECK_EXTERN_C bool IsParrowInstalled();
CFGDECK_EXTERN_C bool CanLaunchFileTransferApp();  // the same function as IsParrowInstalled
CFGDECK_EXTERN_C bool HasTransferProtocols();
CFGDECK_EXTERN_C bool HasIntegratedProtocols();
CFGDECK_EXTERN_C bool IsIntegrated();
// As IsIntegrated(); when true, appends the partner application's name.
CFGDECK_API bool IsIntegrated(NUnicodeString& name);
CFGDECK_EXTERN_C void SetSkeldonInstalled(bool installed);
CFGDECK_EXTERN_C void SetParrowInstalled(bool installed);
CFGDECK_EXTERN_C const char16_t* GetQuennPath();
CFGDECK_EXTERN_C const char16_t* GetSkeldonPath();
CFGDECK_EXTERN_C const char16_t* GetParrowPath();
// Whether the fifth emulation is "Hollet"; throws OutOfRange when the table
// has fewer than five entries.
CFGDECK_API bool HasHolletEmulation();
