#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "uicore/NPropertyTreePage.h"

// A page some of whose settings the running applications take up only at
// their next start. After OK or Apply stored it, each announced control
// that changed shows its message once, with the application's name as %1.
class NAnnouncingPage : public NPropertyTreePage {
 public:
  NAnnouncingPage(NUnicodeString title, NUnicodeString appName)
      : NPropertyTreePage(std::move(title)), m_appName(std::move(appName)) {}

  bool OnOK() override;

 protected:
  void Announce(const NFormControl& control, std::uint32_t code) { m_announced.emplace_back(&control, code); }
  // Shows message `code` with the application's name, as an announcement.
  void ShowAnnouncement(std::uint32_t code) const;
  const NUnicodeString& AppName() const { return m_appName; }

 private:
  NUnicodeString m_appName;
  std::vector<std::pair<const NFormControl*, std::uint32_t>> m_announced;
};
