#include "dialogs/global/GlobalTFTPPage.h"

#include "dialogs/NMessageText.h"

namespace {

constexpr std::uint32_t kMsgTftpServerChanged = 0x61380044;
constexpr std::uint32_t kMsgUploadFolderPrompt = 0x61380041;
constexpr std::uint32_t kMsgDownloadFolderPrompt = 0x61380042;
constexpr std::uint32_t kMsgLogFileTitle = 0x61380043;

}  // namespace

GlobalTFTPPage::GlobalTFTPPage(GlobalConfig& global, NUnicodeString appName, bool serverAvailable)
    : NAnnouncingPage(u"TFTP Server", std::move(appName)) {
  NForm& form = Form();
  if (!serverAvailable) form.Label(u"This application has no TFTP server.");
  NFormControl& server = form.Group(u"Server");
  if (!serverAvailable) server.EnabledWhen([] { return false; });
  NFormControl* const controls[] = {
      &form.Radio(u"Start the server", global.m_tftpServerStartOption,
                  {{u"Never", std::int64_t{0}}, {u"On demand", std::int64_t{1}}, {u"Always", std::int64_t{2}}}),
      &form.Number(u"Port (0: 69)", global.m_tftpServerPort, 0, 65535),
      &form.Folder(NUnicodeString(kUploadLabel), global.m_tftpServerUploadDirectory)
           .Prompt(NMessageText(kMsgUploadFolderPrompt)),
      &form.Folder(NUnicodeString(kDownloadLabel), global.m_tftpServerDownloadDirectory)
           .Prompt(NMessageText(kMsgDownloadFolderPrompt)),
      &form.File(NUnicodeString(kLogFileLabel), global.m_tftpLogFile, u"Log files (*.log)")
           .Prompt(NMessageText(kMsgLogFileTitle)),
      &form.CheckBox(u"Accept connections from this computer only", global.m_restrictConnectionsToTftpServer),
  };
  form.EndGroup();
  for (NFormControl* control : controls) Announce(*control, kMsgTftpServerChanged);
}
