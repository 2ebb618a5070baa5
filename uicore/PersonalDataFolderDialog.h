#pragma once

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// Answers the personal data folder dialog for a host without windows: true
// for OK with the folder in `chosen` (pre-filled with `proposed`), false for
// Cancel. `icon` is the dialog's message-box icon (uicore/NMessageBox.h).
using NPersonalDataFolderAnswer = bool (*)(void* context, const char16_t* proposed, unsigned icon,
                                           NUnicodeString& chosen);

// Installs the host's answer (null: every dialog is cancelled). Thread-safe.
CFGDECK_EXTERN_C void NSetPersonalDataFolderAnswer(NPersonalDataFolderAnswer answer, void* context);

// The dialog in which the user chooses the personal data folder, shown
// pre-filled with a folder. Headless: the host's answer stands for the user.
class PersonalDataFolderDialog {
 public:
  PersonalDataFolderDialog(NUnicodeString folder, unsigned icon) : m_folder(std::move(folder)), m_icon(icon) {}

  // Shows the dialog modally; kMessageBoxIdOk with Folder() the folder
  // chosen, or kMessageBoxIdCancel with Folder() unchanged.
  int DoModal(void* parent = nullptr);

  const NUnicodeString& Folder() const { return m_folder; }
  unsigned Icon() const { return m_icon; }

 private:
  NUnicodeString m_folder;
  unsigned m_icon;
};
