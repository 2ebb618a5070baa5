#include "config/NProfile.h"

#include <gtest/gtest.h>

#include "config/NConfigTestFolder.h"

namespace {

class NSampleRecord final : public NProfileRecord {
 public:
  NProfileBool m_flag{this, u"Flag", true};
  NProfileInt m_count{this, u"Count", 7};
  NProfileShort m_small{this, u"Small", -2};
  NProfileTriState m_choice{this, u"Choice", NTriState::kDefault};
  NProfileString m_text{this, u"Text", NUnicodeString(u"default")};
  NProfileEncrypted m_secret{this, u"Secret"};
  NProfileStrings m_list{this, u"List"};
  NProfileStruct<NRect> m_rect{this, u"Rect", NRect{1, 2, 3, 4}};
  NProfileTime m_when{this, u"When"};
};

TEST(NProfileRecordTest, ModifiedWhileCurrentDiffersFromLoadedAndRevertResetAndCopy) {
  NSampleRecord record;
  EXPECT_FALSE(record.IsModified());
  record.m_count = 9;
  EXPECT_TRUE(record.m_count.IsModified());
  record.m_count = 7;
  EXPECT_FALSE(record.m_count.IsModified()) << "back to the loaded value is not a change";
  record.m_text = NUnicodeString(u"changed");
  record.Revert();
  EXPECT_EQ(record.m_text.Get(), u"default");
  EXPECT_FALSE(record.IsModified());
  // Reset takes the default as both current and loaded.
  record.m_count.Load(3);
  record.m_count = 4;
  record.Reset();
  EXPECT_EQ(record.m_count.Get(), 7);
  EXPECT_FALSE(record.IsModified());
  // A copy takes the other field's current value, not its loaded one.
  NSampleRecord other;
  other.m_count = 42;
  record.m_count.CopyFrom(other.m_count);
  EXPECT_EQ(record.m_count.Get(), 42);
  EXPECT_TRUE(record.m_count.IsModified());
  EXPECT_EQ(record.m_count.Loaded(), 7);
}

class NProfileTest : public testing::Test {
 protected:
  NConfigTestFolder m_folder;
};

TEST_F(NProfileTest, MissingOrUnreadableValuesLeaveTheDefault) {
  auto key = m_folder.Key("Sample");
  ASSERT_TRUE(key);
  ASSERT_TRUE(key->SetStringValue(u"Count", u"not a number"));  // another kind
  ASSERT_TRUE(key->SetBinaryValue(u"Rect", "abc", 3));           // the wrong length
  ASSERT_TRUE(key->SetStringValue(u"When", u"12x"));             // not a time
  NSampleRecord record;
  EXPECT_EQ(record.ReadFields(*key), 0u);
  EXPECT_EQ(record.m_count.Get(), 7);
  EXPECT_EQ(record.m_rect.Get(), (NRect{1, 2, 3, 4}));
  EXPECT_EQ(record.m_when.Get().ticks, 0u);
  EXPECT_FALSE(record.IsModified());
  // Values already set stay as they are, still modified.
  ASSERT_TRUE(key->SetDwordValue(u"Text", 1));
  NSampleRecord changed;
  changed.m_count = 9;
  changed.m_text = NUnicodeString(u"a text longer than a short string");
  changed.m_when = NFileTime{5};
  EXPECT_EQ(changed.ReadFields(*key), 0u);
  EXPECT_EQ(changed.m_count.Get(), 9);
  EXPECT_EQ(changed.m_text.Get(), u"a text longer than a short string");
  EXPECT_EQ(changed.m_when.Get().ticks, 5u);
  EXPECT_TRUE(changed.m_text.IsModified());
  EXPECT_EQ(changed.m_text.Loaded(), u"default");
}

TEST_F(NProfileTest, OnlyChangedOrTouchedValuesAreWrittenUnlessAllAreAskedFor) {
  {
    auto key = m_folder.Key("Sample");
    NSampleRecord record;
    record.m_count = 8;
    ASSERT_TRUE(record.WriteFields(*key, false));
    ASSERT_TRUE(key->Flush());
    EXPECT_FALSE(record.IsModified()) << "a written value becomes the loaded one";
  }
  EXPECT_EQ(m_folder.Dword("Sample", u"Count"), 8u);
  EXPECT_EQ(m_folder.String("Sample", u"Text"), u"(absent)") << "unchanged fields stay unwritten without the flag";
  auto key = m_folder.Key("Sample");
  NUnicodeString text;
  NSampleRecord touched;
  touched.m_text.Touch();
  EXPECT_TRUE(touched.IsModified());
  ASSERT_TRUE(touched.WriteFields(*key, false));
  EXPECT_TRUE(key->GetStringValue(u"Text", &text)) << "a touched field is written though equal to its loaded value";
  EXPECT_FALSE(touched.IsModified());
  ASSERT_TRUE(key->DeleteValue(u"Text"));
  NSampleRecord all;
  ASSERT_TRUE(all.WriteFields(*key, true));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(m_folder.String("Sample", u"Text"), u"default");
  EXPECT_EQ(m_folder.Dword("Sample", u"Choice"), std::nullopt) << "the third state writes nothing";
}

TEST_F(NProfileTest, EveryKindRoundTripsThroughAFolder) {
  {
    auto key = m_folder.Key("Sample");
    NSampleRecord record;
    record.m_flag = false;
    record.m_count = -5;
    record.m_small = static_cast<std::int16_t>(-300);
    record.m_choice = NTriState::kTrue;
    record.m_text = NUnicodeString(u"h\u00e9llo");
    record.m_secret = NEncryptedString::FromStored(NUnicodeString(u"02:abcdef=="));
    record.m_list = NStringArray{u"one", u""};
    record.m_rect = NRect{-1, 0, 640, 480};
    record.m_when = NFileTime{133000000000000000ull};
    ASSERT_TRUE(record.WriteFields(*key, false));
    ASSERT_TRUE(key->Flush());
  }
  auto key = m_folder.Key("Sample");
  NSampleRecord loaded;
  EXPECT_EQ(loaded.ReadFields(*key), 9u);
  EXPECT_FALSE(loaded.m_flag.Get());
  EXPECT_EQ(loaded.m_count.Get(), -5);
  EXPECT_EQ(loaded.m_small.Get(), -300);
  EXPECT_EQ(loaded.m_choice.Get(), NTriState::kTrue);
  EXPECT_EQ(loaded.m_text.Get(), u"h\u00e9llo");
  EXPECT_EQ(loaded.m_secret.Get().Stored(), u"02:abcdef==") << "carried through as stored";
  EXPECT_EQ(loaded.m_list.Get(), (NStringArray{u"one", u""}));
  EXPECT_EQ(loaded.m_rect.Get(), (NRect{-1, 0, 640, 480}));
  EXPECT_EQ(loaded.m_when.Get().ticks, 133000000000000000ull);
  EXPECT_FALSE(loaded.IsModified());
}

TEST_F(NProfileTest, EscapedStringsCarryLineBreaksThroughAKeyFile) {
  NProfileRecord record;
  NProfileEscapedString command(&record, u"Command");
  command = NUnicodeString(u"rz\r\nC:\\x\\");
  auto key = m_folder.Key("Sample");
  ASSERT_TRUE(record.WriteFields(*key, false));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(m_folder.String("Sample", u"Command"), u"rz\\r\\nC:\\\\x\\\\");
  NProfileRecord loaded;
  NProfileEscapedString back(&loaded, u"Command");
  ASSERT_TRUE(loaded.ReadFields(*m_folder.Key("Sample")));
  EXPECT_EQ(back.Get(), command.Get());
}

}  // namespace
