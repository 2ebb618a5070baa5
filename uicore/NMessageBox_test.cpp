#include "uicore/NMessageBox.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Asked {
  std::u16string text;
  std::u16string caption;
  unsigned style = 0;
};

struct Host {
  int answer = 0;
  std::vector<Asked> asked;
};

int Answer(void* context, const char16_t* text, const char16_t* caption, unsigned style) {
  auto& host = *static_cast<Host*>(context);
  host.asked.push_back({text, caption, style});
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
  Host host;
  NSetMessageBoxHandler(&Answer, &host);

  host.answer = kMessageBoxIdNo;
  EXPECT_EQ(NMessageBox(nullptr, u"Delete 'Lab'?", u"Skeldon", kMessageBoxYesNo), kMessageBoxIdNo);
  host.answer = kMessageBoxIdCancel;
  EXPECT_EQ(NMessageBox(nullptr, u"Go on?", u"Skeldon", kMessageBoxOkCancel), kMessageBoxIdCancel);
  // Buttons the box does not have: its default button.
  host.answer = kMessageBoxIdCancel;
  EXPECT_EQ(NMessageBox(nullptr, u"Done.", u"Skeldon", kMessageBoxOk), kMessageBoxIdOk);
  host.answer = kMessageBoxIdOk;
  EXPECT_EQ(NMessageBox(nullptr, u"Delete?", u"Skeldon", kMessageBoxYesNo), kMessageBoxIdYes);

  ASSERT_EQ(host.asked.size(), 4u);
  EXPECT_EQ(host.asked[0].text, u"Delete 'Lab'?");
  EXPECT_EQ(host.asked[0].caption, u"Skeldon");
  EXPECT_EQ(host.asked[0].style, kMessageBoxYesNo);
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 4u);
  EXPECT_EQ(shown[0].result, kMessageBoxIdNo);
  EXPECT_EQ(shown[1].result, kMessageBoxIdCancel);
  EXPECT_EQ(shown[2].result, kMessageBoxIdOk);

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

}  // namespace
