#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "base/NExport.h"
#include "base/NUnicodeString.h"
#include "uicore/IModalDialog.h"

class NPropertyTreeDialog;
class NProgressDialog;

// What a property-tree dialog's logic tells the window that shows it. The
// window also ends the modal run (IModalDialog).
class IPropertyTreeView : public IModalDialog {
 public:
  // The pages in the tree, their order, visibility or titles changed.
  virtual void TreeChanged() = 0;
  // Another page became the current one.
  virtual void CurrentPageChanged() = 0;
  // OK or Apply became enabled or disabled.
  virtual void ButtonsChanged() = 0;
};

// The toolkit behind the dialogs: everything that shows a window. The
// headless backend is the default; a host with a toolkit installs its own
// (uicore/qt/). Called on the UI thread, but for RunProgress's dialog,
// which a worker feeds.
class IDialogBackend {
 public:
  virtual ~IDialogBackend() = default;

  // Runs `dialog` modally to `parent` until it ends; returns its result
  // (IModalDialog::kOk when OK ended it).
  virtual std::intptr_t RunPropertyTree(NPropertyTreeDialog& dialog, void* parent) = 0;
  // Shows a message box; returns the button pressed (NMessageBox's ids).
  virtual int MessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style) = 0;
  // A message box with a "do not display this message again" check box
  // that starts unticked; *dontShowAgain tells whether it was ticked.
  virtual int OptionalMessageBox(void* parent, std::u16string_view text, std::u16string_view caption, unsigned style,
                                 bool* dontShowAgain) = 0;
  // A question answered by one of `choices` (a label may mark its access
  // key with "&"); `note` is a second paragraph, drawn apart. Returns the
  // index of the choice, or -1 when the box was closed without one.
  virtual int Choose(void* parent, std::u16string_view caption, std::u16string_view text, std::u16string_view note,
                     const std::vector<NUnicodeString>& choices) = 0;
  // Shows `dialog` modally until its worker posts the close.
  virtual void RunProgress(NProgressDialog& dialog, void* parent) = 0;
  // A folder or file chosen by the person, or nothing when they cancelled.
  virtual std::optional<NUnicodeString> PickFolder(void* parent, std::u16string_view prompt,
                                                   std::u16string_view initial) = 0;
  virtual std::optional<NUnicodeString> PickFile(void* parent, std::u16string_view title, std::u16string_view initial,
                                                 std::u16string_view filter) = 0;
};

// The backend in use: the headless one unless a host installed another.
IDialogBackend& NDialogBackend();
// Installs `backend` (null: the headless one again); it must outlive its
// use. Returns the one it replaced.
IDialogBackend* NSetDialogBackend(IDialogBackend* backend);
