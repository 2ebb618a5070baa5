#pragma once

#include "location/NReportMessageParams.h"
#include "platform/NStatus.h"

// The one place where a failed platform operation becomes a report: the
// library's message "Could not %1 '%2':" with the operation, the path, and
// the system's own text for the error code.
void NReportStatus(const NStatus& status, NReportMessageParams& params);

// The library's message for a failed platform operation.
inline constexpr std::uint32_t kMsgPlatformOperationFailed = 0xE138F001;
