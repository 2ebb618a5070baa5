#include "dialogs/global/GlobalFileTransferPage.h"

GlobalFileTransferPage::GlobalFileTransferPage(GlobalConfig& global) : NPropertyTreePage(u"File Transfer") {
  NForm& form = Form();
  form.Group(u"Folders");
  form.Folder(u"Initial local folder", global.m_initialLocalFolder);
  form.Folder(u"Default download folder", global.m_defaultDownloadDirectory);
  form.Folder(u"Download folder", global.m_downloadDirectory);
  form.Folder(u"Cache folder", global.m_cacheDirectory);
  form.CheckBox(u"Return to the session's last folder", global.m_restoreSessionDirectory);

  form.Group(u"Transfer queue");
  form.CheckBox(u"Show the transfer queue", global.m_showTransferQueueWindow);
  form.CheckBox(u"Suspend queued transfers", global.m_suspendQueuedTransfers);
  form.Number(u"Parallel transfers", global.m_maximumParallelTransfers, 1, 10);
  form.Number(u"Bandwidth limit (KB/s, 0: none)", global.m_bandwidthLimit, 0, 1000000);
  form.CheckBox(u"One connection at a time", global.m_serializeConnections);
  form.CheckBox(u"Refresh after all transfers end", global.m_refreshAfterAllTransfersComplete);
  form.EndGroup();
}
