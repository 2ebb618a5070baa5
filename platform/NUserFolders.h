#pragma once

#include <string>

// Where the user's own configuration lives by default: on Windows the
// roaming application-data folder's "Nerrin", elsewhere "cfgdeck" in the
// XDG configuration directory ($XDG_CONFIG_HOME, else ~/.config). Empty
// when the system names no such folder.
std::u16string NUserConfigRoot();
