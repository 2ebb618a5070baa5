#pragma once

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

// "X/Y/Zmodem": file transfer through the terminal: the folders and the
// protocols' options.
class SessionXModemZModemPage final : public NPropertyTreePage {
 public:
  explicit SessionXModemZModemPage(ISessionConfig& session);
};
