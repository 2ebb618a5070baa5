#pragma once

#include <memory>

#include "base/NUnicodeString.h"
#include "dialogs/protocols/NProtocolTable.h"
#include "uicore/IPropertyTreeDialog.h"
#include "uicore/NPropertyTreePage.h"

class ISessionConfig;

// A protocol's options page in a session dialog, titled with the protocol's
// name and kept under "Connection". Its form is read-only when the dialog
// is (a locked session).
class SessionProtocolPage : public NPropertyTreePage {
 public:
  // Shows the page for `session`: added under "Connection" the first time,
  // shown again afterwards.
  void ShowInDialog(IPropertyTreeDialog& dialog, ISessionConfig& session);
  void Hide(IPropertyTreeDialog& dialog);

  // The factory of a built-in page class, constructed as
  // Page(session, mode, connection).
  template <typename Page>
  static NProtocolPageFactory FactoryOf() {
    return [](IPropertyTreeDialog& dialog, int mode, ISessionConfig& session, NPropertyTreePage& connection) {
      std::unique_ptr<SessionProtocolPage> page = std::make_unique<Page>(session, mode, connection);
      dialog.AddPage(page.get(), &connection);
      return page;
    };
  }

 protected:
  SessionProtocolPage(NUnicodeString title, int mode, NPropertyTreePage& connection);

 private:
  NPropertyTreePage& m_connection;
};
