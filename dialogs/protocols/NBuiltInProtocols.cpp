#include "dialogs/protocols/NProtocolTable.h"
#include "dialogs/protocols/SessionFtpPage.h"
#include "dialogs/protocols/SessionFtpsPage.h"
#include "dialogs/protocols/SessionLocalShellPage.h"
#include "dialogs/protocols/SessionProtocolPage.h"
#include "dialogs/protocols/SessionRloginPage.h"
#include "dialogs/protocols/SessionScpPage.h"
#include "dialogs/protocols/SessionSerialPage.h"
#include "dialogs/protocols/SessionSftpPage.h"
#include "dialogs/protocols/SessionSsh1Page.h"
#include "dialogs/protocols/SessionSsh2Page.h"
#include "dialogs/protocols/SessionTapiPage.h"
#include "dialogs/protocols/SessionTelnetPage.h"
#include "dialogs/protocols/SessionTn3270Page.h"

namespace {

void Terminal(const char16_t* name, NProtocolPageFactory factory = {}) {
  NProtocolTable::Register({NUnicodeString(name), NProtocolTable::kTerminalProduct, std::move(factory)});
}

void Transfer(const char16_t* name, NProtocolPageFactory factory = {}) {
  NProtocolTable::Register({NUnicodeString(name), NProtocolEntry::kTransferProduct, std::move(factory)});
}

}  // namespace

// In the order the Connection page offers them; "None" has no settings.
void NRegisterBuiltInProtocols() {
  Terminal(u"SSH2", SessionProtocolPage::FactoryOf<SessionSsh2Page>());
  Terminal(u"SSH1", SessionProtocolPage::FactoryOf<SessionSsh1Page>());
  Terminal(u"Telnet", SessionProtocolPage::FactoryOf<SessionTelnetPage>());
  Terminal(u"RLogin", SessionProtocolPage::FactoryOf<SessionRloginPage>());
  Terminal(u"Serial", SessionProtocolPage::FactoryOf<SessionSerialPage>());
  Terminal(u"TAPI", SessionProtocolPage::FactoryOf<SessionTapiPage>());
  Terminal(u"Local Shell", SessionProtocolPage::FactoryOf<SessionLocalShellPage>());
  Terminal(u"TN3270", SessionProtocolPage::FactoryOf<SessionTn3270Page>());
  Terminal(u"None");
  Transfer(u"FTP", SessionProtocolPage::FactoryOf<SessionFtpPage>());
  Transfer(u"SFTP", SessionProtocolPage::FactoryOf<SessionSftpPage>());
  Transfer(u"SCP", SessionProtocolPage::FactoryOf<SessionScpPage>());
  Transfer(u"FTPS", SessionProtocolPage::FactoryOf<SessionFtpsPage>());
  Transfer(u"None");
}
