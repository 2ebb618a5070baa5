#include "dialogs/NMessageText.h"

#include "location/NReportMessageParams.h"

NUnicodeString NMessageText(std::uint32_t code, std::initializer_list<std::u16string_view> arguments) {
  NReportMessageParams params(code);
  for (std::u16string_view argument : arguments) params.AddArgument(argument);
  NUnicodeString text = params.GetText();
  while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.pop_back();
  return text;
}
