#pragma once

#include <vector>

#include "config/GlobalConfig.h"
#include "dialogs/global/NAnnouncingPage.h"

// "Tabs/Tiling": the session tabs and their status indicators, with a strip
// of sample tabs drawn in the colours being edited.
class GlobalTabsPage final : public NAnnouncingPage {
 public:
  static constexpr std::u16string_view kStyleLabel = u"Status indicator type";

  // The sample tabs: one per session state, each in its colours as the
  // page's controls show them now (not as saved), so that it follows every
  // edit.
  class SampleTabControl {
   public:
    explicit SampleTabControl(const NForm& form) : m_form(form) {}
    std::vector<NSampleTab> Tabs() const;

   private:
    const NForm& m_form;
  };

  GlobalTabsPage(GlobalConfig& global, NUnicodeString appName);

  const SampleTabControl& Samples() const { return m_samples; }

 private:
  SampleTabControl m_samples;
};
