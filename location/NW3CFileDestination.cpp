#include "location/NW3CFileDestination.h"

#include <array>
#include <limits>
#include <vector>

#include "location/ILogEvent.h"
#include "location/NMessageFormatter.h"
#include "location/NReportMessageParams.h"
#include "location/NUtcTime.h"

namespace {

constexpr std::u16string_view kLineTemplate =
    u"%1!ls! %2!ls! "
    u"%3!ls! %4!ls! %5!ls! %6!ls! %7!ls! %8!ls! %9!ls! %10!ls! %11!u! %12!ls! %13!ls! %14!ls! %15!ls! %16!ls! "
    u"\"%17!ls!\"\n";

std::u16string Format(std::u16string_view spec, std::uint64_t value) {
  return NMessageFormatter::FormatOne(spec, NFormatArgument::Unsigned(value));
}

std::u16string Address(const NLogEndpoint& endpoint) {
  return endpoint.address.empty() ? std::u16string(u"-") : std::u16string(endpoint.address);
}

}  // namespace

std::u16string NW3CFileDestination::EscapeMessage(std::u16string_view text) {
  // One pass gives the same result as the three passes in their order ("%"
  // first, so that the escapes added later are not escaped again), because
  // the later escapes only ever add "%" and hex digits.
  std::u16string out;
  out.reserve(text.size());
  for (const char16_t c : text) {
    if (c == u'%') {
      out += u"%25";
    } else if (c == u'"') {
      out += u"%22";
    } else if (c < 32 || c >= 127) {
      out.push_back(u'%');
      out += Format(u"02X", c);
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::u16string NW3CFileDestination::FormatHeader(std::uint64_t now) const {
  const NUtcTime time = NUtcTime::FromFileTime(now);
  return u"#Version: 1.0\r\n#Date: " + time.Date() + u" " + time.Time() +
         u"\r\n#Fields: date time x-source x-topic x-session c-ip c-port cs-username cs-method uri-stem sc-status "
         u"cs-bytes sc-bytes bytes s-ip s-port x-message\r\n";
}

std::u16string NW3CFileDestination::FormatLine(const ILogEvent& event) const {
  std::u16string date, time;
  if (event.GetTime() != 0) {
    const NUtcTime utc = NUtcTime::FromFileTime(event.GetTime());
    date = utc.Date();
    time = utc.Time();
  }
  const std::uint64_t up = event.GetBytesClientToServer();
  const std::uint64_t down = event.GetBytesServerToClient();
  const bool overflow = up > std::numeric_limits<std::uint64_t>::max() - down;
  const IReportMessageParams* message = event.GetMessage();

  const std::array<std::u16string, 17> fields = {
      date,
      time,
      GetSourceName(),
      GetTopicName(event.GetTopic()),
      event.GetSession() == 0 ? std::u16string(u"-") : Format(u"u", event.GetSession()),
      Address(event.GetClient()),
      Format(u"hu", event.GetClient().port),
      event.GetUserName(),
      event.GetMethod(),
      event.GetUriStem(),
      std::u16string(),  // %11 is the status, passed as a number
      Format(u"I64u", up),
      Format(u"I64u", down),
      overflow ? std::u16string(u"-") : Format(u"I64u", up + down),
      Address(event.GetServer()),
      Format(u"hu", event.GetServer().port),
      message ? EscapeMessage(message->GetText()) : std::u16string(),
  };
  std::vector<NFormatArgument> args(fields.begin(), fields.end());
  args[10] = NFormatArgument::Unsigned(event.GetStatus());
  std::u16string line;
  NMessageFormatter::Format(kLineTemplate, args, &line);
  return line;
}
