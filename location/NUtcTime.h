#pragma once

#include <cstdint>
#include <string>

// A calendar date and time in UTC, taken from a Windows file time (100 ns
// units since 1601-01-01). Logs are written in UTC, as the W3C extended log
// format defines, so a log reads the same whatever the machine's time zone.
struct NUtcTime {
  int year = 1970;
  unsigned month = 1;
  unsigned day = 1;
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;

  static NUtcTime FromFileTime(std::uint64_t fileTime);

  std::u16string Date() const;         // "%Y-%m-%d"
  std::u16string Time() const;         // "%H:%M:%S"
  std::u16string CompactDate() const;  // "%Y%m%d"
};
