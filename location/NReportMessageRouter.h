#pragma once

#include <string_view>


class ILogEvent;
class NReportMessageParams;

// The host's receiver of the library's reports: messages to display or
// log, and the library's own trace lines. The host implements it and hands
// the library a getter for it at initialisation; before that the library
// calls nothing of it and its reports and traces are dropped. Reports may
// arrive from the library's worker threads, so implementations must be
// thread-safe.
class NReportMessageRouter {
 public:
  virtual ~NReportMessageRouter() = default;

  // A failure or notice for the user, resolved text in params.GetText().
  virtual void RouteMessage(const NReportMessageParams& params) = 0;

  // One line of the library's diagnostic trace, ending in "\n".
  virtual void Trace(std::u16string_view line) = 0;
};

// The function a host passes at initialisation: returns its router.
using NReportMessageRouterGetter = NReportMessageRouter* (*)();

// Installs the getter (null removes it); the library's initialisation entry
// calls it with the host's getter. Thread-safe.
void NSetReportMessageRouterGetter(NReportMessageRouterGetter getter);

// Sends a trace line to the host's router, if one is installed.
void NTrace(std::u16string_view line);

// Sends a report to the host's router, if one is installed.
void NRouteMessage(const NReportMessageParams& params);
