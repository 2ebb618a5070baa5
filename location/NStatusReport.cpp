#include "location/NStatusReport.h"

void NReportStatus(const NStatus& status, NReportMessageParams& params) {
  const NReportMessageParams system(status.Code());
  params.Clear();
  params.SetCode(kMsgPlatformOperationFailed);
  params.AddArgument(NUnicodeString::FromUtf8(status.Operation()));
  params.AddArgument(status.Path());
  params.AddArgument(system.GetText());
}
