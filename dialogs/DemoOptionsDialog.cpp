#include "dialogs/DemoOptionsDialog.h"

#include "config/NGlobalConfigStore.h"

NPropertyPageStateMap DemoOptionsDialog::s_pageStateMap;

DemoOptionsDialog::DemoOptionsDialog(GlobalConfig& global, const NPolicy& policy, void* parent)
    : NPropertyTreeDialog(u"Options", 0, &s_pageStateMap, parent),
      m_general(global),
      m_tabs(global),
      m_passwords(global, policy),
      m_files(global) {
  AddPage(&m_general);
  m_general.AddPage(&m_tabs);
  AddPage(&m_passwords);
  AddPage(&m_files);
}

bool DemoOptionsDialog::OnApplied(NPageFailure& failure) {
  NReportMessageParams params;
  if (NGlobalConfigStore::Save(false, params)) return true;
  failure.text = u"The options were not saved: " + params.GetText();
  failure.style = kMessageBoxOk | kMessageBoxIconError;
  return false;
}
