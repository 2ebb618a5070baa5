#pragma once

#include <cstdint>
#include <string_view>

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

inline constexpr std::uint32_t kMsgColumnsOutOfRange = 0xE1380004;

// "Emulation": the terminal emulated, its size and scrollback, and what
// it answers the host.
class SessionEmulationPage final : public NPropertyTreePage {
 public:
  static constexpr std::u16string_view kColumnsLabel = u"Columns";

  // `columnLimit`: the most columns the host's window allows (0: none
  // beyond `globalMaxColumns`, the global "Max Columns").
  SessionEmulationPage(ISessionConfig& session, int columnLimit, int globalMaxColumns);

  // Why a column count outside `minimum`..`maximum` is refused, and where
  // the limit `globalMaximum` is raised.
  static NUnicodeString ColumnsMessage(int minimum, int maximum, int globalMaximum);

  bool OnValidate(NPageFailure& failure) override;
};
