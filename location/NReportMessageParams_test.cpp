#include "location/NReportMessageParams.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "location/NMessageFormatter.h"
#include "location/NMessageModule.h"
#include "location/NReportMessageRouter.h"
#include "platform/NPlatform.h"

namespace {

// A module with a fixed table, standing in for another module that reports
// through the library.
class FakeModule final : public NMessageModule {
 public:
  bool FindTemplate(std::uint32_t code, std::u16string* text) const override {
    const auto it = table.find(code);
    if (it == table.end()) return false;
    *text = it->second;
    return true;
  }
  std::map<std::uint32_t, std::u16string> table;
};

std::string TextOf(const NReportMessageParams& params) { return params.GetText().ToUtf8(); }

// The system's own text of a Win32 code without insertions. Its words are
// the system's: POSIX's built-in table holds English Windows' texts, while
// Windows answers in its own language and Wine in its own wording ("Access
// denied." for 5).
std::string SystemText(std::uint32_t code) {
  std::u16string text;
  EXPECT_TRUE(NPlatform::Default().LookupSystemMessage(code, &text)) << code;
  return NUnicodeString(text).ToUtf8();
}

TEST(NReportMessageParamsTest, SystemCodesResolveThroughTheSystemTables) {
  EXPECT_EQ(TextOf(NReportMessageParams(5)), SystemText(5));
  // NTSTATUS texts come from the second table, expanded as any other: their
  // printf-style sequences are no insertions.
  const std::string ntstatus = TextOf(NReportMessageParams(0xC0000005));
  std::u16string table;
  if (NPlatform::Default().LookupNtStatusMessage(0xC0000005, &table)) {
    std::u16string expanded;
    NMessageFormatter::Format(table, {}, &expanded);
    EXPECT_EQ(ntstatus, NUnicodeString(expanded).ToUtf8());
  } else {
    // Wine's NTDLL carries no message table; Windows' always does.
    EXPECT_EQ(ntstatus, "Could not retrieve the error text for error code 0xc0000005.\r\n");
  }
}

TEST(NReportMessageParamsTest, UnknownCodeGivesTheFallbackWithEightLowercaseDigits) {
  NReportMessageParams params(0xE138ABCD);
  EXPECT_EQ(TextOf(params), "Could not retrieve the error text for error code 0xe138abcd.\r\n");
  EXPECT_EQ(params.GetTextLength(), params.GetText().size());
  EXPECT_EQ(TextOf(NReportMessageParams(0x00000ABC)),
            "Could not retrieve the error text for error code 0x00000abc.\r\n");
}

TEST(NReportMessageParamsTest, ResolutionOrder) {
  FakeModule module;
  module.table = {{0x61380023, u"source's own %1\r\n"},
                  {5, u"source's text for five\r\n"},
                  {0x00004321, u"source knows %1\r\n"},
                  {0xE138F0F0, u"only the source\r\n"}};
  const std::pair<std::uint32_t, std::string> cases[] = {
      {5, SystemText(5)},                    // system tables first for system codes
      {0x00004321, "source knows arg\r\n"},  // then the source module
      {0x61380023, "source's own arg\r\n"},  // a customer code skips the system, source before library
      {0xE138F0F0, "only the source\r\n"},
      {0x61380022, "The change to the Configuration Folder will take effect the next time you start arg.\r\n"},
  };
  for (const auto& [code, expected] : cases) {
    NReportMessageParams params(code);
    params.SetSource(&module);
    params.AddArgument(u"arg");
    EXPECT_EQ(TextOf(params), expected) << std::hex << code;
  }
}

TEST(NReportMessageParamsTest, NumericArgumentsBecomeTextWhenAdded) {
  NReportMessageParams params(0xE138F0F1);
  params.AddUnsigned(4294967295u);
  params.AddSigned(-5);
  params.AddUnsigned64(18446744073709551615ull);
  params.AddSigned64(-9223372036854775807LL - 1);
  ASSERT_EQ(params.GetArguments().Count(), 4u);
  EXPECT_EQ(params.GetArguments()[0].ToUtf8(), "4294967295");
  EXPECT_EQ(params.GetArguments()[1].ToUtf8(), "-5");
  EXPECT_EQ(params.GetArguments()[2].ToUtf8(), "18446744073709551615");
  EXPECT_EQ(params.GetArguments()[3].ToUtf8(), "-9223372036854775808");
  EXPECT_THROW(params.GetArguments()[4], OutOfRange);
}

TEST(NReportMessageParamsTest, TextIsCachedUntilTheInputsChange) {
  NReportMessageParams params(0x61380023);
  params.AddArgument(u"A");
  const NUnicodeString* first = &params.GetText();
  EXPECT_EQ(TextOf(params), "The change to the Personal Data Folder will take effect the next time you start A.\r\n");
  EXPECT_EQ(first, &params.GetText());
  params.SetCode(0x61380022);
  EXPECT_EQ(TextOf(params), "The change to the Configuration Folder will take effect the next time you start A.\r\n");
  params.Clear();
  EXPECT_EQ(params.GetCode(), 0u);
  EXPECT_TRUE(params.GetArguments().IsEmpty());
  EXPECT_EQ(TextOf(params), SystemText(0));
}

TEST(NReportMessageParamsTest, CopiesCarryEverythingAndCrossThreads) {
  NReportMessageParams original(0x61380023);
  original.AddArgument(u"Parrow");
  const NReportMessageParams copy = original;
  std::string seen;
  std::thread worker([copy, &seen] { seen = copy.GetText().ToUtf8(); });
  worker.join();
  EXPECT_EQ(seen, TextOf(original));
  EXPECT_EQ(copy.GetCode(), original.GetCode());
}

TEST(NReportMessageParamsTest, QueryInterfaceGivesTheCarrierInterface) {
  auto* params = new NReportMessageParams(5);
  void* object = nullptr;
  ASSERT_TRUE(params->QueryInterface(IReportMessageParams::kIID, &object));
  auto* carrier = static_cast<IReportMessageParams*>(object);
  EXPECT_EQ(carrier->GetCode(), 5u);
  EXPECT_EQ(carrier->Release(), 1u);
  const NInterfaceId unknown = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_FALSE(params->QueryInterface(unknown, &object));
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(params->Release(), 0u);  // deletes it; ASan would flag a leak or a double free
}

class RecordingRouter final : public NReportMessageRouter {
 public:
  void RouteMessage(const NReportMessageParams& params) override { messages.push_back(params.GetText().ToUtf8()); }
  void Trace(std::u16string_view line) override { traces.push_back(NUnicodeString(line).ToUtf8()); }
  std::vector<std::string> messages;
  std::vector<std::string> traces;
};
RecordingRouter g_router;
NReportMessageRouter* GetRecordingRouter() { return &g_router; }

TEST(NReportMessageRouterTest, NothingIsRoutedBeforeAGetterIsInstalled) {
  NSetReportMessageRouterGetter(nullptr);
  NTrace(u"dropped\n");
  NRouteMessage(NReportMessageParams(5));
  EXPECT_TRUE(g_router.traces.empty());
  EXPECT_TRUE(g_router.messages.empty());

  NSetReportMessageRouterGetter(&GetRecordingRouter);
  NTrace(u"kept\n");
  NRouteMessage(NReportMessageParams(5));
  NSetReportMessageRouterGetter(nullptr);
  EXPECT_EQ(g_router.traces, std::vector<std::string>{"kept\n"});
  EXPECT_EQ(g_router.messages, std::vector<std::string>{SystemText(5)});
}

}  // namespace
