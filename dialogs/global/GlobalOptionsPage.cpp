#include "dialogs/global/GlobalOptionsPage.h"

GlobalOptionsPageBase::GlobalOptionsPageBase(GlobalConfig& global) : NPropertyTreePage(u"Options") {
  NForm& form = Form();
  form.Radio(u"Transfer type", global.m_transferType,
             {{u"Automatic", std::int64_t{0}}, {u"Text", std::int64_t{1}}, {u"Binary", std::int64_t{2}}});
  form.CheckBox(u"Use the transfer type for all files", global.m_useDefaultTransferTypeForAllFiles);
  form.Choice(u"When a file exists", global.m_overwriteAction,
              {{u"Ask", std::int64_t{0}},
               {u"Overwrite", std::int64_t{1}},
               {u"Resume", std::int64_t{2}},
               {u"Skip", std::int64_t{3}},
               {u"Rename", std::int64_t{4}}});
  form.Choice(u"Resume interrupted transfers on connect", global.m_promptToResumeOnConnect,
              {{u"Never", std::int64_t{0}}, {u"Ask", std::int64_t{1}}, {u"Always", std::int64_t{2}}});
  form.CheckBox(u"Close the window on disconnection", global.m_closeOnDisconnect);
  form.CheckBox(u"Always ask for the user name and password", global.m_alwaysPromptForAuthInfo);
  form.CheckBox(u"Move deleted files to the recycle bin", global.m_moveFilesToRecycleBin);
  form.CheckBox(u"Keep file version numbers", global.m_retainFileVersionNumber);
  form.CheckBox(u"Use the previous synchronisation settings", global.m_usePreviousQuickSyncSettings);
}
