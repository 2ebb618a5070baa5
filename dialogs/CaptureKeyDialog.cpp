#include "dialogs/CaptureKeyDialog.h"

#include "dialogs/NPackedKey.h"

bool CaptureKeyDialog::KeyDown(unsigned virtualKey, unsigned /*repeatCount*/, unsigned flags) {
  if (virtualKey == kVirtualKeyShift || virtualKey == kVirtualKeyControl || virtualKey == kVirtualKeyMenu) {
    return false;
  }
  // The modifier keys' extended flags (right Ctrl, right Alt) do not count:
  // only the flags of the key pressed say whether it is extended.
  m_modifiers = 0;
  if (IsDown(kVirtualKeyShift)) m_modifiers |= kKeyShift;
  if (IsDown(kVirtualKeyMenu)) m_modifiers |= kKeyAlt;
  if (IsDown(kVirtualKeyControl)) m_modifiers |= kKeyCtrl;
  if (flags & kExtendedFlag) m_modifiers |= kKeyExtended;
  m_scanCode = flags & 0xFF;
  m_dialog.EndDialog(IModalDialog::kOk);
  return true;
}

bool CaptureKeyDialog::PreTranslateMessage(const NWindowMessage& message) {
  const bool keyDown = message.message == NWindowMessage::kKeyDown || message.message == NWindowMessage::kSysKeyDown;
  const bool printScreenUp = message.message == NWindowMessage::kKeyUp && message.wParam == kVirtualKeyPrintScreen;
  if (!keyDown && !printScreenUp) return false;
  const auto data = static_cast<std::uint32_t>(message.lParam);
  return KeyDown(static_cast<unsigned>(message.wParam), data & 0xFFFF, data >> 16);
}
