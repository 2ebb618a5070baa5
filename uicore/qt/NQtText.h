#pragma once

#include <QString>
#include <string_view>

#include "base/NUnicodeString.h"

// Text across the seam to Qt. Both sides are UTF-16, so nothing is lost.
inline QString NToQString(std::u16string_view text) {
  return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

inline NUnicodeString NFromQString(const QString& text) { return text.toStdU16String(); }
