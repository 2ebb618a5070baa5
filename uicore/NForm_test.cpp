#include "uicore/NForm.h"

#include <gtest/gtest.h>

#include "uicore/testing/NTestField.h"

namespace {

class NFormTest : public testing::Test {
 protected:
  NTestField<bool> m_enabled{true, false};
  NTestField<std::int32_t> m_width{80, 80};
  NTestField<NUnicodeString> m_name{u"host", u""};
  NTestField<std::int32_t> m_place{0, 0};
  bool m_locked = false;

  NForm m_form;
  NFormControl& m_enabledBox = m_form.CheckBox(u"Enabled", m_enabled);
  NFormControl& m_widthBox = m_form.Number(u"Width", m_width, 10, 200).EnabledWhenChecked(m_enabledBox);
  NFormControl& m_nameBox = m_form.Text(u"Host name", m_name).LockedWhen([this]() -> std::optional<NUnicodeString> {
    if (m_locked) return NUnicodeString(u"policy");
    return std::nullopt;
  });
  NFormControl& m_placeBox =
      m_form.Choice(u"Place", m_place, {{u"Top", std::int64_t{0}}, {u"Bottom \u00C9dge", std::int64_t{1}}});
};

TEST_F(NFormTest, StoresOnlyChangedControlsAndDiscardLeavesTheRecordAlone) {
  m_form.Load();
  EXPECT_EQ(m_widthBox.Value(), NControlValue(std::int64_t{80}));
  EXPECT_EQ(m_widthBox.SetValue(std::int64_t{120}), NEditResult::kDone);
  EXPECT_EQ(m_nameBox.SetValue(NUnicodeString(u"host")), NEditResult::kUnchanged);
  EXPECT_EQ(m_width.value, 80) << "an edit reached the record before OK";
  EXPECT_TRUE(m_form.IsChanged());

  EXPECT_TRUE(m_form.Store());
  EXPECT_EQ(m_width.value, 120);
  EXPECT_EQ(m_width.sets, 1);
  EXPECT_EQ(m_enabled.sets + m_name.sets + m_place.sets, 0) << "an unchanged control was written";
  EXPECT_FALSE(m_form.IsChanged());

  m_nameBox.SetValue(NUnicodeString(u"other"));
  m_form.Discard();
  EXPECT_EQ(m_nameBox.Value(), NControlValue(NUnicodeString(u"host")));
  EXPECT_TRUE(m_form.Store());
  EXPECT_EQ(m_name.sets, 0);
}

TEST_F(NFormTest, RefusedEditsLeaveTheControlAsItWas) {
  m_form.Load();
  const struct {
    const char* what;
    NFormControl* control;
    NControlValue value;
    NEditResult expected;
  } cases[] = {
      {"below the range", &m_widthBox, std::int64_t{9}, NEditResult::kOutOfRange},
      {"above the range", &m_widthBox, std::int64_t{201}, NEditResult::kOutOfRange},
      {"a text for a number", &m_widthBox, NUnicodeString(u"90"), NEditResult::kWrongKind},
      {"not an item", &m_placeBox, std::int64_t{2}, NEditResult::kNotAChoice},
  };
  for (const auto& c : cases) {
    const NControlValue before = c.control->Value();
    EXPECT_EQ(c.control->SetValue(c.value), c.expected) << c.what;
    EXPECT_EQ(c.control->Value(), before) << c.what;
  }
  EXPECT_EQ(m_form.Button(u"Go", [] {}).SetValue(true), NEditResult::kNoValue);
}

TEST_F(NFormTest, RulesAndGroupsDisableAndDisabledControlsRefuseEdits) {
  NTestField<bool> inGroup;
  NFormControl& group = m_form.Group(u"Advanced").EnabledWhenChecked(m_enabledBox);
  NFormControl& member = m_form.CheckBox(u"Member", inGroup);
  m_form.EndGroup();
  NFormControl& after = m_form.CheckBox(u"After", inGroup);
  m_form.Load();
  EXPECT_EQ(member.Group(), &group);
  EXPECT_EQ(after.Group(), nullptr);

  EXPECT_TRUE(m_widthBox.IsEnabled() && member.IsEnabled());
  m_enabledBox.SetValue(false);
  EXPECT_FALSE(m_widthBox.IsEnabled());
  EXPECT_FALSE(member.IsEnabled()) << "a control in a disabled group stayed enabled";
  EXPECT_TRUE(after.IsEnabled());
  EXPECT_EQ(m_widthBox.SetValue(std::int64_t{100}), NEditResult::kDisabled);
}

TEST_F(NFormTest, PolicyLockedControlsAreNeverWritten) {
  m_form.Load();
  m_locked = true;
  EXPECT_EQ(m_nameBox.LockReason(), NUnicodeString(u"policy"));
  EXPECT_FALSE(m_nameBox.IsEnabled());
  EXPECT_EQ(m_nameBox.SetValue(NUnicodeString(u"x")), NEditResult::kLocked);
  EXPECT_EQ(m_nameBox.ResetToDefault(), NEditResult::kLocked);
  m_form.ResetToDefaults();
  EXPECT_EQ(m_nameBox.Value(), NControlValue(NUnicodeString(u"host")));

  // Edited before the policy took hold: still never written.
  m_locked = false;
  m_nameBox.SetValue(NUnicodeString(u"edited"));
  m_locked = true;
  EXPECT_TRUE(m_form.Store());
  EXPECT_EQ(m_name.sets, 0);
}

TEST_F(NFormTest, DefaultsAreMarkedAndResetPutsThemBackOnOk) {
  m_form.Load();
  EXPECT_TRUE(m_enabledBox.IsModifiedFromDefault());
  EXPECT_FALSE(m_widthBox.IsModifiedFromDefault());
  EXPECT_EQ(m_enabledBox.ResetToDefault(), NEditResult::kDone);
  EXPECT_FALSE(m_enabledBox.IsModifiedFromDefault());
  EXPECT_TRUE(m_enabled.value) << "reset reached the record before OK";

  m_enabledBox.SetValue(true);
  m_widthBox.SetValue(std::int64_t{150});
  m_form.ResetToDefaults();
  m_form.Store();
  EXPECT_FALSE(m_enabled.value);
  EXPECT_EQ(m_width.value, 80) << "a control disabled by the reset kept its edit";
  EXPECT_EQ(m_name.value, u"");
}

TEST_F(NFormTest, LoadKeepsEditsAndShowsTheRecordsNewValuesElsewhere) {
  m_form.Load();
  std::vector<NUnicodeString> changed;
  m_form.SetListener([&](NFormControl& control) { changed.push_back(control.Label()); });
  m_widthBox.SetValue(std::int64_t{100});
  m_width.value = 90;
  m_name.value = u"renamed";
  m_form.Load();
  EXPECT_EQ(m_widthBox.Value(), NControlValue(std::int64_t{100}));
  EXPECT_EQ(m_nameBox.Value(), NControlValue(NUnicodeString(u"renamed")));
  EXPECT_EQ(changed, (std::vector<NUnicodeString>{u"Width", u"Host name"}));
}

TEST_F(NFormTest, SearchMatchesLabelsAndItemsWithoutCaseAndHighlightsThem) {
  EXPECT_TRUE(m_form.Matches(NFoldText(u"HOST")));
  EXPECT_TRUE(m_form.Matches(NFoldText(u"\u00E9dge"))) << "an item label folded";
  EXPECT_FALSE(m_form.Matches(NFoldText(u"colour")));
  m_form.Highlight(NFoldText(u"h"));
  EXPECT_TRUE(m_nameBox.IsHighlighted());
  EXPECT_TRUE(m_widthBox.IsHighlighted());
  EXPECT_FALSE(m_enabledBox.IsHighlighted());
  m_form.Highlight(u"");
  EXPECT_FALSE(m_nameBox.IsHighlighted());
}

TEST_F(NFormTest, ChecksRunOnlyOnEnabledLoadedControls) {
  m_widthBox.Validate([](const NControlValue& v) -> std::optional<NUnicodeString> {
    if (std::get<std::int64_t>(v) % 2) return NUnicodeString(u"odd");
    return std::nullopt;
  });
  NUnicodeString message;
  EXPECT_EQ(m_form.FirstInvalid(&message), nullptr);
  m_form.Load();
  m_widthBox.SetValue(std::int64_t{81});
  EXPECT_EQ(m_form.FirstInvalid(&message), &m_widthBox);
  EXPECT_EQ(message, u"odd");
  m_enabledBox.SetValue(false);
  EXPECT_EQ(m_form.FirstInvalid(&message), nullptr) << "a disabled control was checked";
}

TEST(NControlValueTest, DescribesEachKindOnOneLine) {
  EXPECT_EQ(NDescribeControlValue(true), u"true");
  EXPECT_EQ(NDescribeControlValue(std::int64_t{-12}), u"-12");
  EXPECT_EQ(NDescribeControlValue(NStringArray{u"a", u"b"}), u"a; b");
  EXPECT_EQ(NDescribeControlValue(NControlFont{u"Mono", -12, 700, true}), u"Mono, -12, 700, italic");
}

}  // namespace
