#pragma once

#include "config/GlobalConfig.h"
#include "uicore/NPropertyTreePage.h"

// "Sound": the sounds played on connection, disconnection, completion and error.
class GlobalSoundPage final : public NPropertyTreePage {
 public:
  explicit GlobalSoundPage(GlobalConfig& global);
};
