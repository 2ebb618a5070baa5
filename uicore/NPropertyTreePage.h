#pragma once

#include <cstdint>

#include "base/NUnicodeString.h"
#include "uicore/NForm.h"
#include "uicore/NMessageBox.h"

class IPropertyTreeDialog;
class NPropertyTreeDialog;

// Why a page refused OK or Apply: the message the frame shows, and the
// control to put the focus on (may be null).
struct NPageFailure {
  std::uint32_t code = 0;  // the message's code, when it comes from a message table
  NUnicodeString text;
  unsigned style = kMessageBoxOk | kMessageBoxIconWarning;
  const NFormControl* control = nullptr;
};

// A page of a property-tree dialog: a title in the tree and a form. A
// derived page declares its form in its constructor and overrides the
// calls below where it needs more than the form does. Owned by whoever
// made it; it must outlive its time in a dialog. UI thread only.
class NPropertyTreePage {
 public:
  explicit NPropertyTreePage(NUnicodeString title) : m_title(std::move(title)) {}
  NPropertyTreePage(const NPropertyTreePage&) = delete;
  NPropertyTreePage& operator=(const NPropertyTreePage&) = delete;
  // A page that goes before its dialog leaves the dialog's tree quietly.
  virtual ~NPropertyTreePage();

  const NUnicodeString& Title() const { return m_title; }
  NForm& Form() { return m_form; }
  const NForm& Form() const { return m_form; }
  // The dialog the page was added to, or null.
  IPropertyTreeDialog* Dialog() const;
  // Adds `child` under this page in its dialog.
  void AddPage(NPropertyTreePage* child);

  // The frame's calls. OnShow: the page was shown in or hidden from the
  // tree. OnSetActive: it is becoming the current page (the first time, its
  // form is loaded); false refuses. OnKillActive: another page is being
  // selected; false keeps this one. OnValidate: OK or Apply, before
  // anything is stored; false with the failure stops them. OnOK: stores the
  // page (the form's changed controls); false when a field refused a value.
  // OnCancel: drops the edits. Refresh: re-reads what depends on other
  // pages. GetStateMapName: the name the page-state map remembers.
  virtual void OnShow(bool shown);
  virtual bool OnSetActive();
  virtual bool OnKillActive();
  virtual bool OnValidate(NPageFailure& failure);
  virtual bool OnOK();
  virtual void OnCancel();
  virtual void Refresh();
  virtual NUnicodeString GetStateMapName() const { return m_title; }

 private:
  friend class NPropertyTreeDialog;

  NUnicodeString m_title;
  NForm m_form;
  NPropertyTreeDialog* m_dialog = nullptr;
};
