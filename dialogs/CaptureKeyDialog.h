#pragma once

#include <cstdint>
#include <string_view>

#include "uicore/IKeyboardState.h"
#include "uicore/IModalDialog.h"
#include "uicore/NWindowMessage.h"

// The "Map Key" dialog: waits for one key and captures its scan code with
// the modifiers held at that moment. The window toolkit shows it and feeds
// its messages through PreTranslateMessage; the logic needs no window.
class CaptureKeyDialog {
 public:
  static constexpr std::u16string_view kTitle = u"Map Key";
  static constexpr std::u16string_view kPrompt = u"Using the keyboard, press the key you want to map or click Cancel.";
  static constexpr std::u16string_view kWaiting = u"Waiting for keyboard input...";

  // Virtual keys the capture treats specially.
  static constexpr unsigned kVirtualKeyShift = 16;
  static constexpr unsigned kVirtualKeyControl = 17;
  static constexpr unsigned kVirtualKeyMenu = 18;  // Alt
  static constexpr unsigned kVirtualKeyPrintScreen = 44;
  // The extended flag in the flags half of the key data.
  static constexpr unsigned kExtendedFlag = 0x0100;

  // Both must outlive the dialog.
  CaptureKeyDialog(const IKeyboardState& keyboard, IModalDialog& dialog) : m_keyboard(keyboard), m_dialog(dialog) {}

  // A key went down: `flags` is the high half of the key data. The modifier
  // keys themselves are ignored (false: the dialog waits on). Any other key
  // is captured with Shift, Alt and Ctrl as they are now and the extended
  // flag, the dialog is closed with kOk, and true returned.
  bool KeyDown(unsigned virtualKey, unsigned repeatCount, unsigned flags);

  // The low 8 bits of the flags of the captured key; 0 until one is.
  std::uint32_t GetScanCode() const { return m_scanCode; }
  // The packed modifier bits of the capture; 0 until a key is captured.
  std::uint32_t GetModifiers() const { return m_modifiers; }

  // Sees every message before normal dispatch. Key-down and system-key-down
  // go to KeyDown, and so does the Print Screen key's key-up, since that key
  // sends no key-down. True when the message is consumed.
  bool PreTranslateMessage(const NWindowMessage& message);

 private:
  bool IsDown(unsigned virtualKey) const { return m_keyboard.GetKeyState(virtualKey) < 0; }

  const IKeyboardState& m_keyboard;
  IModalDialog& m_dialog;
  std::uint32_t m_scanCode = 0;
  std::uint32_t m_modifiers = 0;
};
