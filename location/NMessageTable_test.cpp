#include "location/NMessageTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>

namespace {

constexpr std::uint32_t kCustomerBit = 0x20000000u;
constexpr std::uint32_t kReservedBit = 0x10000000u;
constexpr std::uint32_t kFacility = 0x138u;

std::string Hex(std::uint32_t code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "0x%08x", code);
  return buffer;
}

std::string Narrow(std::u16string_view text) {
  std::string result;
  for (char16_t c : text) {
    result += c < 0x80 ? static_cast<char>(c) : '?';
  }
  return result;
}

}  // namespace

TEST(NMessageTableTest, CodesAscendWithoutDuplicates) {
  const auto entries = NMessageTable::Entries();
  ASSERT_FALSE(entries.empty());
  for (std::size_t i = 1; i < entries.size(); ++i) {
    EXPECT_LT(entries[i - 1].code, entries[i].code) << "at " << Hex(entries[i].code);
  }
}

TEST(NMessageTableTest, EveryCodeIsALibraryCodeWithAUniqueNumber) {
  std::set<std::uint32_t> numbers;
  for (const NMessageTableEntry& entry : NMessageTable::Entries()) {
    SCOPED_TRACE(Hex(entry.code));
    EXPECT_NE(entry.code & kCustomerBit, 0u);
    EXPECT_EQ(entry.code & kReservedBit, 0u);
    EXPECT_EQ((entry.code >> 16) & 0xFFFu, kFacility);
    // Informational, warning or error: the prefixes 0x6138, 0xA138, 0xE138.
    EXPECT_NE(entry.code >> 30, 0u) << "success severity";
    EXPECT_TRUE(numbers.insert(entry.code & 0xFFFFu).second) << "number reused across severities";
  }
}

TEST(NMessageTableTest, EveryTextIsCrLfTerminatedLines) {
  for (const NMessageTableEntry& entry : NMessageTable::Entries()) {
    SCOPED_TRACE(Hex(entry.code));
    ASSERT_GT(entry.text.size(), 2u);
    EXPECT_TRUE(entry.text.ends_with(u"\r\n"));
    // A .mc with the wrong line ends shows up as lone LFs or doubled CRs.
    for (std::size_t i = 0; i < entry.text.size(); ++i) {
      if (entry.text[i] == u'\n') {
        EXPECT_TRUE(i > 0 && entry.text[i - 1] == u'\r') << "lone LF at " << i;
      }
      if (entry.text[i] == u'\r') {
        EXPECT_TRUE(i + 1 < entry.text.size() && entry.text[i + 1] == u'\n') << "lone CR at " << i;
      }
    }
  }
}

TEST(NMessageTableTest, QuotedTextsAreStoredExactly) {
  const struct {
    std::uint32_t code;
    std::u16string_view text;
  } cases[] = {
      {0x61380022u, u"The change to the Configuration Folder will take effect the next time you start %1.\r\n"},
      {0x61380023u, u"The change to the Personal Data Folder will take effect the next time you start %1.\r\n"},
      {0xe1380009u, u"The folder specified using /F on the command line is not valid:\r\n\r\n'%1'\r\n"},
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
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(c.code));
    std::u16string_view text;
    ASSERT_TRUE(NMessageTable::Find(c.code, &text));
    EXPECT_TRUE(text == c.text) << Narrow(text);
  }
}

TEST(NMessageTableTest, LongTextsKeepTheirQuotedBeginning) {
  const struct {
    std::uint32_t code;
    std::u16string_view prefix;
  } cases[] = {
      // The blank before the first CR LF is part of the text.
      {0x61380017u, u"The configuration was migrated from: \r\n'%1'\r\nto\r\n'%2'.\r\n"},
      {0xe1380025u,
       u"The personal data folder could not be merged with the configuration folder\r\nbecause the configuration data "
       u"does not match the personal data.\r\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(c.code));
    std::u16string_view text;
    ASSERT_TRUE(NMessageTable::Find(c.code, &text));
    EXPECT_TRUE(text.starts_with(c.prefix)) << Narrow(text);
    EXPECT_GT(text.size(), c.prefix.size());
  }
}

TEST(NMessageTableTest, FindReturnsEachEntrysOwnText) {
  for (const NMessageTableEntry& entry : NMessageTable::Entries()) {
    std::u16string_view text;
    ASSERT_TRUE(NMessageTable::Find(entry.code, &text)) << Hex(entry.code);
    EXPECT_EQ(text.data(), entry.text.data()) << Hex(entry.code);
  }
}

TEST(NMessageTableTest, FindMatchesTheFullCodeAndLeavesTheTextAloneOnFailure) {
  const auto entries = NMessageTable::Entries();
  ASSERT_FALSE(entries.empty());
  const std::uint32_t misses[] = {
      0x00000000u,
      0xFFFFFFFFu,
      entries.front().code - 1,
      entries.back().code + 1,
      0x61380000u,  // no message 0
      // Same number as 0x61380022, other severity or no customer bit.
      0xe1380022u,
      0xa1380022u,
      0x41380022u,
      0x21380022u,
      // Same number as 0xe1380009, informational.
      0x61380009u,
      // Another facility.
      0x61390022u,
  };
  const std::u16string_view sentinel = u"untouched";
  for (std::uint32_t code : misses) {
    std::u16string_view text = sentinel;
    EXPECT_FALSE(NMessageTable::Find(code, &text)) << Hex(code);
    EXPECT_EQ(text.data(), sentinel.data()) << Hex(code);
    EXPECT_EQ(text.size(), sentinel.size()) << Hex(code);
  }
  std::u16string_view text;
  EXPECT_TRUE(NMessageTable::Find(0x61380022u, &text));
  EXPECT_TRUE(NMessageTable::Find(0xe1380009u, &text));
}
