#include "location/NMessageTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>

#include "base/NUnicodeString.h"

namespace {

std::string Hex(std::uint32_t code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "0x%08x", code);
  return buffer;
}

TEST(NMessageTableTest, EveryEntryIsALibraryCodeInOrderWithCrLfTerminatedLinesThatFindReturns) {
  const auto entries = NMessageTable::Entries();
  ASSERT_FALSE(entries.empty());
  std::set<std::uint32_t> numbers;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const NMessageTableEntry& entry = entries[i];
    SCOPED_TRACE(Hex(entry.code));
    if (i > 0) {
      EXPECT_LT(entries[i - 1].code, entry.code);
    }
    EXPECT_NE(entry.code & 0x20000000u, 0u) << "no customer bit";
    EXPECT_EQ(entry.code & 0x10000000u, 0u) << "reserved bit";
    EXPECT_EQ((entry.code >> 16) & 0xFFFu, 0x138u) << "facility";
    // Informational, warning or error: the prefixes 0x6138, 0xA138, 0xE138.
    EXPECT_NE(entry.code >> 30, 0u) << "success severity";
    EXPECT_TRUE(numbers.insert(entry.code & 0xFFFFu).second) << "number reused across severities";

    ASSERT_GT(entry.text.size(), 2u);
    EXPECT_TRUE(entry.text.ends_with(u"\r\n"));
    // A .mc with the wrong line ends shows up as lone LFs or doubled CRs.
    for (std::size_t at = 0; at < entry.text.size(); ++at) {
      if (entry.text[at] == u'\n') {
        EXPECT_TRUE(at > 0 && entry.text[at - 1] == u'\r') << "lone LF at " << at;
      }
      if (entry.text[at] == u'\r') {
        EXPECT_TRUE(at + 1 < entry.text.size() && entry.text[at + 1] == u'\n') << "lone CR at " << at;
      }
    }
    std::u16string_view text;
    ASSERT_TRUE(NMessageTable::Find(entry.code, &text));
    EXPECT_EQ(text.data(), entry.text.data());
  }
}

// The texts of 0x61380017, 0x61380022, 0x61380023, 0xe1380009 and 0xe1380025
// are checked exactly, formatted, where they are reported.
TEST(NMessageTableTest, QuotedTextsAreStoredExactly) {
  const std::pair<std::uint32_t, std::u16string_view> cases[] = {
      {0xa1380002u,
       u"Scripting has been administratively disabled.\r\nThe Run Script function is no longer available.\r\n"},
      {0x61380084u, u"The name contains an illegal character: ' %1 '\r\n"},
      // Two blanks after the full stop.
      {0x61380028u,
       u"You requested that the personal data in your configuration folder be moved into a separate location.  This "
       u"process may take several minutes.\r\n"},
      {0xe1380004u,
       u"Please enter an integer between %1 and %2.\r\n\r\nThe maximum number of columns can be set up to %3 on the "
       u"Appearance page in the Global Options dialog.\r\n"},
      {0xe1380005u, u"Please specify an auto session or select an option other than \"Use auto session\".\r\n"},
  };
  for (const auto& [code, expected] : cases) {
    std::u16string_view text;
    ASSERT_TRUE(NMessageTable::Find(code, &text)) << Hex(code);
    EXPECT_TRUE(text == expected) << Hex(code) << ": " << NUnicodeString(text).ToUtf8();
  }
}

TEST(NMessageTableTest, FindMatchesTheFullCodeAndLeavesTheTextAloneOnFailure) {
  const auto entries = NMessageTable::Entries();
  ASSERT_FALSE(entries.empty());
  const std::uint32_t misses[] = {
      0x00000000u, 0xFFFFFFFFu, entries.front().code - 1, entries.back().code + 1,
      0x61380000u,  // no message 0
      // Same number as 0x61380022, other severity or no customer bit.
      0xe1380022u, 0xa1380022u, 0x41380022u, 0x21380022u,
      0x61380009u,  // same number as 0xe1380009, informational
      0x61390022u,  // another facility
  };
  const std::u16string_view sentinel = u"untouched";
  for (std::uint32_t code : misses) {
    std::u16string_view text = sentinel;
    EXPECT_FALSE(NMessageTable::Find(code, &text)) << Hex(code);
    EXPECT_EQ(text.data(), sentinel.data()) << Hex(code);
    EXPECT_EQ(text.size(), sentinel.size()) << Hex(code);
  }
}

}  // namespace
