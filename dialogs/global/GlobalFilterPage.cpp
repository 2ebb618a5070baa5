#include "dialogs/global/GlobalFilterPage.h"

GlobalFilterPageBase::GlobalFilterPageBase(GlobalConfig& global) : NPropertyTreePage(u"Filters") {
  NForm& form = Form();
  form.Group(u"File lists");
  form.Choice(u"Files whose names begin with a dot", global.m_hideDotFiles,
              {{u"Shown", std::int64_t{0}}, {u"Hidden", std::int64_t{1}}});
  form.CheckBox(u"Hide hidden files", global.m_hideHiddenFiles);
  form.Group(u"Synchronisation");
  form.Text(u"Include", global.m_quickSync.m_includeFilter);
  form.Text(u"Exclude", global.m_quickSync.m_excludeFilter);
  form.EndGroup();
}
