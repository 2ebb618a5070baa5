#include "printing/NFormatInches.h"

#include <charconv>
#include <string_view>

#include "printing/PrinterBase.h"

NUnicodeString NFormatInches(double inches) {
  char text[64];
  const auto [end, error] =
      std::to_chars(text, text + sizeof text, PrinterBase::RoundMargin(inches), std::chars_format::fixed, 3);
  std::string_view shown(text, error == std::errc() ? static_cast<std::size_t>(end - text) : 0);
  while (shown.ends_with('0')) shown.remove_suffix(1);
  if (shown.ends_with('.')) shown.remove_suffix(1);
  if (shown.empty() || shown == "-0") shown = "0";
  return NUnicodeString::FromUtf8(shown);
}
