#include "dialogs/protocols/SessionTapiPage.h"

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

SessionTapiPage::SessionTapiPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"TAPI", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  form.Text(u"Phone number", connect.m_phoneNumber);
  NFormControl& codes = form.CheckBox(u"Use country and area code", connect.m_useCountryAndAreaCode);
  form.Number(u"Country code", connect.m_countryCode, 1, 999).EnabledWhenChecked(codes);
  form.Text(u"Area code", connect.m_areaCode).EnabledWhenChecked(codes);
}
