#include "location/NReportMessageRouter.h"

#include <atomic>

namespace {

std::atomic<NReportMessageRouterGetter> g_routerGetter{nullptr};

NReportMessageRouter* Router() {
  const NReportMessageRouterGetter getter = g_routerGetter.load(std::memory_order_acquire);
  return getter ? getter() : nullptr;
}

}  // namespace

void NSetReportMessageRouterGetter(NReportMessageRouterGetter getter) {
  g_routerGetter.store(getter, std::memory_order_release);
}

void NTrace(std::u16string_view line) {
  if (NReportMessageRouter* router = Router()) router->Trace(line);
}

void NRouteMessage(const NReportMessageParams& params) {
  if (NReportMessageRouter* router = Router()) router->RouteMessage(params);
}
