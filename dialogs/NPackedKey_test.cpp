#include "dialogs/NPackedKey.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Text(unsigned key) { return KeyModifiersToString(key).ToUtf8(); }

TEST(NPackedKeyTest, ModifierTextsComeInTheirFixedOrder) {
  EXPECT_EQ(Text(0), "");
  EXPECT_EQ(Text(0x5E000000), "Alt-Ctrl-Shift-Extended-Windows-");
  EXPECT_EQ(Text(0x10000000), "Alt-");
  EXPECT_EQ(Text(0x04000000), "Ctrl-");
  EXPECT_EQ(Text(0x08000000), "Shift-");
  EXPECT_EQ(Text(0x02000000), "Extended-");
  EXPECT_EQ(Text(0x40000000), "Windows-");
  // Bit order is not text order: Shift (bit 27) sits above Ctrl (bit 26)
  // but is spelled after it, and Windows (bit 30) comes last.
  EXPECT_EQ(Text(0x08000000 | 0x04000000 | 0x10000000 | 0x2E), "Alt-Ctrl-Shift-");
  EXPECT_EQ(Text(0x40000000 | 0x02000000 | 0x08000000), "Shift-Extended-Windows-");
  // The key itself and bits outside the five are not spelled.
  EXPECT_EQ(Text(0xA1FFFFFF), "");
  EXPECT_EQ(Text(0xFFFFFFFF), "Alt-Ctrl-Shift-Extended-Windows-");
}

TEST(NPackedKeyTest, EveryCombinationSpellsExactlyItsModifiersInOrder) {
  const struct {
    unsigned bit;
    std::string text;
  } modifiers[] = {{0x10000000, "Alt-"},
                   {0x04000000, "Ctrl-"},
                   {0x08000000, "Shift-"},
                   {0x02000000, "Extended-"},
                   {0x40000000, "Windows-"}};
  for (unsigned combination = 0; combination < 32; ++combination) {
    unsigned key = 0x41;
    std::string expected;
    for (unsigned i = 0; i < 5; ++i) {
      if (combination & (1u << i)) {
        key |= modifiers[i].bit;
        expected += modifiers[i].text;
      }
    }
    EXPECT_EQ(Text(key), expected) << std::hex << key;
    EXPECT_EQ(Text(key | 0x80000000 | 0x20000000 | 0x01000000), expected) << std::hex << key;
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

}  // namespace
