#include "dialogs/DemoGeneralPage.h"

#include "config/NControlCodecs.h"

DemoGeneralPage::DemoGeneralPage(GlobalConfig& global) : NPropertyTreePage(u"General") {
  NForm& form = Form();
  form.Group(u"Main window");
  form.CheckBox(u"Show toolbar", global.m_showToolbar);
  form.CheckBox(u"Show menu bar", global.m_showMenuBar);
  form.CheckBox(u"Show connect bar", global.m_showConnectBar);
  form.CheckBox(u"Show session manager", global.m_showSessionManager);
  form.Group(u"Connect dialog");
  NFormControl& connect = form.CheckBox(u"Show connect dialog on start", global.m_showConnectDialog);
  form.CheckBox(u"Sort sessions alphabetically", global.m_sortAlphabetical).EnabledWhenChecked(connect);
  form.Number(u"Session filter delay (ms)", global.m_sessionFilterDelay, 0, 5000).EnabledWhenChecked(connect);
  form.Font(u"Connect dialog font", global.m_connectDialogFont).EnabledWhenChecked(connect);
  form.EndGroup();
  form.Choice(u"Language", global.m_locale,
              {{u"System default", NUnicodeString()},
               {u"English", NUnicodeString(u"en")},
               {u"German", NUnicodeString(u"de")},
               {u"Japanese", NUnicodeString(u"ja")}});
}
