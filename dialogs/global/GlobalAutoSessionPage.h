#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Default Session": what opens when the application starts.
class GlobalAutoSessionPage final : public NPropertyTreePage {
 public:
  static constexpr std::u16string_view kUseAutoSessionLabel = u"Use auto session";
  static constexpr std::u16string_view kAutoSessionNameLabel = u"Auto session";

  explicit GlobalAutoSessionPage(GlobalConfig& global);

  // "Use auto session" without a session's name is refused.
  bool OnValidate(NPageFailure& failure) override;
};
