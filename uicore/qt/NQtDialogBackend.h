#pragma once

#include "uicore/IDialogBackend.h"

// The dialog backend drawing with Qt 6 Widgets. A program installs it
// (NSetDialogBackend) after making its QApplication, which must outlive
// its use. Every `parent` is a QWidget* or null; a message box without one
// is modal to the active window.
//
// Runs its windows on the GUI thread. Message boxes, pickers and progress
// dialogs may be asked for from another thread (NMessageBox is
// thread-safe): that thread then waits while the GUI thread shows them.
class NQtDialogBackend final : public IDialogBackend {
 public:
  std::intptr_t RunPropertyTree(NPropertyTreeDialog& dialog, void* parent) override;
  int MessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style) override;
  int OptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style,
                         bool* dontShowAgain) override;
  int Choose(void* parent, std::u16string_view caption, std::u16string_view text, std::u16string_view note,
             const std::vector<NUnicodeString>& choices) override;
  void RunProgress(NProgressDialog& dialog, void* parent) override;
  std::optional<NUnicodeString> PickFolder(void* parent, std::u16string_view prompt,
                                           std::u16string_view initial) override;
  std::optional<NUnicodeString> PickFile(void* parent, std::u16string_view title, std::u16string_view initial,
                                         std::u16string_view filter) override;
};
