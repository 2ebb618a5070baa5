#include "uicore/NPropertyTreePage.h"

#include "uicore/NPropertyTreeDialog.h"

NPropertyTreePage::~NPropertyTreePage() {
  if (m_dialog) m_dialog->Forget(this);
}

IPropertyTreeDialog* NPropertyTreePage::Dialog() const { return m_dialog; }

void NPropertyTreePage::AddPage(NPropertyTreePage* child) {
  if (m_dialog) m_dialog->AddPage(child, this);
}

void NPropertyTreePage::OnShow(bool) {}

bool NPropertyTreePage::OnSetActive() {
  if (!m_form.IsLoaded()) m_form.Load();
  return true;
}

bool NPropertyTreePage::OnKillActive() { return true; }

bool NPropertyTreePage::OnValidate(NPageFailure& failure) {
  const NFormControl* invalid = m_form.FirstInvalid(&failure.text);
  failure.control = invalid;
  return invalid == nullptr;
}

bool NPropertyTreePage::OnOK() { return m_form.Store(); }

void NPropertyTreePage::OnCancel() { m_form.Discard(); }

void NPropertyTreePage::Refresh() {
  if (m_form.IsLoaded()) m_form.Load();  // unchanged controls take up the record's values
}
