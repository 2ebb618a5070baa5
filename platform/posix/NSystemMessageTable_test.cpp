#include "platform/posix/NSystemMessageTable.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "platform/NStatus.h"

namespace {

using Lookup = bool (*)(std::uint32_t, std::u16string_view*);

struct Table {
  const char* name;
  std::span<const NSystemMessageEntry> entries;
  Lookup find;
};

std::vector<Table> Tables() {
  return {{"Win32", NWin32MessageEntries(), &NFindWin32Message},
          {"NTSTATUS", NNtStatusMessageEntries(), &NFindNtStatusMessage}};
}

// Windows' tables end every text in one CRLF, break lines only with CRLF and
// end each sentence with a period; a slip in typing a text shows up here.
TEST(NSystemMessageTableTest, EntriesAreSortedUniqueFoundAndShapedLikeWindowsTexts) {
  for (const Table& table : Tables()) {
    ASSERT_FALSE(table.entries.empty()) << table.name;
    for (std::size_t i = 0; i < table.entries.size(); ++i) {
      const NSystemMessageEntry& entry = table.entries[i];
      const std::u16string_view text = entry.text;
      SCOPED_TRACE(std::string(table.name) + " " + std::to_string(entry.code));
      if (i > 0) {
        EXPECT_LT(table.entries[i - 1].code, entry.code);
      }
      std::u16string_view found;
      ASSERT_TRUE(table.find(entry.code, &found));
      EXPECT_EQ(found, text);
      ASSERT_GE(text.size(), 4u);
      EXPECT_TRUE(text.ends_with(u".\r\n"));
      EXPECT_FALSE(text.substr(0, text.size() - 2).ends_with(u"\r\n"));
      for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t ch = text[at];
        const bool crlf = (ch == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n') ||
                          (ch == u'\n' && at > 0 && text[at - 1] == u'\r');
        EXPECT_TRUE(crlf || (ch >= u' ' && ch < 0x7F)) << "at " << at;
      }
      EXPECT_NE(text[0], u' ');
      EXPECT_EQ(text.find(u"  "), std::u16string_view::npos);
    }
  }
}

TEST(NSystemMessageTableTest, ExactTexts) {
  const struct {
    Lookup find;
    std::uint32_t code;
    std::u16string_view text;
  } rows[] = {
      {&NFindWin32Message, 0, u"The operation completed successfully.\r\n"},
      {&NFindWin32Message, 2, u"The system cannot find the file specified.\r\n"},
      {&NFindWin32Message, 5, u"Access is denied.\r\n"},
      {&NFindWin32Message, 32, u"The process cannot access the file because it is being used by another process.\r\n"},
      {&NFindNtStatusMessage, 0xC0000005,
       u"The instruction at 0x%p referenced memory at 0x%p. The memory could not be %s.\r\n"},
      {&NFindNtStatusMessage, 0xC0000022,
       u"{Access Denied}\r\nA process has requested access to an object, but has not been granted those access "
       u"rights.\r\n"},
      {&NFindNtStatusMessage, 0xC000003A, u"{Path Not Found}\r\nThe path %hs does not exist.\r\n"},
  };
  for (const auto& row : rows) {
    std::u16string_view text;
    ASSERT_TRUE(row.find(row.code, &text)) << std::hex << row.code;
    EXPECT_EQ(std::u16string(text), row.text) << std::hex << row.code;
  }
}

// The codes the platform layer reports by name must all read as text.
TEST(NSystemMessageTableTest, NamedStatusCodesHaveTexts) {
  for (const std::uint32_t code :
       {NStatus::kFileNotFound, NStatus::kPathNotFound, NStatus::kAccessDenied, NStatus::kInvalidHandle,
        NStatus::kNotEnoughMemory, NStatus::kSharingViolation, NStatus::kLockViolation, NStatus::kFileExists,
        NStatus::kInvalidParameter, NStatus::kDiskFull, NStatus::kDirNotEmpty, NStatus::kAlreadyExists,
        NStatus::kFilenameTooLong, NStatus::kWaitTimeout, NStatus::kDirectory, NStatus::kCantResolveFilename}) {
    std::u16string_view text;
    EXPECT_TRUE(NFindWin32Message(code, &text)) << code;
  }
}

// Includes codes between, before and after entries, and each table's codes
// looked up in the other, which must not fall through to a neighbour.
TEST(NSystemMessageTableTest, UnknownCodesFailAndLeaveTextAlone) {
  const struct {
    Lookup find;
    std::uint32_t code;
  } rows[] = {
      {&NFindWin32Message, 7}, {&NFindWin32Message, 1922}, {&NFindWin32Message, 0xFFFFFFFF},
      {&NFindWin32Message, 0xC0000005}, {&NFindNtStatusMessage, 0}, {&NFindNtStatusMessage, 2},
      {&NFindNtStatusMessage, 0xC0000006}, {&NFindNtStatusMessage, 0xFFFFFFFF},
  };
  const std::u16string_view sentinel = u"untouched";
  for (const auto& row : rows) {
    std::u16string_view text = sentinel;
    EXPECT_FALSE(row.find(row.code, &text)) << std::hex << row.code;
    EXPECT_EQ(text.data(), sentinel.data()) << std::hex << row.code;
    EXPECT_EQ(text.size(), sentinel.size()) << std::hex << row.code;
  }
}

}  // namespace
