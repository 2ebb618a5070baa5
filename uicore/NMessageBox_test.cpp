#include "uicore/NMessageBox.h"

#include <gtest/gtest.h>

#include "uicore/NHeadlessDialogBackend.h"
#include "uicore/testing/NTestField.h"

#include <string>
#include <vector>

namespace {

struct Host {
  int answer = 0;
  std::vector<NShownMessageBox> asked;
};

int Answer(void* context, const char16_t* text, const char16_t* caption, unsigned style) {
  auto& host = *static_cast<Host*>(context);
  host.asked.push_back({0, NUnicodeString(text), NUnicodeString(caption), style, 0});
  return host.answer;
}

class NMessageBoxTest : public testing::Test {
 protected:
  void SetUp() override { NClearShownMessageBoxes(); }
  void TearDown() override {
    NSetMessageBoxHandler(nullptr, nullptr);
    NClearShownMessageBoxes();
  }
};

TEST_F(NMessageBoxTest, WithoutAHostTheDefaultButtonAnswersAndTheMessageIsKept) {
  EXPECT_EQ(NMessageBox(nullptr, u"Saved.", u"Skeldon", kMessageBoxOk | kMessageBoxIconInformation), kMessageBoxIdOk);
  EXPECT_EQ(NMessageBox(nullptr, u"Go on?", u"Skeldon", kMessageBoxOkCancel), kMessageBoxIdOk);
  EXPECT_EQ(NMessageBox(nullptr, u"Delete?", u"Parrow", kMessageBoxYesNo | kMessageBoxIconQuestion), kMessageBoxIdYes);
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 3u);
  EXPECT_EQ(shown[0].text, u"Saved.");
  EXPECT_EQ(shown[0].caption, u"Skeldon");
  EXPECT_EQ(shown[0].style, kMessageBoxOk | kMessageBoxIconInformation);
  EXPECT_EQ(shown[2].caption, u"Parrow");
  EXPECT_EQ(shown[2].style & kMessageBoxIconMask, kMessageBoxIconQuestion);
  EXPECT_EQ(shown[2].result, kMessageBoxIdYes);
}

TEST_F(NMessageBoxTest, TheHostSeesTheMessageAndItsAnswerCountsWhenTheStyleHasThatButton) {
  const struct {
    std::u16string_view text;
    int answer;
    unsigned style;
    int expected;
  } rows[] = {
      {u"Delete 'Lab'?", kMessageBoxIdNo, kMessageBoxYesNo, kMessageBoxIdNo},
      {u"Go on?", kMessageBoxIdCancel, kMessageBoxOkCancel, kMessageBoxIdCancel},
      // Buttons the box does not have: its default button.
      {u"Done.", kMessageBoxIdCancel, kMessageBoxOk, kMessageBoxIdOk},
      {u"Delete?", kMessageBoxIdOk, kMessageBoxYesNo, kMessageBoxIdYes},
  };
  Host host;
  NSetMessageBoxHandler(&Answer, &host);
  for (const auto& row : rows) {
    host.answer = row.answer;
    EXPECT_EQ(NMessageBox(nullptr, row.text, u"Skeldon", row.style), row.expected) << NUnicodeString(row.text).ToUtf8();
  }
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(host.asked.size(), 4u);
  ASSERT_EQ(shown.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(host.asked[i].text, rows[i].text);
    EXPECT_EQ(host.asked[i].caption, u"Skeldon");
    EXPECT_EQ(host.asked[i].style, rows[i].style);
    EXPECT_EQ(shown[i].result, rows[i].expected);
  }
  NSetMessageBoxHandler(nullptr, nullptr);
  EXPECT_EQ(NMessageBox(nullptr, u"Go on?", u"Skeldon", kMessageBoxOkCancel), kMessageBoxIdOk);
  EXPECT_EQ(host.asked.size(), 4u);
}

TEST_F(NMessageBoxTest, OnlyTheLatestMessagesAreKept) {
  const std::size_t count = kShownMessageBoxLimit + 5;
  for (std::size_t i = 0; i < count; ++i) {
    (void)NMessageBox(nullptr, u"message " + NUnicodeString::FromUtf8(std::to_string(i)), u"Skeldon", kMessageBoxOk);
  }
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), kShownMessageBoxLimit);
  EXPECT_EQ(shown.front().text, u"message 5");
  EXPECT_EQ(shown.back().text, u"message " + NUnicodeString::FromUtf8(std::to_string(count - 1)));
}

TEST_F(NMessageBoxTest, AnOptionalBoxSetsItsFieldOnlyWhenTicked) {
  NHeadlessDialogBackend backend;
  NScopedDialogBackend installed(backend);
  NTestField<std::int32_t> suppress;
  EXPECT_EQ(ShowOptionalMessageBox(nullptr, u"Locked.", u"", kMessageBoxOk, suppress), kMessageBoxIdOk);
  EXPECT_EQ(suppress.sets, 0) << "an unticked box set its field";
  backend.SetTickOptional(true);
  ShowOptionalMessageBox(nullptr, u"Locked.", u"", kMessageBoxOk, suppress);
  EXPECT_EQ(suppress.value, 1);
  EXPECT_EQ(NShownMessageBoxes().size(), 2u) << "optional boxes are kept with the others";
}

}  // namespace
