#pragma once

#include <memory>

#include "config/GlobalConfig.h"
#include "dialogs/global/GlobalAdvancedOptionsPage.h"
#include "dialogs/global/GlobalAnsiColorPage.h"
#include "dialogs/global/GlobalAppearancePage.h"
#include "dialogs/global/GlobalAutoSessionPage.h"
#include "dialogs/global/GlobalColorSchemesPage.h"
#include "dialogs/global/GlobalConfigurationPathsPage.h"
#include "dialogs/global/GlobalFileTransferPage.h"
#include "dialogs/global/GlobalFileTypesPage.h"
#include "dialogs/global/GlobalFilterPage.h"
#include "dialogs/global/GlobalFtpPage.h"
#include "dialogs/global/GlobalGeneralPage.h"
#include "dialogs/global/GlobalNewFirewallPage.h"
#include "dialogs/global/GlobalOptionsPage.h"
#include "dialogs/global/GlobalPrintingPage.h"
#include "dialogs/global/GlobalSoundPage.h"
#include "dialogs/global/GlobalSslPage.h"
#include "dialogs/global/GlobalTFTPPage.h"
#include "dialogs/global/GlobalTabsPage.h"
#include "dialogs/global/GlobalTerminalAdvancedPage.h"
#include "dialogs/global/GlobalTerminalEmulationPage.h"
#include "dialogs/global/GlobalViewPage.h"
#include "dialogs/global/GlobalWebBrowserPage.h"
#include "uicore/NPropertyTreeDialog.h"

class NPlatform;
class NPrinterDevices;

// What the entry point passes beside the record, in its order. The flags
// and the integer mean, for the pages that take them:
//   commandLineFolder   the configuration folder was given on the command
//                       line: "Configuration Paths" shows it read-only;
//   showLanguage        the host has several languages: "General" offers
//                       the choice;
//   readOnly            the configuration cannot be saved now: every page is
//                       read-only and OK is disabled;
//   screenDpi           the host screen's dots per inch (0: 96);
//   printerAvailable    the host has started the printing back end;
//   scriptingAvailable  the host runs scripts: "General" offers to disable
//                       them;
//   fileTypesChanged    set when OK changed the file-type register;
//   tftpServerAvailable the host has a TFTP server.
struct NGlobalDialogInputs {
  NUnicodeString appName;  // %1 of the announcements; empty: the running application's
  bool commandLineFolder = false;
  bool showLanguage = false;
  bool readOnly = false;
  unsigned screenDpi = 0;
  bool printerAvailable = false;
  bool scriptingAvailable = false;
  bool* fileTypesChanged = nullptr;
  NFileTypeManager* fileTypes = nullptr;  // with `icons`, the "File Types" page
  NIconManager* icons = nullptr;
  bool tftpServerAvailable = false;
  NPlatform* platform = nullptr;        // null: the system's
  NPrinterDevices* printers = nullptr;  // null: the system's
};

// The Global Options dialog: every page of the global record, made in the
// constructor for the applications installed and the current product, and
// a host's own page. The pages write the record on OK and the caller saves
// it (SaveGlobalConfig); the settings kept elsewhere (the folders, the
// printer file, the firewall) are saved by their pages. UI thread only.
class GlobalOptionsDialogBase : public NPropertyTreeDialog {
 public:
  GlobalOptionsDialogBase(GlobalConfig* global, const NGlobalDialogInputs& inputs, void* parent);
  ~GlobalOptionsDialogBase() override;

  static NPropertyPageStateMap& PageStateMap() { return m_pageStateMap; }
  // The host's page, or null.
  NPropertyTreePage* HostPage() const { return m_hostPage.get(); }

 protected:
  void OnInitDialog() override;

 private:
  bool m_readOnly;

  std::unique_ptr<GlobalGeneralPage> m_generalPage;
  std::unique_ptr<GlobalConfigurationPathsPage> m_configurationPathsPage;
  std::unique_ptr<GlobalAutoSessionPage> m_autoSessionPage;
  std::unique_ptr<GlobalTerminalEmulationPage> m_terminalPage;
  std::unique_ptr<GlobalAppearancePage> m_appearancePage;
  std::unique_ptr<GlobalAnsiColorPage> m_ansiColorPage;
  std::unique_ptr<GlobalColorSchemesPage> m_colorSchemesPage;
  std::unique_ptr<GlobalTabsPage> m_tabsPage;
  std::unique_ptr<GlobalPrintingPage> m_printingPage;
  std::unique_ptr<GlobalWebBrowserPage> m_webBrowserPage;
  std::unique_ptr<GlobalTFTPPage> m_tftpPage;
  std::unique_ptr<GlobalTerminalAdvancedPage> m_terminalAdvancedPage;
  std::unique_ptr<GlobalFileTransferPage> m_fileTransferPage;
  std::unique_ptr<GlobalOptionsPage> m_optionsPage;
  std::unique_ptr<GlobalAdvancedOptionsPage> m_advancedOptionsPage;
  std::unique_ptr<GlobalViewPage> m_viewPage;
  std::unique_ptr<GlobalFtpPage> m_ftpPage;
  std::unique_ptr<GlobalSslPage> m_sslPage;
  std::unique_ptr<GlobalSoundPage> m_soundPage;
  std::unique_ptr<GlobalFileTypesPage> m_fileTypesPage;
  std::unique_ptr<GlobalFilterPage> m_filterPage;
  std::unique_ptr<GlobalNewFirewallPage> m_firewallPage;
  std::unique_ptr<NPropertyTreePage> m_hostPage;

  static NPropertyPageStateMap m_pageStateMap;
};
