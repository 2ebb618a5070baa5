#include "dialogs/global/GlobalOptionsDialog.h"

namespace {

// Clears the host's pointer to the dialog however the run ends.
class NRunningDialog {
 public:
  NRunningDialog(NPropertyTreeDialog** slot, NPropertyTreeDialog* dialog) : m_slot(slot) {
    if (m_slot) *m_slot = dialog;
  }
  ~NRunningDialog() {
    if (m_slot) *m_slot = nullptr;
  }
  NRunningDialog(const NRunningDialog&) = delete;
  NRunningDialog& operator=(const NRunningDialog&) = delete;

 private:
  NPropertyTreeDialog** m_slot;
};

}  // namespace

std::intptr_t ShowGlobalOptionsDialog(GlobalConfig* global, const NUnicodeString& name, bool commandLineFolder,
                                      bool showLanguage, bool readOnly, unsigned int screenDpi, bool printerAvailable,
                                      bool scriptingAvailable, bool* fileTypesChanged, NFileTypeManager* fileTypes,
                                      NIconManager* icons, void* parent, NPropertyTreeDialog** running,
                                      bool tftpServerAvailable) {
  NGlobalDialogInputs inputs;
  inputs.appName = name;
  inputs.commandLineFolder = commandLineFolder;
  inputs.showLanguage = showLanguage;
  inputs.readOnly = readOnly;
  inputs.screenDpi = screenDpi;
  inputs.printerAvailable = printerAvailable;
  inputs.scriptingAvailable = scriptingAvailable;
  inputs.fileTypesChanged = fileTypesChanged;
  inputs.fileTypes = fileTypes;
  inputs.icons = icons;
  inputs.tftpServerAvailable = tftpServerAvailable;
  GlobalOptionsDialog dialog(global, inputs, parent);
  const NRunningDialog slot(running, &dialog);
  return dialog.DoModal();
}
