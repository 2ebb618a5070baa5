#include "dialogs/global/GlobalConfigurationPathsPage.h"

#include "dialogs/NMessageText.h"
#include "location/NConfigFolder.h"
#include "location/NPersonalDataFolder.h"
#include "platform/NPlatform.h"
#include "store/NIniFileStoreFactory.h"
#include "uicore/NConfigFolderCheck.h"
#include "uicore/NMessageBox.h"

namespace {

constexpr std::uint32_t kMsgNotAConfigFolder = 0xE138F0A9;  // %1: the path

// The folder the running application reads: the remembered one, else the
// registered store's.
NUnicodeString FindRunningConfigFolder(const NUnicodeString& appName) {
  NUnicodeString folder = GetAppConfigPath(appName.c_str());
  if (folder.empty()) {
    if (const auto* factory = dynamic_cast<const NIniFileStoreFactory*>(NGetProfileStoreFactory())) {
      folder = factory->Root();
    }
  }
  return folder;
}

// Two spellings of one folder: case and separators at the end aside, as
// Windows compares paths.
bool SameFolder(std::u16string_view a, std::u16string_view b) {
  const auto trim = [](std::u16string_view path) {
    while (path.size() > 1 && (path.back() == u'\\' || path.back() == u'/')) path.remove_suffix(1);
    return path;
  };
  a = trim(a);
  b = trim(b);
  return a.size() == b.size() && NUnicodeString::CompareIgnoreCase(a, b) == 0;
}

const NUnicodeString& TextOf(const NFormControl& control) {
  static const NUnicodeString kEmpty;
  const NUnicodeString* text = std::get_if<NUnicodeString>(&control.Value());
  return text ? *text : kEmpty;
}

}  // namespace

GlobalConfigurationPathsPage::GlobalConfigurationPathsPage(NUnicodeString appName, bool commandLineFolder,
                                                           NPlatform& platform)
    : NAnnouncingPage(u"Configuration Paths", std::move(appName)),
      m_platform(platform),
      m_runningConfigFolder(FindRunningConfigFolder(AppName())) {
  m_configFolder = {m_runningConfigFolder, m_runningConfigFolder};
  m_separate.value = UsePersonalDataPath(AppName().c_str());
  const NUnicodeString personal = GetAppPersonalDataPath(AppName().c_str(), m_runningConfigFolder.c_str());
  m_personalFolder = {personal, GetAppPersonalDataPathDefault(m_runningConfigFolder.c_str())};

  NForm& form = Form();
  m_configControl = &form.Folder(NUnicodeString(kConfigFolderLabel), m_configFolder);
  m_configControl->Validate([this](const NControlValue& value) -> std::optional<NUnicodeString> {
    const NUnicodeString* path = std::get_if<NUnicodeString>(&value);
    if (path && NIsValidConfigFolder(*path, m_platform)) return std::nullopt;
    return NMessageText(kMsgNotAConfigFolder, {path ? std::u16string_view(*path) : std::u16string_view()});
  });
  if (commandLineFolder) {
    m_configControl->LockedWhen(
        [] { return std::optional<NUnicodeString>(u"Given on the command line (/F) for this run."); });
  }
  Announce(*m_configControl, kMsgConfigFolderChanged);

  form.Group(u"Personal data");
  NFormControl& separate = form.CheckBox(NUnicodeString(kSeparateLabel), m_separate);
  m_personalControl = &form.Folder(NUnicodeString(kPersonalFolderLabel), m_personalFolder);
  m_personalControl->EnabledWhenChecked(separate).Validate([this](const NControlValue& value)
                                                                -> std::optional<NUnicodeString> {
    const NUnicodeString* path = std::get_if<NUnicodeString>(&value);
    if (!path || path->empty()) return NMessageText(kMsgNotAConfigFolder, {u""});
    if (SameFolder(*path, TextOf(*m_configControl))) return NMessageText(kMsgPersonalDataSameFolder);
    return std::nullopt;
  });
  form.EndGroup();
}

bool GlobalConfigurationPathsPage::OnValidate(NPageFailure& failure) {
  if (NPropertyTreePage::OnValidate(failure)) return true;
  if (failure.control == m_personalControl && SameFolder(TextOf(*m_personalControl), TextOf(*m_configControl))) {
    failure.code = kMsgPersonalDataSameFolder;
  }
  return false;
}

bool GlobalConfigurationPathsPage::OnOK() {
  const bool wasSeparate = m_separate.value;
  const NUnicodeString oldPersonal = m_personalFolder.value;
  const bool separateChanged = Form().Find(kSeparateLabel)->IsChanged();
  const bool personalChanged = m_personalControl->IsChanged();
  const bool configChanged = m_configControl->IsChanged();
  if (!NAnnouncingPage::OnOK()) return false;  // announces the configuration folder

  if (configChanged) SaveAppConfigPath(m_configFolder.value.c_str(), false);
  if (!separateChanged && !(m_separate.value && personalChanged)) return true;
  // A failed run was shown; its pending flag brings it back at the next start.
  if (!MovePersonalData(wasSeparate, oldPersonal)) return true;
  // The running application keeps its store until it starts again.
  ShowAnnouncement(kMsgPersonalDataFolderChanged);
  return true;
}

bool GlobalConfigurationPathsPage::MovePersonalData(bool wasSeparate, const NUnicodeString& oldPersonal) {
  NReportMessageParams params;
  NPersonalDataRunOptions options;
  options.configFolder = m_runningConfigFolder;
  options.platform = &m_platform;
  if (wasSeparate) {
    // Back into the configuration folder first: from there a migration
    // into the new folder finds every value.
    ShowAnnouncement(kMsgPersonalDataMergeRequested);
    if (!NSaveDoPersonalDataMerge(true, false, params)) {
      ShowError(params.GetCode(), params.GetText());
      return false;
    }
    options.personalFolder = oldPersonal;
    if (!NMergeFromPersonalDataLocation(AppName(), params, options)) {
      NUnicodeString text = NMessageText(kMsgPersonalDataMergeFailed, {AppName()});
      text += u"\r\n\r\n";
      text += params.GetText();
      ShowError(kMsgPersonalDataMergeFailed, text);
      return false;
    }
    if (!m_separate.value) {
      if (NSaveUsePersonalDataPath(false, false, params)) return true;
      ShowError(params.GetCode(), params.GetText());
      return false;
    }
  }
  ShowAnnouncement(kMsgPersonalDataMigrationRequested);
  if (!NSaveAppPersonalDataPath(m_personalFolder.value, false, params) ||
      !NSaveUsePersonalDataPath(true, false, params) || !NSaveDoPersonalDataMigration(true, false, params)) {
    ShowError(params.GetCode(), params.GetText());
    return false;
  }
  options.personalFolder = m_personalFolder.value;
  if (!NMigrateToPersonalDataLocation(params, options)) {
    ShowError(params.GetCode(), params.GetText());
    return false;
  }
  return true;
}

void GlobalConfigurationPathsPage::ShowError(std::uint32_t code, const NUnicodeString& text) const {
  NMessageBox(nullptr, code, text, AppName(), kMessageBoxOk | kMessageBoxIconError);
}
