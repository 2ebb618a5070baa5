#include "dialogs/KeyboardButton.h"

#include <gtest/gtest.h>

#include "dialogs/NPackedKey.h"
#include "dialogs/NumpadButton.h"
#include "dialogs/SelectedKeyDialog.h"

namespace {

TEST(SelectedKeyDialogTest, MapModifiersKeepsCtrlShiftAltOnly) {
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(0), 0u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(kKeyCtrl | 0x1D), 1u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(kKeyShift), 2u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(kKeyAlt), 4u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(kKeyAlt | kKeyCtrl | kKeyShift | 0x32), 7u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(kKeyWindows), 0u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(kKeyExtended | kKeyWindows | 0x53), 0u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(0xA1FFFFFF), 0u);
  EXPECT_EQ(SelectedKeyDialog::mapModifiers(0xFFFFFFFF), 7u);
}

TEST(KeyboardButtonTest, KeyWithModifiersMapsBackToTheSameModifiers) {
  const KeyboardButton f1(1001, 4, u"F1", 0x3B, 0);
  const KeyboardButton del(1002, 4, u"Del", 0x53, kKeyExtended);
  for (unsigned modifiers = 0; modifiers < 8; ++modifiers) {
    EXPECT_EQ(SelectedKeyDialog::mapModifiers(f1.GetKey(modifiers)), modifiers);
    EXPECT_EQ(GetUnmodifiedKey(f1.GetKey(modifiers)), 0x3Bu);
    EXPECT_EQ(GetModifiers(f1.GetKey(modifiers)) & (kKeyExtended | kKeyWindows), 0u);
    EXPECT_EQ(SelectedKeyDialog::mapModifiers(del.GetKey(modifiers)), modifiers);
    EXPECT_EQ(GetModifiers(del.GetKey(modifiers)) & kKeyExtended, kKeyExtended);
  }
  EXPECT_EQ(del.GetKey(KeyboardButton::kCtrl | KeyboardButton::kAlt), kKeyCtrl | kKeyAlt | kKeyExtended | 0x53);
  EXPECT_EQ(f1.GetKey(KeyboardButton::kShift | 8), kKeyShift | 0x3B) << "bits beyond the three are ignored";
}

TEST(KeyboardButtonTest, KeepsWhatItWasMadeWithAndItsState) {
  KeyboardButton button(1003, 9, u"Backspace", 0x0E, kKeyWindows | 0x20);
  EXPECT_EQ(button.id(), 1003u);
  EXPECT_EQ(button.width(), 9);
  EXPECT_EQ(button.caption(), u"Backspace");
  EXPECT_EQ(button.GetKey(0), 0x0Eu) << "only the extended flag is a key flag";
  EXPECT_EQ(button.state(), 0);
  button.SetState(2);
  EXPECT_EQ(button.state(), 2);

  NumpadButton seven(2007, 4, u"7", 0x47, 0x67);
  EXPECT_EQ(seven.numLockVirtualKey(), 0x67ul);
  EXPECT_EQ(seven.GetKey(KeyboardButton::kCtrl), kKeyCtrl | 0x47) << "the pad's keys are not extended";
  KeyboardButton& asButton = seven;
  asButton.SetState(-1);
  EXPECT_EQ(seven.state(), -1);
}

}  // namespace
