#include "dialogs/global/GlobalViewPage.h"

GlobalViewPage::GlobalViewPage(GlobalConfig& global) : NPropertyTreePage(u"View") {
  NForm& form = Form();
  form.Group(u"Windows");
  form.Choice(u"Folder tree", global.m_displayFolderTree, {{u"Hidden", std::int64_t{0}}, {u"Shown", std::int64_t{1}}});
  form.Choice(u"Log", global.m_displayLog, {{u"Hidden", std::int64_t{0}}, {u"Shown", std::int64_t{1}}});
  form.CheckBox(u"Local window at the bottom or right", global.m_localWindowOnBottomOrRight);
  form.CheckBox(u"Remember the session windows' layout", global.m_saveSessionWindowAttributes);

  form.Group(u"File lists");
  form.CheckBox(u"Show seconds", global.m_displaySeconds);
  form.CheckBox(u"Show remote times as local time", global.m_displayLocalTimeForRemoteFiles);
  form.CheckBox(u"Show file names as the system does", global.m_displayExplorerFilenames);
  form.CheckBox(u"Show the attributes column", global.m_displayAttributesColumn);
  const std::vector<NChoiceItem> styles = {
      {u"Bytes", std::int64_t{0}}, {u"Kilobytes", std::int64_t{1}}, {u"As fits", std::int64_t{2}}};
  form.Choice(u"File sizes", global.m_listViewNumberStyle, styles);
  form.Choice(u"Transfer sizes", global.m_transferViewNumberStyle, styles);

  form.Group(u"Log colours");
  form.Color(u"Requests", global.m_logTopicRequestTextColor);
  form.Color(u"Responses", global.m_logTopicResponseTextColor);
  form.Color(u"Information", global.m_logTopicInformationTextColor);
  form.Color(u"Warnings", global.m_logTopicWarningTextColor);
  form.Color(u"Errors", global.m_logTopicErrorTextColor);
  form.EndGroup();
}
