#include "location/NLogEvent.h"

bool NLogEvent::QueryInterface(const NInterfaceId& iid, void** object) {
  if (iid == ILogEvent::kIID) {
    AddRef();
    *object = static_cast<ILogEvent*>(this);
    return true;
  }
  return NUnknown::QueryInterface(iid, object);
}
