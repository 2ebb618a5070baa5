#include "dialogs/global/NAnnouncingPage.h"

#include <algorithm>

#include "dialogs/NMessageText.h"
#include "uicore/NMessageBox.h"

bool NAnnouncingPage::OnOK() {
  std::vector<std::uint32_t> due;
  for (const auto& [control, code] : m_announced) {
    // Several changed settings with one message show it once.
    if (control->IsChanged() && std::find(due.begin(), due.end(), code) == due.end()) due.push_back(code);
  }
  const bool stored = NPropertyTreePage::OnOK();
  for (const std::uint32_t code : due) ShowAnnouncement(code);
  return stored;
}

void NAnnouncingPage::ShowAnnouncement(std::uint32_t code) const {
  NMessageBox(nullptr, code, NMessageText(code, {m_appName}), m_appName, kMessageBoxOk | kMessageBoxIconInformation);
}
