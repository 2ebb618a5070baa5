#pragma once

#include "base/NArray.h"
#include "base/NUnicodeString.h"

// An ordered list of strings: multi-string values, argument lists.
using NStringArray = NArray<NUnicodeString>;
