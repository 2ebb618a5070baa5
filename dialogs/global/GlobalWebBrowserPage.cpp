#include "dialogs/global/GlobalWebBrowserPage.h"

GlobalWebBrowserPage::GlobalWebBrowserPage(GlobalConfig& global) : NPropertyTreePage(u"Web Browser") {
  NForm& form = Form();
  NFormControl& which = form.Radio(u"Open links with", global.m_httpUseRegistryEntry,
                                   {{u"This program", std::int64_t{0}}, {u"The system's browser", std::int64_t{1}}});
  const auto own = [&which] {
    const std::int64_t* choice = std::get_if<std::int64_t>(&which.Value());
    return choice && *choice == 0;
  };
  form.File(u"Browser", global.m_httpBrowserApplication, u"Programs (*.exe)").EnabledWhen(own);
  form.CheckBox(u"Hand links to a running browser", global.m_httpUseDde).EnabledWhen(own);
}
