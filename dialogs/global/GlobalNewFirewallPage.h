#pragma once

#include "config/NFirewallConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Firewall": the firewall or proxy that connections go through. Its record
// is its own, not the global one: the page loads it when made and saves it
// on OK.
class GlobalNewFirewallPage final : public NPropertyTreePage {
 public:
  GlobalNewFirewallPage();

  bool OnOK() override;

 private:
  NFirewallConfig m_firewall;
};
