#include "dialogs/protocols/SessionProtocolPage.h"

#include "uicore/NPropertyTreeDialog.h"

SessionProtocolPage::SessionProtocolPage(NUnicodeString title, int mode, NPropertyTreePage& connection)
    : NPropertyTreePage(std::move(title)), m_connection(connection) {
  Form().SetReadOnly(NIsReadOnly(mode));
}

void SessionProtocolPage::ShowInDialog(IPropertyTreeDialog& dialog, ISessionConfig&) {
  if (Dialog() == &dialog) {
    dialog.ShowPage(this);
  } else {
    dialog.AddPage(this, &m_connection);
  }
}

void SessionProtocolPage::Hide(IPropertyTreeDialog& dialog) { dialog.HidePage(this); }
