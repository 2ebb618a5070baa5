#pragma once

#include "base/NUnicodeString.h"

// Inches as the printer service shows them: rounded as margins are
// (PrinterBase::RoundMargin), at most three decimals, no trailing zeros, a
// point as the separator whatever the locale ("0.25", "1", "-0.5").
NUnicodeString NFormatInches(double inches);
