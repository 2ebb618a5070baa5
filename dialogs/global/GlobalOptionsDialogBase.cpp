#include "dialogs/global/GlobalOptionsDialogBase.h"

#include <stdexcept>

#include "config/NConfigEntry.h"
#include "dialogs/protocols/NProtocolTable.h"
#include "location/NConfigFolder.h"
#include "platform/NPlatform.h"
#include "platform/NPrinterDevices.h"
#include "uicore/NAppName.h"

namespace {

constexpr int kNoDropProduct = 9;  // the product whose dialog leaves out a few pages

GlobalConfig& Checked(GlobalConfig* global) {
  if (!global) throw std::invalid_argument("the global options dialog needs the global record");
  return *global;
}

NUnicodeString AppNameOf(const NGlobalDialogInputs& inputs) {
  return inputs.appName.empty() ? NGetAppName() : inputs.appName;
}

}  // namespace

NPropertyPageStateMap GlobalOptionsDialogBase::m_pageStateMap;

GlobalOptionsDialogBase::GlobalOptionsDialogBase(GlobalConfig* global, const NGlobalDialogInputs& inputs, void* parent)
    : NPropertyTreeDialog(u"Global Options", 0, &m_pageStateMap, parent), m_readOnly(inputs.readOnly) {
  GlobalConfig& record = Checked(global);
  const NUnicodeString appName = AppNameOf(inputs);
  NPlatform& platform = inputs.platform ? *inputs.platform : NPlatform::Default();
  const bool keepsAllPages = GetCurrentAppProductID() != kNoDropProduct;

  m_generalPage = std::make_unique<GlobalGeneralPage>(record, appName, inputs.showLanguage, inputs.scriptingAvailable);
  AddPage(m_generalPage.get());
  m_configurationPathsPage = std::make_unique<GlobalConfigurationPathsPage>(appName, inputs.commandLineFolder, platform);
  m_generalPage->AddPage(m_configurationPathsPage.get());
  if (keepsAllPages) {
    m_autoSessionPage = std::make_unique<GlobalAutoSessionPage>(record);
    m_generalPage->AddPage(m_autoSessionPage.get());
  }

  if (HasTerminalProtocols()) {
    m_terminalPage = std::make_unique<GlobalTerminalEmulationPage>(record);
    m_appearancePage = std::make_unique<GlobalAppearancePage>(record, inputs.screenDpi);
    m_ansiColorPage = std::make_unique<GlobalAnsiColorPage>(record);
    m_colorSchemesPage = std::make_unique<GlobalColorSchemesPage>(record);
    m_tabsPage = std::make_unique<GlobalTabsPage>(record, appName);
    m_printingPage = std::make_unique<GlobalPrintingPage>(
        record, inputs.printerAvailable, m_configurationPathsPage->RunningConfigFolder(), platform,
        inputs.printers ? *inputs.printers : NPrinterDevices::Default());
    m_webBrowserPage = std::make_unique<GlobalWebBrowserPage>(record);
    m_tftpPage = std::make_unique<GlobalTFTPPage>(record, appName, inputs.tftpServerAvailable);
    m_terminalAdvancedPage = std::make_unique<GlobalTerminalAdvancedPage>(record);
    AddPage(m_terminalPage.get());
    m_terminalPage->AddPage(m_appearancePage.get());
    m_appearancePage->AddPage(m_ansiColorPage.get());
    m_appearancePage->AddPage(m_colorSchemesPage.get());
    m_terminalPage->AddPage(m_tabsPage.get());
    m_terminalPage->AddPage(m_printingPage.get());
    m_terminalPage->AddPage(m_webBrowserPage.get());
    m_terminalPage->AddPage(m_tftpPage.get());
    m_terminalPage->AddPage(m_terminalAdvancedPage.get());
  }

  if (HasTransferProtocols()) {
    m_fileTransferPage = std::make_unique<GlobalFileTransferPage>(record);
    m_optionsPage = std::make_unique<GlobalOptionsPage>(record);
    m_advancedOptionsPage = std::make_unique<GlobalAdvancedOptionsPage>(record);
    if (keepsAllPages) m_viewPage = std::make_unique<GlobalViewPage>(record);
    m_ftpPage = std::make_unique<GlobalFtpPage>(record);
    m_sslPage = std::make_unique<GlobalSslPage>(record);
    if (keepsAllPages) m_soundPage = std::make_unique<GlobalSoundPage>(record);
    if (inputs.fileTypes && inputs.icons) {
      m_fileTypesPage =
          std::make_unique<GlobalFileTypesPage>(record, *inputs.fileTypes, *inputs.icons, inputs.fileTypesChanged);
    }
    m_filterPage = std::make_unique<GlobalFilterPage>(record);
    AddPage(m_fileTransferPage.get());
    m_fileTransferPage->AddPage(m_optionsPage.get());
    m_optionsPage->AddPage(m_advancedOptionsPage.get());
    if (m_viewPage) m_fileTransferPage->AddPage(m_viewPage.get());
    m_fileTransferPage->AddPage(m_ftpPage.get());
    m_fileTransferPage->AddPage(m_sslPage.get());
    if (m_soundPage) m_fileTransferPage->AddPage(m_soundPage.get());
    if (m_fileTypesPage) m_fileTransferPage->AddPage(m_fileTypesPage.get());
    m_fileTransferPage->AddPage(m_filterPage.get());
  }

  m_firewallPage = std::make_unique<GlobalNewFirewallPage>();
  AddPage(m_firewallPage.get());

  NProtocolTable::LoadModules();
  if (const NGlobalPageFactory& factory = NProtocolTable::GlobalPageFactory()) {
    m_hostPage = factory(*this);
    if (m_hostPage && !m_hostPage->Dialog()) AddPage(m_hostPage.get());
  }
}

GlobalOptionsDialogBase::~GlobalOptionsDialogBase() {
  // The host's page first: it was made last and may use the others.
  m_hostPage.reset();
  m_firewallPage.reset();
  m_filterPage.reset();
  m_fileTypesPage.reset();
  m_soundPage.reset();
  m_sslPage.reset();
  m_ftpPage.reset();
  m_viewPage.reset();
  m_advancedOptionsPage.reset();
  m_optionsPage.reset();
  m_fileTransferPage.reset();
  m_terminalAdvancedPage.reset();
  m_tftpPage.reset();
  m_webBrowserPage.reset();
  m_printingPage.reset();
  m_tabsPage.reset();
  m_colorSchemesPage.reset();
  m_ansiColorPage.reset();
  m_appearancePage.reset();
  m_terminalPage.reset();
  m_autoSessionPage.reset();
  m_configurationPathsPage.reset();
  m_generalPage.reset();
}

void GlobalOptionsDialogBase::OnInitDialog() {
  if (!m_readOnly) return;
  DisableOkButton(true);
  for (const Row& row : AllRows()) row.page->Form().SetReadOnly(true);
}
