#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"

class NPlatform;

// The personal data folder: an optional folder apart from the configuration
// folder that receives the sessions' personal values (the INI store's
// private root), the registry values that say whether and where it is used,
// and the two operations that move those values out of the configuration
// folder (migration) and back into it (merge).

// Message codes of the personal data folder.
inline constexpr std::uint32_t kMsgPersonalDataFolderChanged = 0x61380023;  // %1: the application's name
inline constexpr std::uint32_t kMsgPersonalDataSameFolder = 0x61380024;
inline constexpr std::uint32_t kMsgPersonalDataMismatch = 0xE1380025;
inline constexpr std::uint32_t kMsgPersonalDataMigrationRequested = 0x61380028;
inline constexpr std::uint32_t kMsgPersonalDataMergeRequested = 0x61380029;
inline constexpr std::uint32_t kMsgPersonalDataMigrating = 0x61380081;    // %1: the application's name
inline constexpr std::uint32_t kMsgPersonalDataMerging = 0x61380082;      // %1: the application's name
inline constexpr std::uint32_t kMsgPersonalDataMergeFailed = 0x6138011A;  // %1: the application's name

// The registry values, under the product's key beside "Config Path".
inline constexpr std::u16string_view kPersonalDataPathValue = u"Personal Data Path";
inline constexpr std::u16string_view kUsePersonalDataPathValue = u"Store Personal Data Separately";
inline constexpr std::u16string_view kDoPersonalDataMigrationValue = u"Do Personal Data Migration";
inline constexpr std::u16string_view kDoPersonalDataMergeValue = u"Do Personal Data Merge";

// The text appended to the configuration folder's path for the default.
inline constexpr std::u16string_view kPersonalDataSuffix = u".personal";

// The stored "Personal Data Path" of `productKey`; empty when it is absent.
CFGDECK_API NUnicodeString GetAppPersonalDataPathStored(const char16_t* productKey);

// `configFolder` with ".personal" appended to the path itself (D:\cfg gives
// D:\cfg.personal, beside it); separators at its end are dropped first.
// Empty for an empty folder.
CFGDECK_API NUnicodeString GetAppPersonalDataPathDefault(const char16_t* configFolder);

// The stored folder, or the default for `configFolder` when none is stored.
CFGDECK_API NUnicodeString GetAppPersonalDataPath(const char16_t* productKey, const char16_t* configFolder);

// The three switches of `productKey`: DWORD values, non-zero true; missing
// or not a DWORD, false.
CFGDECK_EXTERN_C bool UsePersonalDataPath(const char16_t* productKey);
CFGDECK_EXTERN_C bool DoPersonalDataMigration(const char16_t* productKey);
CFGDECK_EXTERN_C bool DoPersonalDataMerge(const char16_t* productKey);

// The setters write under the key of the running application's name
// (uicore/NAppName.h), as SaveAppConfigPath does, and with the same meaning
// of `force`: without it a value is written only when the stored one
// differs or is missing; with it, in any case. Each writes the trace line
// "Save: %1!d! %2!d! %3!d! %4\n": %1 `force` (0 or 1), %2 1 when the stored
// value differed or was missing and 0 when it already held the value, %3 the
// system error code of the registry operation (0 for success), %4 the path,
// or the switch's new value as 0 or 1.
CFGDECK_EXTERN_C void SaveAppPersonalDataPath(const char16_t* path, bool force);
CFGDECK_EXTERN_C void SaveUsePersonalDataPath(bool value, bool force);
CFGDECK_EXTERN_C void SaveDoPersonalDataMigration(bool value, bool force);
CFGDECK_EXTERN_C void SaveDoPersonalDataMerge(bool value, bool force);

// As the setters above; on false params say why.
bool NSaveAppPersonalDataPath(std::u16string_view path, bool force, NReportMessageParams& params);
bool NSaveUsePersonalDataPath(bool value, bool force, NReportMessageParams& params);
bool NSaveDoPersonalDataMigration(bool value, bool force, NReportMessageParams& params);
bool NSaveDoPersonalDataMerge(bool value, bool force, NReportMessageParams& params);

// Asks for the folder: an empty `folder` is first set to the default for
// `configFolder`; the dialog (uicore/PersonalDataFolderDialog.h) is shown
// modally with the question icon, pre-filled with it. On OK `folder` is the
// folder chosen and the result true; otherwise `folder` is emptied and the
// result false.
CFGDECK_API bool GetPersonalDataFolderAsk(const char16_t* configFolder, NUnicodeString& folder);

// Moves the sessions' personal values into the personal data folder: a
// worker walks the sessions tree while a modal progress dialog
// (uicore/NProgressDialog.h) shows kMsgPersonalDataMigrating, clears "Do
// Personal Data Migration" once every session is done, and closes the
// dialog; the worker is joined before the function returns. The folders are
// those of the registered INI store factory (its root, and its private root
// or else GetAppPersonalDataPath of the application's name). A failure is
// shown in a message box and leaves the flag set, so that the next start
// runs the migration again; what a run did is never undone or lost.
CFGDECK_EXTERN_C void MigrateToPersonalDataLocation();

// Moves the personal values of `productKey`'s personal data folder back
// into the configuration folder (GetAppConfigPath of the application's name,
// else the registered INI store factory's root), the same way, and clears
// "Do Personal Data Merge" at the end. Nothing is written when the personal
// data folder holds values for a key that is no session of the
// configuration folder: that is kMsgPersonalDataMismatch. Once every value
// is merged, the personal data folder's "Sessions" folder is renamed
// "Sessions-merged-<UTC time as YYYYMMDD-HHMMSS>", kept as a backup that no
// later migration reads back.
CFGDECK_EXTERN_C void MergeFromPersonalDataLocation(const char16_t* productKey);

// How an operation runs, for hosts that show progress their own way and
// for tests.
struct NPersonalDataRunOptions {
  // The folders; empty for those the exported function finds.
  NUnicodeString configFolder;
  NUnicodeString personalFolder;
  // The file system; null for the system's own.
  NPlatform* platform = nullptr;
  // Called on the worker after each session with the count done and the
  // total; false stops the run there, as an interruption would.
  std::function<bool(std::size_t done, std::size_t total)> step;
};

// The operations above without the message box: true when the run was
// complete and its flag cleared; otherwise params say why (a run stopped by
// `step` holds kMsgPersonalDataInterrupted).
bool NMigrateToPersonalDataLocation(NReportMessageParams& params, const NPersonalDataRunOptions& options = {});
bool NMergeFromPersonalDataLocation(std::u16string_view productKey, NReportMessageParams& params,
                                    const NPersonalDataRunOptions& options = {});

// The code that an interrupted run reports: ERROR_CANCELLED.
inline constexpr std::uint32_t kMsgPersonalDataInterrupted = 1223;
