#include "dialogs/DemoTabsPage.h"

DemoTabsPage::DemoTabsPage(GlobalConfig& global) : NPropertyTreePage(u"Tabs") {
  NForm& form = Form();
  NFormControl& tabs = form.CheckBox(u"Show session tabs", global.m_showSessionTabs);
  form.CheckBox(u"Close button on tabs", global.m_closeButtonOnTabs).EnabledWhenChecked(tabs);
  form.Number(u"Minimum tab width", global.m_minTabWidth, 20, 400).EnabledWhenChecked(tabs);
  form.Radio(u"Tab location", global.m_tabLocation, {{u"Top", std::int64_t{0}}, {u"Bottom", std::int64_t{1}}})
      .EnabledWhenChecked(tabs);
  form.Group(u"Status indicators");
  NFormControl& status = form.CheckBox(u"Show status indicators", global.m_showStatusIndicators);
  form.Color(u"Connected colour", global.m_connectedColor).EnabledWhenChecked(status);
  form.Color(u"Disconnected colour", global.m_disconnectedColor).EnabledWhenChecked(status);
}
