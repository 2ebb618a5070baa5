#pragma once

#include "location/NFileDestination.h"

// Writes events in the W3C extended log file format: a three-line header at
// the start of each file, then one space-separated line per event ended by
// a single LF. The message field is escaped ("%" first, then the double
// quote, then control and non-ASCII characters as %XX) and quoted.
class NW3CFileDestination : public NFileDestination {
 public:
  using NFileDestination::NFileDestination;

  // The message field's escaping, exposed for tests and tools.
  static std::u16string EscapeMessage(std::u16string_view text);

 protected:
  std::u16string FormatHeader(std::uint64_t now) const override;
  std::u16string FormatLine(const ILogEvent& event) const override;
};
