// Feeds arbitrary templates and arguments to the message formatter. The
// input is split at the first NUL pair: the template, then the arguments
// separated by single NULs; a few arguments are also passed as numbers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "location/NMessageFormatter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::u16string units(size / 2, u'\0');
  std::memcpy(units.data(), data, units.size() * 2);
  const size_t split = units.find(std::u16string_view(u"\0\0", 2));
  const std::u16string_view pattern = std::u16string_view(units).substr(0, split);
  std::vector<std::u16string_view> texts;
  if (split != std::u16string::npos) {
    std::u16string_view rest = std::u16string_view(units).substr(split + 2);
    while (!rest.empty() && texts.size() < 120) {
      const size_t end = rest.find(u'\0');
      texts.push_back(rest.substr(0, end));
      if (end == std::u16string_view::npos) break;
      rest.remove_prefix(end + 1);
    }
  }
  std::vector<NFormatArgument> args;
  for (size_t i = 0; i < texts.size(); ++i) {
    if (i % 3 == 2 && !texts[i].empty()) {
      args.push_back(NFormatArgument::Signed(static_cast<std::int64_t>(texts[i][0]) - 0x8000));
    } else {
      args.push_back(NFormatArgument(texts[i]));
    }
  }
  std::u16string out;
  NMessageFormatter::Format(pattern, args, &out);
  // Output is bounded: the literal text plus, per insertion, the capped
  // width or the longest argument.
  std::size_t longest = 0;
  for (std::u16string_view text : texts) longest = std::max(longest, text.size());
  const std::size_t perInsertion = std::max<std::size_t>(NMessageFormatter::kMaxWidth, longest) + 64;
  const std::size_t bound = pattern.size() * 2 + (pattern.size() / 2 + 1) * perInsertion;
  if (out.size() > bound) __builtin_trap();
  return 0;
}
