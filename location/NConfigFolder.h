#pragma once

#include <cstdint>
#include <ctime>
#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"

// Finding the configuration folder: the host tries its sources in its own
// order (the /F option, the folder beside the executable, the remembered
// folder, a default of its own) and uses these steps for each. A folder is
// an INI folder store whose top holds the key Global ("global.ini").

// Message codes of the configuration folder functions.
inline constexpr std::uint32_t kMsgConfigFolderOptionInvalid = 0xE1380009;  // %1: the path given with /F
inline constexpr std::uint32_t kMsgConfigMigrated = 0x61380017;             // %1: old folder, %2: new folder
inline constexpr std::uint32_t kMsgConfigFolderChanged = 0x61380022;        // %1: the application's name

// The registry value that remembers a product's folder, under the product's
// key beneath the registry base (location/NRegistryBase.h).
inline constexpr std::u16string_view kConfigPathValue = u"Config Path";

// Receives the notices that a step passes to the host.
using NReportMessageCallback = void (*)(const NReportMessageParams& params);

// The remembered folder of `productKey` ("Skeldon", "Global"): its "Config
// Path" value, or empty when it is not set (no error: the host goes on to
// its next source).
CFGDECK_API NUnicodeString GetAppConfigPath(const char16_t* productKey);

// The folder "Config" under `exeFolder` if it holds "global.ini" (the
// portable layout, a configuration beside the program); otherwise empty.
// Both names are found in any case, as on Windows.
CFGDECK_API NUnicodeString GetAppConfigPathUnderExe(const char16_t* exeFolder);

// Checks the folder given with /F. `result` receives the path without
// surrounding blanks and quotes, and when it names a folder, that folder's
// absolute path with links resolved; true then. Otherwise params hold
// kMsgConfigFolderOptionInvalid with the path as given, and false.
CFGDECK_API bool CheckAppConfigPathCommandLine(const char16_t* path, NUnicodeString& result,
                                               NReportMessageParams& params);

// Follows the redirect that a migration leaves in an old folder. Accepts
// (true, `path` unchanged) an empty path, a folder that holds no
// configuration (no "*.idx" file and no key Global) and a folder of the
// current format. An old folder with an "NSWRedirect" "New Config Path"
// is replaced by that folder: the notice kMsgConfigMigrated goes to
// `report` (which may be null) and, with `save`, the new folder is
// remembered (SaveAppConfigPath, not forced); true. An old folder without a
// redirect gives the result of RenameGlobalConfig, which moves the old
// global file of the application's folder aside.
CFGDECK_API bool CheckAppConfigPathRedirect(bool save, NReportMessageCallback report, NUnicodeString& path);

// Remembers `path` as the "Config Path" of the running application (its
// key is the application's name, uicore/NAppName.h). Without `force` the
// value is written only when it differs from the one stored, so that a
// host that remembers its folder at every start does not rewrite the
// registry each time; with `force` it is written in any case.
//
// Writes the trace line "Save: %1!d! %2!d! %3!d! %4\n": %1 the `force`
// flag (0 or 1), %2 1 when the stored value differed from `path` (or was
// missing) and 0 when it already held it, %3 the system error code of the
// registry operation (0 for success), %4 the path.
CFGDECK_EXTERN_C void SaveAppConfigPath(const char16_t* path, bool force);

// As SaveAppConfigPath; on false params say why.
bool NSaveAppConfigPath(std::u16string_view path, bool force, NReportMessageParams& params);

// The folder remembered under the shared key "Global"; when there is one it
// is also remembered for the running application (SaveAppConfigPath, not
// forced).
CFGDECK_API NUnicodeString GetAppConfigPathAlpha();

// Moves the global file of the application's configuration folder aside:
// "Global.ini" (in any case) becomes "Global-incomplete-<local time as
// %Y%d%m_%H%M%S>.ini" beside it. True when there is no such file or it
// was moved; false, with both names as they were, when the move failed.
CFGDECK_EXTERN_C bool RenameGlobalConfig();

// RenameGlobalConfig at the local time `now`.
bool NRenameGlobalConfig(const std::tm& now);

// "Global-incomplete-<now as %Y%d%m_%H%M%S>.ini". Year, then day, then
// month: intended, and to be kept.
NUnicodeString NIncompleteGlobalName(const std::tm& now);

// The configuration folder of the running application: the root of the
// registered store factory when it makes INI folder stores, else the
// remembered folder of the application's name.
NUnicodeString NCurrentConfigFolder();

// True when a Global "Version" value names the current folder format: its
// first 36 characters are one of the two format identifiers, exactly.
bool NIsCurrentConfigFormat(std::u16string_view version);
