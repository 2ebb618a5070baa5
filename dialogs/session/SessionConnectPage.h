#pragma once

#include <cstdint>
#include <functional>

#include "config/ISessionConfig.h"
#include "uicore/NPropertyTreePage.h"

inline constexpr std::uint32_t kMsgBothProtocolsNone = 0xE138F0A8;

// "Connection": the session's terminal and file-transfer protocols, each
// offered only when its application is installed, and its description.
// Choosing a protocol tells the dialog at once, so that the protocols'
// pages follow the choice.
class SessionConnectPage final : public NPropertyTreePage {
 public:
  static constexpr std::u16string_view kProtocolLabel = u"Protocol";
  static constexpr std::u16string_view kTransferProtocolLabel = u"File transfer protocol";

  // `protocolEditable` false: the protocols are shown but cannot change.
  SessionConnectPage(ISessionConfig& session, bool readOnly, bool newSession, bool protocolEditable);

  // Called with (terminal choice?, old name, new name) after a person
  // changed a protocol.
  void SetProtocolHandler(std::function<void(bool, const NUnicodeString&, const NUnicodeString&)> handler) {
    m_handler = std::move(handler);
  }
  // The protocols as chosen on the page now (the session's until then);
  // empty when the choice is not offered.
  NUnicodeString TerminalProtocol() const;
  NUnicodeString TransferProtocol() const;

  bool OnValidate(NPageFailure& failure) override;

 private:
  // The choice of one protocol kind; a person's change goes to the handler.
  NFormControl& AddProtocolChoice(std::u16string_view label, NProfileString& field, int productId, bool editable,
                                  NUnicodeString* last);
  NUnicodeString Shown(const NFormControl* control) const;

  ISessionConfig& m_session;
  NFormControl* m_terminal = nullptr;
  NFormControl* m_transfer = nullptr;
  NUnicodeString m_lastTerminal;
  NUnicodeString m_lastTransfer;
  std::function<void(bool, const NUnicodeString&, const NUnicodeString&)> m_handler;
};
