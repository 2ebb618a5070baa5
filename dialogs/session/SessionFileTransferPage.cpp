#include "dialogs/session/SessionFileTransferPage.h"

#include <cstdint>

namespace {

std::vector<NChoiceItem> OperatingSystems(const NUnicodeString& stored) {
  std::vector<NChoiceItem> items = {{u"Automatic", NUnicodeString(u"AUTO")},
                                    {u"UNIX", NUnicodeString(u"UNIX")},
                                    {u"Windows", NUnicodeString(u"WINDOWS")},
                                    {u"VMS", NUnicodeString(u"VMS")},
                                    {u"MVS", NUnicodeString(u"MVS")}};
  NOfferStoredChoice(items, stored);
  return items;
}

}  // namespace

SessionFileTransferPage::SessionFileTransferPage(ISessionConfig& session, GlobalConfig& global, bool readOnly)
    : NPropertyTreePage(u"File Transfer") {
  SessionConfig& config = session.Config();
  NForm& form = Form();
  form.SetReadOnly(readOnly);

  form.Group(u"Local");
  form.Folder(u"Initial local folder", config.m_initialLocalDirectory);
  form.Folder(u"Default download folder", config.m_defaultDownloadDirectory);
  const NUnicodeString& fallback = global.m_defaultDownloadDirectory.Get();
  form.Label(u"An empty download folder means the global one: " +
             (fallback.IsEmpty() ? NUnicodeString(u"none is set") : fallback) + u".");
  form.Number(u"Maximum transfer buffers", config.m_maxTransferBuffers, 1, 64);
  form.CheckBox(u"File names always use UTF-8", config.m_filenamesAlwaysUseUtf8);

  form.Group(u"Remote system");
  form.Choice(u"Operating system", config.m_operatingSystem, OperatingSystems(config.m_operatingSystem.Get()));
  form.Number(u"Time zone (hours from UTC)", config.m_timeZone, -12, 14);
  form.Choice(u"File name case", config.m_fileSystemCase,
              {{u"Sensitive", std::int64_t{0}}, {u"Insensitive", std::int64_t{1}}});
  form.Number(u"File creation mask", config.m_fileCreationMask, 0, 0777)
      .Tip(u"Permission bits, entered in decimal: octal 022 is 18.");
  form.EndGroup();
}
