#pragma once

#include "config/GlobalConfig.h"
#include "dialogs/global/NAnnouncingPage.h"

// "TFTP Server": the built-in TFTP server's start, port, folders and log.
class GlobalTFTPPage final : public NAnnouncingPage {
 public:
  static constexpr std::u16string_view kUploadLabel = u"Upload folder";
  static constexpr std::u16string_view kDownloadLabel = u"Download folder";
  static constexpr std::u16string_view kLogFileLabel = u"Log file";

  // `serverAvailable` false: the host has no TFTP server; the settings are
  // shown but cannot be changed.
  GlobalTFTPPage(GlobalConfig& global, NUnicodeString appName, bool serverAvailable);
};
