#include "dialogs/CaptureKeyDialog.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>
#include <vector>

#include "dialogs/NPackedKey.h"

namespace {

constexpr unsigned kShift = 16, kCtrl = 17, kAlt = 18;
constexpr unsigned kF1 = 0x70, kKeyC = 0x43, kDelete = 0x2E, kPrintScreen = 44;

// The keyboard as GetKeyState reports it: the high bit while down, the low
// bit for a toggle.
class FakeKeyboard final : public IKeyboardState {
 public:
  std::int16_t GetKeyState(unsigned virtualKey) const override {
    const auto it = m_states.find(virtualKey);
    return it == m_states.end() ? 0 : it->second;
  }
  void Press(unsigned virtualKey) { m_states[virtualKey] = static_cast<std::int16_t>(0xFF80); }
  void Toggle(unsigned virtualKey) { m_states[virtualKey] = 1; }
  void ReleaseAll() { m_states.clear(); }

 private:
  std::map<unsigned, std::int16_t> m_states;
};

class FakeDialog final : public IModalDialog {
 public:
  void EndDialog(int result) override { results.push_back(result); }
  std::vector<int> results;
};

using Key = std::pair<std::uint32_t, std::uint32_t>;  // scan code, modifiers

NWindowMessage Message(std::uint32_t id, unsigned virtualKey, std::uint32_t keyData) {
  // LPARAM is pointer-wide and signed: key data with the transition bit set
  // reaches a 32-bit program as a negative number.
  return NWindowMessage{id, virtualKey, static_cast<std::intptr_t>(static_cast<std::int32_t>(keyData))};
}

class CaptureKeyDialogTest : public testing::Test {
 protected:
  Key Captured() const { return {capture.GetScanCode(), capture.GetModifiers()}; }
  FakeKeyboard keyboard;
  FakeDialog dialog;
  CaptureKeyDialog capture{keyboard, dialog};
};

TEST_F(CaptureKeyDialogTest, ModifierKeysAloneAreIgnored) {
  for (const unsigned key : {kShift, kCtrl, kAlt}) {
    keyboard.Press(key);
    EXPECT_FALSE(capture.KeyDown(key, 1, 0x2A)) << key;
    EXPECT_EQ(Captured(), Key(0, 0)) << key;
  }
  EXPECT_TRUE(dialog.results.empty());
}

TEST_F(CaptureKeyDialogTest, EveryCombinationOfModifierKeysAndTheExtendedFlagClosesTheDialogWithOk) {
  const std::pair<unsigned, std::uint32_t> modifiers[] = {{kShift, kKeyShift}, {kCtrl, kKeyCtrl}, {kAlt, kKeyAlt}};
  for (unsigned combination = 0; combination < 16; ++combination) {
    SCOPED_TRACE(combination);
    FakeKeyboard keys;
    FakeDialog closed;
    CaptureKeyDialog dialogUnderTest(keys, closed);
    std::uint32_t expected = (combination & 8) ? kKeyExtended : 0;
    for (unsigned i = 0; i < 3; ++i) {
      if (combination & (1u << i)) {
        keys.Press(modifiers[i].first);
        expected |= modifiers[i].second;
      }
    }
    EXPECT_TRUE(dialogUnderTest.KeyDown(kDelete, 1, 0x53 | ((combination & 8) ? 0x100 : 0)));
    EXPECT_EQ(Key(dialogUnderTest.GetScanCode(), dialogUnderTest.GetModifiers()), Key(0x53, expected));
    EXPECT_EQ(closed.results, std::vector<int>{IModalDialog::kOk});
    // Nothing but the five modifier bits is ever set.
    EXPECT_EQ(GetUnmodifiedKey(dialogUnderTest.GetModifiers()), 0u);
  }
}

TEST_F(CaptureKeyDialogTest, OnlyTheKeyPressedDecidesTheExtendedBit) {
  // Right Ctrl is an extended key; the C pressed with it is not.
  keyboard.Press(kCtrl);
  EXPECT_FALSE(capture.KeyDown(kCtrl, 1, 0x11D));
  EXPECT_TRUE(capture.KeyDown(kKeyC, 1, 0x2E));
  EXPECT_EQ(Captured(), Key(0x2E, kKeyCtrl));
}

TEST_F(CaptureKeyDialogTest, ScanCodeIsTheLowByteOfTheFlagsAndTheVirtualKeyIsNotKept) {
  // Context, previous-state and transition bits above the extended flag.
  EXPECT_TRUE(capture.KeyDown(kDelete, 3, 0xE153));
  EXPECT_EQ(Captured(), Key(0x53, kKeyExtended));
  FakeDialog other;
  CaptureKeyDialog again(keyboard, other);
  EXPECT_TRUE(again.KeyDown(0x99, 1, 0xE153));
  EXPECT_EQ(Key(again.GetScanCode(), again.GetModifiers()), Captured());
}

TEST_F(CaptureKeyDialogTest, ModifiersAreTheLiveStateNotToggles) {
  keyboard.Toggle(kShift);
  keyboard.Toggle(kCtrl);
  EXPECT_TRUE(capture.KeyDown(kF1, 1, 0x3B));
  EXPECT_EQ(Captured(), Key(0x3B, 0));
  // A later key is captured afresh: the earlier modifiers do not linger.
  keyboard.Press(kAlt);
  EXPECT_TRUE(capture.KeyDown(kF1, 1, 0x3B));
  EXPECT_EQ(Captured(), Key(0x3B, kKeyAlt));
  keyboard.ReleaseAll();
  EXPECT_TRUE(capture.KeyDown(kF1, 1, 0x3B));
  EXPECT_EQ(Captured(), Key(0x3B, 0));
}

TEST_F(CaptureKeyDialogTest, MessageFilterRoutesKeyDownsAndThePrintScreenKeyUp) {
  // Key-up, characters, system key-up of ordinary keys and other messages
  // pass through, and so does a modifier's key-down: the dialog waits on.
  EXPECT_FALSE(capture.PreTranslateMessage(Message(NWindowMessage::kKeyUp, kF1, 0xC03B0001)));
  EXPECT_FALSE(capture.PreTranslateMessage(Message(0x0102, 'a', 0x001E0001)));
  EXPECT_FALSE(capture.PreTranslateMessage(Message(NWindowMessage::kSysKeyUp, kPrintScreen, 0xC1370001)));
  EXPECT_FALSE(capture.PreTranslateMessage(Message(0x0200, 0, 0)));
  EXPECT_FALSE(capture.PreTranslateMessage(Message(NWindowMessage::kKeyDown, kShift, 0x002A0001)));
  EXPECT_TRUE(dialog.results.empty());
  EXPECT_EQ(Captured(), Key(0, 0));
  keyboard.Press(kAlt);
  EXPECT_TRUE(capture.PreTranslateMessage(Message(NWindowMessage::kSysKeyDown, kF1, 0x203B0001)));
  EXPECT_EQ(Captured(), Key(0x3B, kKeyAlt));
  keyboard.ReleaseAll();
  EXPECT_TRUE(capture.PreTranslateMessage(Message(NWindowMessage::kKeyDown, kDelete, 0x01530001)));
  EXPECT_EQ(Captured(), Key(0x53, kKeyExtended));
  // Print Screen sends only its key-up (extended, scan code 0x37).
  EXPECT_TRUE(capture.PreTranslateMessage(Message(NWindowMessage::kKeyUp, kPrintScreen, 0xC1370001)));
  EXPECT_EQ(Captured(), Key(0x37, kKeyExtended));
  // Nor does the repeat count matter.
  EXPECT_TRUE(capture.PreTranslateMessage(Message(NWindowMessage::kKeyDown, kF1, 0x403BFFFF)));
  EXPECT_EQ(Captured(), Key(0x3B, 0));
  EXPECT_EQ(dialog.results.size(), 4u);
}

}  // namespace
