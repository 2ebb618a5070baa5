#pragma once

#include "dialogs/global/NAnnouncingPage.h"
#include "uicore/NFieldBinding.h"

class NPlatform;

// "Configuration Paths": the configuration folder, and whether and where
// the sessions' personal data is kept apart from it.
//
// The folders are registry values, not fields of the global record: the
// page reads them when made and writes them on OK. Choosing to keep the
// personal data apart, or to merge it back, is saved with its pending flag
// first and then run at once behind the progress dialog; a run that fails
// or is cut short leaves the flag set, so the next start finishes it.
class GlobalConfigurationPathsPage final : public NAnnouncingPage {
 public:
  static constexpr std::u16string_view kConfigFolderLabel = u"Configuration folder";
  static constexpr std::u16string_view kSeparateLabel = u"Store personal data separately";
  static constexpr std::u16string_view kPersonalFolderLabel = u"Personal data folder";

  // `commandLineFolder`: the running application was given its folder on
  // the command line, which the page shows but cannot change.
  GlobalConfigurationPathsPage(NUnicodeString appName, bool commandLineFolder, NPlatform& platform);

  // The folder the running application reads its configuration from.
  const NUnicodeString& RunningConfigFolder() const { return m_runningConfigFolder; }

  bool OnValidate(NPageFailure& failure) override;
  bool OnOK() override;

 private:
  // Moves the personal data as the stored choice asks; false when a run
  // failed (its message was shown).
  bool MovePersonalData(bool wasSeparate, const NUnicodeString& oldPersonal);
  void ShowError(std::uint32_t code, const NUnicodeString& text) const;

  NPlatform& m_platform;
  NUnicodeString m_runningConfigFolder;
  NPlainField<NUnicodeString> m_configFolder;
  NPlainField<bool> m_separate;
  NPlainField<NUnicodeString> m_personalFolder;
  NFormControl* m_configControl = nullptr;
  NFormControl* m_personalControl = nullptr;
};
