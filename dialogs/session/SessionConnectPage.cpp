#include "dialogs/session/SessionConnectPage.h"

#include "config/NConfigEntry.h"
#include "dialogs/NMessageText.h"
#include "dialogs/protocols/NProtocolTable.h"

namespace {

std::vector<NChoiceItem> ProtocolsOf(int productId) {
  std::vector<NChoiceItem> items;
  for (std::size_t i = 0; i < NProtocolTable::Count(); ++i) {
    if (NProtocolTable::ProductIdOf(i) != productId) continue;
    const NUnicodeString& name = NProtocolTable::Entry(i).name;
    items.push_back({name, name});
  }
  return items;
}

}  // namespace

SessionConnectPage::SessionConnectPage(ISessionConfig& session, bool readOnly, bool newSession, bool protocolEditable)
    : NPropertyTreePage(u"Connection"), m_session(session) {
  NProtocolTable::LoadModules();
  ConnectConfig& connect = session.Config().m_connect;
  NForm& form = Form();
  form.SetReadOnly(readOnly);
  if (newSession) form.Label(u"The new session is saved when you press OK.");
  form.Label(u"Session: " + session.Path());
  form.StringList(u"Description", session.Config().m_description);
  form.Group(u"Protocols");
  if (HasTerminalProtocols()) {
    m_terminal = &AddProtocolChoice(kProtocolLabel, connect.m_protocolName, NProtocolTable::kTerminalProduct,
                                    protocolEditable, &m_lastTerminal);
  }
  if (HasTransferProtocols()) {
    m_transfer = &AddProtocolChoice(kTransferProtocolLabel, connect.m_fileTransferProtocolName,
                                    GetTransferAppProductID(), protocolEditable, &m_lastTransfer);
  }
  form.EndGroup();
  form.CheckBox(u"Reconnect automatically", session.Config().m_autoReconnect);
  m_lastTerminal = TerminalProtocol();
  m_lastTransfer = TransferProtocol();
}

NFormControl& SessionConnectPage::AddProtocolChoice(std::u16string_view label, NProfileString& field, int productId,
                                                    bool editable, NUnicodeString* last) {
  std::vector<NChoiceItem> items = ProtocolsOf(productId);
  NOfferStoredChoice(items, field.Get());
  return Form()
      .Choice(NUnicodeString(label), field, std::move(items))
      .EnabledWhen([editable] { return editable; })
      .OnChange([this, last](NFormControl& control) {
        const NUnicodeString now = Shown(&control), before = *last;
        *last = now;
        if (m_handler && before != now) m_handler(&control == m_terminal, before, now);
      });
}

NUnicodeString SessionConnectPage::Shown(const NFormControl* control) const {
  if (!control) return {};
  if (!control->Value().index()) {  // not loaded yet: the record's value
    return control == m_terminal ? m_session.Config().m_connect.m_protocolName.Get()
                                 : m_session.Config().m_connect.m_fileTransferProtocolName.Get();
  }
  const NUnicodeString* name = std::get_if<NUnicodeString>(&control->Value());
  return name ? *name : NUnicodeString();
}

NUnicodeString SessionConnectPage::TerminalProtocol() const { return Shown(m_terminal); }

NUnicodeString SessionConnectPage::TransferProtocol() const { return Shown(m_transfer); }

bool SessionConnectPage::OnValidate(NPageFailure& failure) {
  if (m_terminal && m_transfer && TerminalProtocol() == u"None" && TransferProtocol() == u"None") {
    failure.code = kMsgBothProtocolsNone;
    failure.text = NMessageText(kMsgBothProtocolsNone);
    failure.control = m_transfer;
    return false;
  }
  return NPropertyTreePage::OnValidate(failure);
}
