#include "location/NUtcTime.h"

#include <chrono>
#include <cstdio>

namespace {

constexpr std::int64_t kUnixEpochAsFileTime = 116444736000000000LL;
constexpr std::int64_t kFileTimeUnitsPerSecond = 10000000;

std::u16string Widen(const char* text) { return std::u16string(text, text + std::char_traits<char>::length(text)); }

}  // namespace

NUtcTime NUtcTime::FromFileTime(std::uint64_t fileTime) {
  using namespace std::chrono;
  // Floor division keeps times before 1970 on the right day.
  const std::int64_t units = static_cast<std::int64_t>(fileTime - static_cast<std::uint64_t>(kUnixEpochAsFileTime));
  std::int64_t seconds = units / kFileTimeUnitsPerSecond;
  if (units % kFileTimeUnitsPerSecond < 0) --seconds;
  const sys_seconds instant{std::chrono::seconds(seconds)};
  const sys_days day = floor<days>(instant);
  const year_month_day date{day};
  const hh_mm_ss<std::chrono::seconds> clock{instant - day};
  NUtcTime time;
  time.year = static_cast<int>(date.year());
  time.month = static_cast<unsigned>(date.month());
  time.day = static_cast<unsigned>(date.day());
  time.hour = static_cast<unsigned>(clock.hours().count());
  time.minute = static_cast<unsigned>(clock.minutes().count());
  time.second = static_cast<unsigned>(clock.seconds().count());
  return time;
}

std::u16string NUtcTime::Date() const {
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u", year, month, day);
  return Widen(text);
}

std::u16string NUtcTime::Time() const {
  char text[32];
  std::snprintf(text, sizeof text, "%02u:%02u:%02u", hour, minute, second);
  return Widen(text);
}

std::u16string NUtcTime::CompactDate() const {
  char text[32];
  std::snprintf(text, sizeof text, "%04d%02u%02u", year, month, day);
  return Widen(text);
}
