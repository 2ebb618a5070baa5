#include "dialogs/protocols/SessionSerialPage.h"

#include <string>

#include "config/ISessionConfig.h"
#include "dialogs/protocols/NProtocolForm.h"

namespace {

std::vector<NChoiceItem> BaudRates() {
  std::vector<NChoiceItem> items;
  for (std::int64_t rate :
       {110, 300, 600, 1200, 2400, 4800, 9600, 14400, 19200, 38400, 57600, 115200, 230400, 460800, 921600}) {
    items.push_back({NUnicodeString::FromUtf8(std::to_string(rate)), rate});
  }
  return items;
}

}  // namespace

SessionSerialPage::SessionSerialPage(ISessionConfig& session, int mode, NPropertyTreePage& connection)
    : SessionProtocolPage(u"Serial", mode, connection) {
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  form.Text(u"COM port", connect.m_comPort);
  form.Choice(u"Baud rate", connect.m_baudRate, BaudRates());
  form.Choice(u"Data bits", connect.m_dataBits, NNumberChoices({{u"5", 5}, {u"6", 6}, {u"7", 7}, {u"8", 8}}));
  form.Choice(u"Parity", connect.m_parity,
              NNumberChoices({{u"None", 0}, {u"Odd", 1}, {u"Even", 2}, {u"Mark", 3}, {u"Space", 4}}));
  form.Choice(u"Stop bits", connect.m_stopBits, NNumberChoices({{u"1", 0}, {u"1.5", 1}, {u"2", 2}}));
  // The field keeps bit flags; the choice offers the combinations in use.
  form.Choice(u"Flow control", connect.m_flowControl,
              NNumberChoices({{u"None", 0},
                              {u"DTR/DSR", ConnectConfig::kFlowDtrDsr},
                              {u"RTS/CTS", ConnectConfig::kFlowRtsCts},
                              {u"XON/XOFF", ConnectConfig::kFlowXonXoff},
                              {u"DTR/DSR and RTS/CTS", ConnectConfig::kFlowDtrDsr | ConnectConfig::kFlowRtsCts}}));
}
