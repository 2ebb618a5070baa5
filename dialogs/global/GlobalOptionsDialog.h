#pragma once

#include <cstdint>

#include "base/NExport.h"
#include "dialogs/global/GlobalOptionsDialogBase.h"

// The Global Options dialog as the entry point opens it.
class GlobalOptionsDialog final : public GlobalOptionsDialogBase {
 public:
  using GlobalOptionsDialogBase::GlobalOptionsDialogBase;
};

// Opens the Global Options dialog on `global` modally to `parent` (a window
// of the backend's toolkit, or null) and returns its result, 1 for OK. The
// arguments are NGlobalDialogInputs' in the order declared there, `name`
// first. While the dialog runs *running (when given) is the dialog, so that
// the host can reach it; it is null again when the function returns,
// whatever the result. The pages write the record on OK; the caller saves
// it.
CFGDECK_API std::intptr_t ShowGlobalOptionsDialog(GlobalConfig* global, const NUnicodeString& name,
                                                  bool commandLineFolder, bool showLanguage, bool readOnly,
                                                  unsigned int screenDpi, bool printerAvailable,
                                                  bool scriptingAvailable, bool* fileTypesChanged,
                                                  NFileTypeManager* fileTypes, NIconManager* icons, void* parent,
                                                  NPropertyTreeDialog** running, bool tftpServerAvailable);
