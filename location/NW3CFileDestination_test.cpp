#include "location/NW3CFileDestination.h"

#include <gtest/gtest.h>

#include "location/NLogEvent.h"
#include "location/NReportMessageParams.h"
#include "platform/NForwardingPlatform.h"
#include "platform/testing/NTestFolder.h"

namespace {

// 2026-11-21 05:06:07 UTC and one day later, as Windows file times.
constexpr std::uint64_t kUnixEpochAsFileTime = 116444736000000000ull;
constexpr std::uint64_t kSecond = 10000000ull;
constexpr std::uint64_t kEventTime = kUnixEpochAsFileTime + 1795237567ull * kSecond;
constexpr std::uint64_t kNextDay = kEventTime + 86400ull * kSecond;

// The header of a file begun 3 seconds after the event.
constexpr std::string_view kHeader =
    "#Version: 1.0\r\n#Date: 2026-11-21 05:06:10\r\n"
    "#Fields: date time x-source x-topic x-session c-ip c-port cs-username cs-method uri-stem sc-status cs-bytes "
    "sc-bytes bytes s-ip s-port x-message\r\n";

class FixedClockPlatform final : public NForwardingPlatform {
 public:
  FixedClockPlatform() : NForwardingPlatform(NPlatform::Default()) {}
  std::uint64_t CurrentFileTime() override { return kEventTime + 3 * kSecond; }
};

class W3CTest : public NTestFolderTest {
 protected:
  NUnicodeString Folder() const { return NUnicodeString::FromUtf8(m_folder.string()); }

  // The whole file that the event begins.
  std::string FileFor(NLogEvent& event) {
    NW3CFileDestination destination(u"Parrow", Folder(), {}, m_platform);
    NReportMessageParams params;
    EXPECT_TRUE(destination.WriteEvent(event, params)) << params.GetText().ToUtf8();
    return ReadText("20261121.log");
  }

  FixedClockPlatform m_platform;
};

TEST_F(W3CTest, TheHeaderInUtcAndTheFullLineLayout) {
  NReportMessageParams message(0x61380023);
  message.AddArgument(u"Skeldon");
  NLogEvent event;
  event.SetTime(kEventTime);
  event.SetSession(12);
  event.SetTopic(2);
  event.SetClient({NUnicodeString(u"10.0.0.1"), 50022});
  event.SetServer({NUnicodeString(u"192.0.2.7"), 22});
  event.SetUserName(u"alice");
  event.SetMethod(u"GET");
  event.SetUriStem(u"/home/alice");
  event.SetStatus(226);
  event.SetBytes(5, 7);
  event.SetMessage(&message);
  EXPECT_EQ(FileFor(event), std::string(kHeader) +
                                "2026-11-21 05:06:07 Parrow Informational 12 10.0.0.1 50022 alice GET /home/alice 226 "
                                "5 7 12 192.0.2.7 22 \"The change to the Personal Data Folder will take effect the "
                                "next time you start Skeldon.%0D%0A\"\n");
}

TEST_F(W3CTest, DashAndEmptyCases) {
  NLogEvent event;  // time 0, session 0, topic 0, no message, no addresses
  event.SetTopic(7);
  event.SetBytes(0xFFFFFFFFFFFFFFFFull, 1);
  // Time 0: date and time stay empty; session 0 and the overflowing total
  // are "-"; an unknown topic is "Unknown".
  EXPECT_EQ(FileFor(event), std::string(kHeader) + "  Parrow Unknown - - 0    0 18446744073709551615 1 - - 0 \"\"\n");
}

TEST(NW3CFileDestinationTest, MessageEscapingOrder) {
  EXPECT_EQ(NUnicodeString(NW3CFileDestination::EscapeMessage(u"a%b\"c\n")).ToUtf8(), "a%25b%22c%0A");
  EXPECT_EQ(NUnicodeString(NW3CFileDestination::EscapeMessage(u"%22")).ToUtf8(), "%2522");
  EXPECT_EQ(NUnicodeString(NW3CFileDestination::EscapeMessage(u"\x7f\x01\u00e9\u4e2d~ ")).ToUtf8(), "%7F%01%E9%4E2D~ ");
}

TEST_F(W3CTest, ANewFileEachDayAndAppendsWithinADay) {
  NW3CFileDestination destination(u"Parrow", Folder(), NUnicodeString(u"ftp-"), m_platform);
  NReportMessageParams params;
  NLogEvent event;
  event.SetTime(kEventTime);
  ASSERT_TRUE(destination.WriteEvent(event, params));
  ASSERT_TRUE(destination.WriteEvent(event, params));
  event.SetTime(kNextDay);
  ASSERT_TRUE(destination.WriteEvent(event, params));
  // Events with nothing but their time.
  const std::string rest = " Parrow Severe - - 0    0 0 0 0 - 0 \"\"\n";
  const std::string first = "2026-11-21 05:06:07" + rest;
  EXPECT_EQ(ReadText("ftp-20261121.log"), std::string(kHeader) + first + first);
  EXPECT_EQ(ReadText("ftp-20261122.log"), std::string(kHeader) + "2026-11-22 05:06:07" + rest);
  // A new destination on an existing file appends without a second header.
  NW3CFileDestination again(u"Parrow", Folder(), NUnicodeString(u"ftp-"), m_platform);
  event.SetTime(kEventTime);
  ASSERT_TRUE(again.WriteEvent(event, params));
  EXPECT_EQ(ReadText("ftp-20261121.log"), std::string(kHeader) + first + first + first);
}

TEST_F(W3CTest, FailureNamesTheFile) {
  WriteText("blocker", "x");
  NW3CFileDestination destination(u"Parrow", NUnicodeString(Path("blocker")), {}, m_platform);
  NReportMessageParams params;
  NLogEvent event;
  EXPECT_FALSE(destination.WriteEvent(event, params));
  EXPECT_NE(params.GetText().ToUtf8().find("blocker"), std::string::npos) << params.GetText().ToUtf8();
}

TEST(NReportMessageDestinationTest, StandardTopicsAndLookups) {
  NW3CFileDestination destination(u"Skeldon", NUnicodeString(u"/nonexistent"));
  EXPECT_EQ(destination.GetTopicName(0).ToUtf8(), "Severe");
  EXPECT_EQ(destination.GetTopicName(2).ToUtf8(), "Informational");
  EXPECT_EQ(destination.GetTopicName(1).ToUtf8(), "Unknown");
  EXPECT_FALSE(destination.AddTopic(2, u"Other"));
  EXPECT_EQ(destination.GetTopicName(2).ToUtf8(), "Informational");
  EXPECT_TRUE(destination.AddTopic(7, u"Transfers"));
  EXPECT_TRUE(destination.HasTopic(7));
  EXPECT_EQ(destination.GetTopicName(7).ToUtf8(), "Transfers");
  ASSERT_EQ(destination.GetTopics().Count(), 3u);
  EXPECT_THROW(destination.GetTopics()[3], OutOfRange);
}

}  // namespace
