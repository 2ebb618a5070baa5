#pragma once

#include "config/GlobalConfig.h"
#include "dialogs/global/NAnnouncingPage.h"

// "General": the session manager and connect dialog, the main window, the
// language and the update checks.
class GlobalGeneralPage final : public NAnnouncingPage {
 public:
  static constexpr std::u16string_view kLanguageLabel = u"Language";

  // `showLanguage`: the host has more than one language to offer;
  // `scriptingAvailable`: the host runs scripts, which may be disabled.
  GlobalGeneralPage(GlobalConfig& global, NUnicodeString appName, bool showLanguage, bool scriptingAvailable);
};
