#include "dialogs/NPackedKey.h"

#include <gtest/gtest.h>

#include <string>

#include "dialogs/KeyboardButton.h"
#include "dialogs/NumpadButton.h"
#include "dialogs/SelectedKeyDialog.h"

namespace {

std::string Text(unsigned key) { return KeyModifiersToString(key).ToUtf8(); }

TEST(NPackedKeyTest, EveryCombinationSpellsExactlyItsModifiersInOrder) {
  // Bit order is not text order: Shift (bit 27) sits above Ctrl (bit 26)
  // but is spelled after it, and Windows (bit 30) comes last.
  const struct {
    unsigned bit;
    std::string text;
  } modifiers[] = {{0x10000000, "Alt-"},
                   {0x04000000, "Ctrl-"},
                   {0x08000000, "Shift-"},
                   {0x02000000, "Extended-"},
                   {0x40000000, "Windows-"}};
  EXPECT_EQ(Text(0), "");
  for (unsigned combination = 0; combination < 32; ++combination) {
    unsigned key = 0x2E;
    std::string expected;
    for (unsigned i = 0; i < 5; ++i) {
      if (combination & (1u << i)) {
        key |= modifiers[i].bit;
        expected += modifiers[i].text;
      }
    }
    EXPECT_EQ(Text(key), expected) << std::hex << key;
    // The key itself and the bits outside the five are not spelled.
    EXPECT_EQ(Text(key | 0xA1FFFFFF), expected) << std::hex << key;
  }
}

TEST(NPackedKeyTest, ModifiersAndKeySplitAtTheMask) {
  EXPECT_EQ(GetUnmodifiedKey(0x10000000 | 0x04000000 | 46), 46u);
  EXPECT_EQ(GetModifiers(0x10000000 | 0x04000000 | 46), 0x14000000u);
  EXPECT_EQ(GetModifiers(0xFFFFFFFF), 0x5E000000u);
  // The three bits that are no modifiers stay with the key.
  EXPECT_EQ(GetUnmodifiedKey(0xFFFFFFFF), 0xA1FFFFFFu);
  EXPECT_EQ(GetModifiers(0xA1FFFFFF), 0u);
  for (const unsigned key : {0u, 0x3Bu, 0x5E000000u, 0x4200001Du, 0x8C0000FFu, 0xFFFFFFFFu}) {
    EXPECT_EQ(GetModifiers(key) | GetUnmodifiedKey(key), key) << std::hex << key;
    EXPECT_EQ(GetModifiers(key) & GetUnmodifiedKey(key), 0u) << std::hex << key;
    EXPECT_EQ(GetModifiers(GetUnmodifiedKey(key)), 0u) << std::hex << key;
  }
}

TEST(SelectedKeyDialogTest, MapModifiersKeepsCtrlShiftAltOnly) {
  const std::pair<unsigned, unsigned> rows[] = {
      {0, 0}, {kKeyCtrl | 0x1D, 1}, {kKeyShift, 2}, {kKeyAlt, 4}, {kKeyAlt | kKeyCtrl | kKeyShift | 0x32, 7},
      {kKeyWindows, 0}, {kKeyExtended | kKeyWindows | 0x53, 0}, {0xA1FFFFFF, 0}, {0xFFFFFFFF, 7}};
  for (const auto& [key, modifiers] : rows) EXPECT_EQ(SelectedKeyDialog::mapModifiers(key), modifiers) << std::hex << key;
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
  const KeyboardButton backspace(1003, 9, u"Backspace", 0x0E, kKeyWindows | 0x20);
  EXPECT_EQ(backspace.GetKey(0), 0x0Eu) << "only the extended flag is a key flag";
  const NumpadButton seven(2007, 4, u"7", 0x47, 0x67);
  EXPECT_EQ(seven.GetKey(KeyboardButton::kCtrl), kKeyCtrl | 0x47) << "the pad's keys are not extended";
}

}  // namespace
