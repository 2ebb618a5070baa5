#include "store/NIniFileKey.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "location/NReportMessageParams.h"
#include "location/NReportMessageRouter.h"
#include "platform/NPlatform.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"

#include <thread>

namespace {

namespace fs = std::filesystem;
constexpr std::string_view kBom = "\xEF\xBB\xBF";

class TraceRecorder final : public NReportMessageRouter {
 public:
  void RouteMessage(const NReportMessageParams&) override {}
  void Trace(std::u16string_view line) override { lines.push_back(NUnicodeString(line).ToUtf8()); }
  std::vector<std::string> lines;
};
TraceRecorder* g_recorder = nullptr;
NReportMessageRouter* Recorder() { return g_recorder; }

class NIniFileKeyTest : public testing::Test {
 protected:
  void SetUp() override {
    m_root = fs::path(testing::TempDir()) /
             ("cfgdeck_key_" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(m_root);
    fs::remove_all(m_root.string() + ".personal");
    fs::create_directories(m_root);
    g_recorder = &m_traces;
    NSetReportMessageRouterGetter(&Recorder);
  }
  void TearDown() override {
    NSetReportMessageRouterGetter(nullptr);
    fs::remove_all(m_root);
    fs::remove_all(m_root.string() + ".personal");
  }

  NIniFileStore& Store(bool withPrivate = false) {
    if (!m_store) {
      NIniFileStoreOptions options;
      options.syncOnSave = false;
      m_store = std::make_unique<NIniFileStore>(
          NUnicodeString::FromUtf8(m_root.string()),
          withPrivate ? NUnicodeString::FromUtf8(m_root.string() + ".personal") : NUnicodeString(),
          NPlatform::Default(), options);
    }
    return *m_store;
  }

  std::unique_ptr<NIniFileKey> Open(const std::string& path, bool readOnly = false) {
    NKeyPath keyPath;
    if (!path.empty()) {
      EXPECT_TRUE(keyPath.Append(NUnicodeString::FromUtf8(path)));
    }
    NReportMessageParams params;
    auto key = NIniFileKey::Open(Store(), keyPath, readOnly, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    return key;
  }

  void Write(const std::string& relative, std::string_view bytes) { NWriteFileBytes(m_root / relative, bytes); }

  std::string ReadPath(const fs::path& path) { return NReadFileBytes(path); }
  std::string Read(const std::string& relative) { return ReadPath(m_root / relative); }

  static std::uint32_t Dword(const NProfileKey& key, std::u16string_view name) {
    std::uint32_t value = 0xDEADBEEF;
    key.GetDwordValue(name, &value);
    return value;
  }

  fs::path m_root;
  std::unique_ptr<NIniFileStore> m_store;
  TraceRecorder m_traces;
};

TEST_F(NIniFileKeyTest, SaveWritesPersonalNamesFirstInTheirFixedOrder) {
  auto key = Open("Sessions\\a");
  ASSERT_TRUE(key->SetStringValue(u"Password", u"p"));
  ASSERT_TRUE(key->SetStringValue(u"Other", u"o"));
  ASSERT_TRUE(key->SetStringValue(u"Username", u"u"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("Sessions/a.ini"),
            std::string(kBom) + "S:\"Username\"=u\r\nS:\"Password\"=p\r\nS:\"Other\"=o\r\n");
}

TEST_F(NIniFileKeyTest, RecordsAreWrittenByTheirTemplates) {
  auto key = Open("k");
  std::string bytes(33, '\0');
  for (int i = 0; i < 33; ++i) bytes[static_cast<size_t>(i)] = static_cast<char>(i * 7);
  ASSERT_TRUE(key->SetBinaryValue(u"Blob", bytes.data(), 33));
  ASSERT_TRUE(key->SetBinaryValue(u"Empty Blob", nullptr, 0));
  ASSERT_TRUE(key->SetMultiStringValue(u"None", NStringArray()));
  ASSERT_TRUE(key->SetMultiStringValue(u"Lines", NStringArray{NUnicodeString(u" lead"), NUnicodeString(u"")}));
  ASSERT_TRUE(key->SetDwordValue(u"Big", 0xABCDEF01));
  ASSERT_TRUE(key->SetStringValue(u"Spaced = name: x", u"  both  "));
  ASSERT_TRUE(key->SetStringValue(u"Nothing", u""));
  ASSERT_TRUE(key->SetStringValue(u"Unicode", u"K\u00f6nig \u65e5\u672c"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("k.ini"), std::string(kBom) +
                               "B:\"Blob\"=00000021\r\n"
                               "00070e151c232a31383f464d545b626970777e858c939aa1a8afb6bdc4cbd2d9\r\n"
                               "e0\r\n"
                               "B:\"Empty Blob\"=00000000\r\n"
                               "Z:\"None\"=00000000\r\n"
                               "Z:\"Lines\"=00000002\r\n  lead\r\n \r\n"
                               "D:\"Big\"=abcdef01\r\n"
                               "S:\"Spaced = name: x\"=  both  \r\n"
                               "S:\"Nothing\"=\r\n"
                               "S:\"Unicode\"=K\xC3\xB6nig \xE6\x97\xA5\xE6\x9C\xAC\r\n");
  // And everything reads back as it was set.
  auto again = Open("k");
  std::uint32_t length = 0;
  ASSERT_TRUE(again->GetBinaryValue(u"Blob", nullptr, &length));
  EXPECT_EQ(length, 33u);
  std::string read(33, '\0');
  ASSERT_TRUE(again->GetBinaryValue(u"Blob", read.data(), &length));
  EXPECT_EQ(read, bytes);
  NStringArray lines;
  ASSERT_TRUE(again->GetMultiStringValue(u"Lines", &lines));
  EXPECT_EQ(lines, (NStringArray{NUnicodeString(u" lead"), NUnicodeString(u"")}));
  NUnicodeString text;
  ASSERT_TRUE(again->GetStringValue(u"Unicode", &text));
  EXPECT_EQ(text, u"K\u00f6nig \u65e5\u672c");
  EXPECT_EQ(Dword(*again, u"Big"), 0xABCDEF01u);
}

TEST_F(NIniFileKeyTest, LoadKeepsTheLastOfDuplicatesAndStopsAtTheFirstInvalidRecord) {
  Write("k.ini", std::string(kBom) + "D:\"a\"=00000001\r\nD:\"b\"=00000002\r\nD:\"a\"=00000003\r\nD:\"\"=00000009\r\n"
                                     "d:\"c\"=00000004\r\nD:\"e\"=00000005\r\n");
  auto key = Open("k");
  EXPECT_EQ(Dword(*key, u"a"), 3u);
  EXPECT_EQ(Dword(*key, u"b"), 2u);
  EXPECT_EQ(Dword(*key, u"c"), 0xDEADBEEFu);
  EXPECT_EQ(Dword(*key, u"e"), 0xDEADBEEFu);
  EXPECT_EQ(key->Values().ValueCount(), 2u);  // the empty name is discarded
  EXPECT_EQ(key->LoadReport().invalidLine, 5u);
  EXPECT_EQ(key->LoadReport().problem, "kind letter 'd' is not a kind");
}

TEST_F(NIniFileKeyTest, DuplicatesFarApartKeepTheFirstPlaceAndTheLastValue) {
  // Enough records that a name and its repeat are read in different
  // batches; a personal name repeated goes to its fixed place.
  std::string text(kBom);
  auto dword = [&text](int i, std::string_view value) {
    text.append("D:\"n").append(std::to_string(i)).append("\"=").append(value).append("\r\n");
  };
  for (int i = 0; i < 700; ++i) dword(i, i % 16 == 0 ? "00000000" : "00000001");
  text += "S:\"Username\"=first\r\n";
  for (int i = 0; i < 700; i += 7) dword(i, "0000abcd");
  text += "S:\"Username\"=last\r\n";
  Write("k.ini", text);
  auto key = Open("k");
  ASSERT_EQ(key->LoadReport().invalidLine, 0u) << key->LoadReport().problem;
  EXPECT_EQ(key->Values().ValueCount(), 701u);
  auto name = [](int i) { return std::string(1, 'n').append(std::to_string(i)); };
  for (int i = 0; i < 700; ++i) {
    const std::uint32_t expected = i % 7 == 0 ? 0xabcdu : (i % 16 == 0 ? 0u : 1u);
    ASSERT_EQ(Dword(*key, NUnicodeString::FromUtf8(name(i))), expected) << i;
  }
  NUnicodeString user;
  ASSERT_TRUE(key->GetStringValue(u"Username", &user));
  EXPECT_EQ(user, u"last");
  std::vector<std::string> order;
  key->Values().ForEach([&](const NIniFileKeyMap::Element& e) { order.emplace_back(e.Name()); });
  ASSERT_EQ(order.size(), 701u);
  EXPECT_EQ(order.front(), "Username");
  for (int i = 0; i < 700; ++i) ASSERT_EQ(order[static_cast<std::size_t>(i) + 1], name(i));
}

TEST_F(NIniFileKeyTest, GettersMatchNameExactlyAndKindStrictly) {
  auto key = Open("k");
  ASSERT_TRUE(key->SetStringValue(u"Username", u"alice"));
  ASSERT_TRUE(key->SetDwordValue(u"Port", 22));
  NUnicodeString text(u"untouched");
  std::uint32_t number = 7;
  NStringArray strings{NUnicodeString(u"untouched")};
  std::uint32_t length = 99;
  EXPECT_FALSE(key->GetStringValue(u"username", &text));
  EXPECT_FALSE(key->GetStringValue(u"Port", &text));
  EXPECT_FALSE(key->GetDwordValue(u"Username", &number));
  EXPECT_FALSE(key->GetMultiStringValue(u"Username", &strings));
  EXPECT_FALSE(key->GetBinaryValue(u"Port", nullptr, &length));
  EXPECT_EQ(text, u"untouched");
  EXPECT_EQ(number, 7u);
  EXPECT_EQ(strings.size(), 1u);
  EXPECT_EQ(length, 99u);
  // A setter replaces a value of another kind.
  ASSERT_TRUE(key->SetStringValue(u"Port", u"22"));
  EXPECT_FALSE(key->GetDwordValue(u"Port", &number));
  EXPECT_TRUE(key->GetStringValue(u"Port", &text));
}

TEST_F(NIniFileKeyTest, NamesAreFoundWhateverTheirLengthScriptOrReadingOrder) {
  // Names of every length up to past the longest compared a block at a
  // time, then two whose UTF-16 units equal the UTF-8 bytes of each other:
  // "\u00e9" is C3 A9 in the file, and "\u00c3\u00a9" must not take its value.
  std::string file = "\xEF\xBB\xBF";
  std::vector<std::u16string> names;
  for (int length = 1; length <= 70; ++length) {
    std::string name;
    for (int i = 0; i < length; ++i) name.push_back(static_cast<char>('a' + (length + i) % 26));
    file += "D:\"" + name + "\"=" + std::string(8 - std::to_string(length).size(), '0') + std::to_string(length) + "\r\n";
    names.push_back(NUnicodeString::FromUtf8(name));
  }
  file += "D:\"\xC3\xA9\"=000000e9\r\nD:\"\xC3\x83\xC2\xA9\"=000000c3\r\n";
  Write("names.ini", file);
  auto key = Open("names");
  std::uint32_t value = 0;
  auto expect = [&](std::u16string_view name, std::uint32_t expected) {
    value = 0;
    EXPECT_TRUE(key->GetDwordValue(name, &value)) << NUnicodeString(name).ToUtf8();
    EXPECT_EQ(value, expected) << NUnicodeString(name).ToUtf8();
  };
  for (std::size_t i = 0; i < names.size(); ++i) expect(names[i], static_cast<std::uint32_t>(std::stoul(std::to_string(i + 1), nullptr, 16)));
  for (std::size_t i = names.size(); i-- > 0;) expect(names[i], static_cast<std::uint32_t>(std::stoul(std::to_string(i + 1), nullptr, 16)));
  expect(names.back(), 0x70);
  expect(u"\u00c3\u00a9", 0xc3);  // the element tried first holds "\u00e9"
  expect(u"\u00e9", 0xe9);
  expect(u"\u00c3\u00a9", 0xc3);
  EXPECT_FALSE(key->GetDwordValue(std::u16string(names[20]).substr(1), &value));
  EXPECT_FALSE(key->GetDwordValue(names[20] + u"\u0100", &value));
}

TEST_F(NIniFileKeyTest, BinaryGetterFollowsTheTwoCallPattern) {
  auto key = Open("k");
  ASSERT_TRUE(key->SetBinaryValue(u"b", "abcd", 4));
  char buffer[8] = {};
  std::uint32_t length = 3;
  EXPECT_FALSE(key->GetBinaryValue(u"b", buffer, &length));
  EXPECT_EQ(buffer[0], 0);
  length = 8;
  EXPECT_TRUE(key->GetBinaryValue(u"b", buffer, &length));
  EXPECT_EQ(length, 4u);
  EXPECT_EQ(std::string(buffer, 4), "abcd");
}

TEST_F(NIniFileKeyTest, SettersRefuseWhatARecordCannotHold) {
  auto key = Open("k");
  EXPECT_FALSE(key->SetStringValue(u"s", u"two\nlines"));
  EXPECT_FALSE(key->SetStringValue(u"s", u"cr\r"));
  EXPECT_FALSE(key->SetMultiStringValue(u"m", NStringArray{NUnicodeString(u"a\r\nb")}));
  EXPECT_FALSE(key->SetDwordValue(u"quo\"te", 1));
  EXPECT_FALSE(key->SetDwordValue(u"line\nbreak", 1));
  EXPECT_FALSE(key->SetDwordValue(u"", 1));
  EXPECT_FALSE(key->IsModified());
  EXPECT_EQ(key->Values().ValueCount(), 0u);
}

TEST_F(NIniFileKeyTest, ReadOnlyKeyChangesInMemoryButRefusesFlush) {
  Write("k.ini", std::string(kBom) + "D:\"a\"=00000001\r\n");
  auto key = Open("k", true);
  EXPECT_FALSE(key->IsWritable());
  ASSERT_TRUE(key->SetDwordValue(u"a", 2));
  EXPECT_EQ(Dword(*key, u"a"), 2u);
  NReportMessageParams params;
  EXPECT_FALSE(key->Flush(params));
  EXPECT_NE(params.GetText().ToUtf8().find("read-only"), std::string::npos) << params.GetText().ToUtf8();
  EXPECT_EQ(Read("k.ini"), std::string(kBom) + "D:\"a\"=00000001\r\n");
  auto child = key->OpenSubKey(u"child");
  ASSERT_TRUE(child);
  EXPECT_FALSE(child->IsWritable());
}

TEST_F(NIniFileKeyTest, UnmodifiedKeyFlushesWithoutTouchingTheDisk) {
  auto key = Open("missing\\deep");
  EXPECT_TRUE(key->Flush());
  EXPECT_FALSE(fs::exists(m_root / "missing"));
  ASSERT_TRUE(key->SetDwordValue(u"x", 1));
  ASSERT_TRUE(key->Flush());
  EXPECT_TRUE(fs::is_regular_file(m_root / "missing" / "deep.ini"));
}

TEST_F(NIniFileKeyTest, DeletedValueKeepsItsPlaceWhenSetAgain) {
  auto key = Open("k");
  ASSERT_TRUE(key->SetDwordValue(u"a", 1));
  ASSERT_TRUE(key->SetDwordValue(u"b", 2));
  ASSERT_TRUE(key->DeleteValue(u"a"));
  EXPECT_FALSE(key->DeleteValue(u"a"));
  ASSERT_TRUE(key->SetDwordValue(u"a", 3));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("k.ini"), std::string(kBom) + "D:\"a\"=00000003\r\nD:\"b\"=00000002\r\n");
}

TEST_F(NIniFileKeyTest, ReloadDiscardsUnsavedChanges) {
  Write("k.ini", std::string(kBom) + "D:\"a\"=00000001\r\n");
  auto key = Open("k");
  ASSERT_TRUE(key->SetDwordValue(u"a", 5));
  ASSERT_TRUE(key->Reload());
  EXPECT_EQ(Dword(*key, u"a"), 1u);
  EXPECT_FALSE(key->IsModified());
}

TEST_F(NIniFileKeyTest, ChangesOfTwoWritersToOneKeyBothSurvive) {
  Write("k.ini", std::string(kBom) + "D:\"shared\"=00000001\r\nD:\"gone\"=00000001\r\n");
  auto first = Open("k");
  auto second = Open("k");
  ASSERT_TRUE(first->SetDwordValue(u"mine", 1));
  ASSERT_TRUE(first->DeleteValue(u"gone"));
  ASSERT_TRUE(first->Flush());
  ASSERT_TRUE(second->SetDwordValue(u"yours", 2));
  ASSERT_TRUE(second->SetDwordValue(u"shared", 3));
  ASSERT_TRUE(second->Flush());
  EXPECT_EQ(Read("k.ini"), std::string(kBom) + "D:\"shared\"=00000003\r\nD:\"mine\"=00000001\r\nD:\"yours\"=00000002\r\n");
  // The second writer now sees the first one's values, and a further save
  // keeps them.
  EXPECT_EQ(Dword(*second, u"mine"), 1u);
  ASSERT_TRUE(second->SetDwordValue(u"yours", 4));
  ASSERT_TRUE(second->Flush());
  EXPECT_NE(Read("k.ini").find("D:\"mine\"=00000001"), std::string::npos);
}

TEST_F(NIniFileKeyTest, PrivateRootReceivesThePersonalValues) {
  Store(true);
  const fs::path personal = m_root.string() + ".personal";
  auto key = Open("Sessions\\s");
  ASSERT_TRUE(key->SetStringValue(u"Hostname", u"h"));
  ASSERT_TRUE(key->SetStringValue(u"Password V2", u"secret"));
  ASSERT_TRUE(key->SetStringValue(u"Username", u"u"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("Sessions/s.ini"), std::string(kBom) + "S:\"Hostname\"=h\r\n");
  EXPECT_EQ(ReadPath(personal / "Sessions" / "s.ini"),
            std::string(kBom) + "S:\"Username\"=u\r\nS:\"Password V2\"=secret\r\n");

  auto again = Open("Sessions\\s");
  NUnicodeString text;
  ASSERT_TRUE(again->GetStringValue(u"Password V2", &text));
  EXPECT_EQ(text, u"secret");
  // Deleting the last personal values empties the private file, so that
  // they do not come back.
  ASSERT_TRUE(again->DeleteValue(u"Password V2"));
  ASSERT_TRUE(again->DeleteValue(u"Username"));
  ASSERT_TRUE(again->Flush());
  EXPECT_EQ(ReadPath(personal / "Sessions" / "s.ini"), std::string(kBom));
  EXPECT_FALSE(Open("Sessions\\s")->GetStringValue(u"Username", &text));
}

TEST_F(NIniFileKeyTest, InterruptedSavesAreReportedButLoadedAsWritten) {
  Write("empty.ini", "");
  Write("cut.ini", std::string(kBom) + "D:\"a\"=00000001\r\nS:\"b\"=par");
  auto empty = Open("empty");
  EXPECT_TRUE(empty->LoadReport().emptyFile);
  EXPECT_EQ(empty->Values().ValueCount(), 0u);
  auto cut = Open("cut");
  EXPECT_TRUE(cut->LoadReport().unterminated);
  NUnicodeString text;
  ASSERT_TRUE(cut->GetStringValue(u"b", &text));
  EXPECT_EQ(text, u"par");
  ASSERT_EQ(m_traces.lines.size(), 2u);
  EXPECT_NE(m_traces.lines[0].find("possibly interrupted save"), std::string::npos);
  EXPECT_NE(m_traces.lines[1].find("cut.ini"), std::string::npos);
}

TEST_F(NIniFileKeyTest, SubKeyIteratorKindsAndOrder) {
  Write("top/both.ini", "");
  Write("top/both/x.ini", "");
  Write("top/File.ini", "");
  Write("top/__FolderData__.ini", "");
  Write("top/a.ini.txt", "");
  Write("top/.ini", "");
  Write("top/ab.INI", "");
  fs::create_directories(m_root / "top" / "Folder");
  fs::create_directories(m_root / "top" / "a");
  auto key = Open("top");
  auto iterator = key->CreateIterator(false);
  std::vector<std::pair<std::string, std::uint32_t>> seen;
  NUnicodeString name;
  std::uint32_t kind;
  while (iterator->Next(&name, &kind)) seen.emplace_back(name.ToUtf8(), kind);
  const std::vector<std::pair<std::string, std::uint32_t>> expected = {
      {"__FolderData__", 6}, {"a", 5}, {"ab", 6}, {"both", 7}, {"File", 6}, {"Folder", 5}};
  EXPECT_EQ(seen, expected);
}

TEST_F(NIniFileKeyTest, IteratorOfAMissingFolderLogsAndIsEmpty) {
  auto key = Open("nothing");
  auto iterator = key->CreateIterator(false);
  NUnicodeString name;
  EXPECT_FALSE(iterator->NextName(&name));
  ASSERT_EQ(m_traces.lines.size(), 1u);
  EXPECT_EQ(m_traces.lines[0].rfind("NIniFileKey::Iterator failed to open path ", 0), 0u);
}

TEST_F(NIniFileKeyTest, ValueIteratorOrdersByNameAndSkipsValuesDeletedMeanwhile) {
  auto key = Open("k");
  ASSERT_TRUE(key->SetDwordValue(u"beta", 1));
  ASSERT_TRUE(key->SetStringValue(u"Alpha", u"x"));
  ASSERT_TRUE(key->SetBinaryValue(u"al", "x", 1));
  ASSERT_TRUE(key->SetMultiStringValue(u"Gamma", NStringArray()));
  auto iterator = key->CreateIterator(true);
  ASSERT_TRUE(key->DeleteValue(u"beta"));
  std::vector<std::pair<std::string, std::uint32_t>> seen;
  NUnicodeString name;
  std::uint32_t kind;
  while (iterator->Next(&name, &kind)) seen.emplace_back(name.ToUtf8(), kind);
  const std::vector<std::pair<std::string, std::uint32_t>> expected = {{"al", 2}, {"Alpha", 1}, {"Gamma", 3}};
  EXPECT_EQ(seen, expected);
}

TEST(NIniFileKeyIteratorTest, OrderComparesWithoutCaseAndPutsPrefixesFirst) {
  // Sorted as the iterator must sort: names that differ only in case are
  // equal; a name that is a prefix of another comes first; non-ASCII names
  // compare by their folded UTF-16 units.
  // The characters either side of 'A'-'Z' and 'a'-'z' are not folded.
  const std::vector<std::u16string> sorted = {
      u"",          u"\x01",       u"__FolderData__", u"a",          u"A b",          u"a@",
      u"a[",        u"a`",         u"ab",             u"Abcdefgh",   u"abcdefghi",    u"abcdefgI1",
      u"abcdefgi@", u"abcdefgi[",  u"abcdefgi`",      u"abcdefgiZ",  u"abcdefgiZZZZZZZZ@",         u"abcdefgizzzzzzzz[",
      u"abcdefgi{", u"b",          u"Z",              u"\u00e9t\u00e9", u"\u00c9t\u00e9s",             u"\u65e5"};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = 0; j < sorted.size(); ++j) {
      const std::string a = NUnicodeString(sorted[i]).ToUtf8();
      const std::string b = NUnicodeString(sorted[j]).ToUtf8();
      const int expected = i < j ? -1 : (i > j ? 1 : 0);
      EXPECT_EQ(NIniFileKey::Iterator::Compare(sorted[i], sorted[j]) < 0, expected < 0) << a << " vs " << b;
      EXPECT_EQ(NIniFileKey::Iterator::CompareUtf8(a, b) < 0, expected < 0) << a << " vs " << b;
    }
  }
  EXPECT_EQ(NIniFileKey::Iterator::CompareUtf8("Show Toolbar", "show toolbar"), 0);
}

TEST_F(NIniFileKeyTest, ValueIteratorSortsLongSharedPrefixesAndMixedCase) {
  auto key = Open("k");
  const std::vector<std::string> names = {"Color Scheme V2", "color scheme", "Color Scheme Name", "COLOR", "Colour",
                                          "Col\xC3\xA9", "Co", "Color Scheme V1", "a\x01b", "a"};
  for (const std::string& name : names) ASSERT_TRUE(key->SetDwordValue(NUnicodeString::FromUtf8(name), 1));
  auto iterator = key->CreateIterator(true);
  std::vector<std::string> seen;
  NUnicodeString name;
  while (iterator->NextName(&name)) seen.push_back(name.ToUtf8());
  // "color scheme" and "Color Scheme ..." differ beyond the shorter name, so
  // both stay; the order is the iterator's own rule.
  const std::vector<std::string> expected = {"a",           "a\x01b",        "Co",
                                             "COLOR",       "color scheme",    "Color Scheme Name",
                                             "Color Scheme V1", "Color Scheme V2", "Colour",
                                             "Col\xC3\xA9"};
  EXPECT_EQ(seen, expected);
}

TEST_F(NIniFileKeyTest, DeleteSubKeyRemovesEverythingButNeverFollowsALink) {
  Write("Sessions/Lab.ini", "");
  Write("Sessions/Lab/a.ini", "x");
  Write("Sessions/Lab/inner/b.ini", "x");
  const fs::path outside = m_root.string() + "-outside";
  fs::create_directories(outside);
  std::ofstream(outside / "precious.ini") << "keep";
  if (!NMakeSymbolicLink(outside, m_root / "Sessions" / "Lab" / "link", true)) {
    fs::remove_all(outside);
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  auto sessions = Open("Sessions");
  EXPECT_TRUE(sessions->SubKeyExists(u"Lab"));
  NReportMessageParams params;
  ASSERT_TRUE(sessions->DeleteSubKey(u"Lab", params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(fs::exists(m_root / "Sessions" / "Lab"));
  EXPECT_FALSE(fs::exists(m_root / "Sessions" / "Lab.ini"));
  EXPECT_FALSE(sessions->SubKeyExists(u"Lab"));
  EXPECT_EQ(ReadPath(outside / "precious.ini"), "keep");
  fs::remove_all(outside);
}

TEST_F(NIniFileKeyTest, NamesThatWouldLeaveTheRootAreRefused) {
  auto root = Open("");
  using namespace std::string_view_literals;
  for (const std::u16string_view name : {u".."sv, u"."sv, u""sv, u"a\\..\\.."sv, u"/etc/passwd"sv, u"C:\\Windows"sv,
                                         u"\\\\server\\share"sv, u"trailing."sv, u"trailing "sv, u"nul\0byte"sv,
                                         u"tab\there"sv, u"a/b"sv}) {
    NReportMessageParams params;
    EXPECT_FALSE(root->OpenSubKey(name, params)) << NUnicodeString(name).ToUtf8();
    EXPECT_FALSE(root->SubKeyExists(name));
    EXPECT_FALSE(root->DeleteSubKey(name, params));
  }
  EXPECT_TRUE(root->OpenSubKey(u"Sessions\\Lab\\router1"));
  EXPECT_TRUE(root->OpenSubKey(u"caf\u00e9 .x"));
}

TEST_F(NIniFileKeyTest, KeyFileThatIsALinkIsNotFollowed) {
  const fs::path outside = m_root.string() + "-target.ini";
  std::ofstream(outside, std::ios::binary) << std::string(kBom) << "S:\"secret\"=x\r\n";
  if (!NMakeSymbolicLink(outside, m_root / "link.ini", false)) {
    fs::remove(outside);
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  NKeyPath path;
  ASSERT_TRUE(path.Append(u"link"));
  NReportMessageParams params;
  EXPECT_FALSE(NIniFileKey::Open(Store(), path, false, params));
  EXPECT_NE(params.GetText().ToUtf8().find("link.ini"), std::string::npos) << params.GetText().ToUtf8();
  fs::remove(outside);
}

TEST_F(NIniFileKeyTest, RootKeyHoldsNoValues) {
  auto root = Open("");
  EXPECT_TRUE(root->GetPath().empty());
  ASSERT_TRUE(root->SetDwordValue(u"x", 1));
  NReportMessageParams params;
  EXPECT_FALSE(root->Flush(params));
  EXPECT_TRUE(fs::is_empty(m_root));
}

TEST_F(NIniFileKeyTest, ALongWaitForALockIsLoggedAndTheWaitGoesOn) {
  Write("k.ini", std::string(kBom) + "D:\"a\"=00000001\r\n");
  NIniFileStoreOptions options;
  options.lockWarning = std::chrono::milliseconds(20);
  NIniFileStore store(NUnicodeString::FromUtf8(m_root.string()), NUnicodeString(), NPlatform::Default(), options);
  std::unique_ptr<NFile> holder;
  NOpenOptions open;
  open.access = NFileAccess::kReadWrite;
  ASSERT_TRUE(NPlatform::Default().OpenFile(NUnicodeString::FromUtf8((m_root / "k.ini").string()), open, &holder));
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive));
  std::thread release([&holder] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    (void)holder->Unlock(0, 4);
  });
  NKeyPath path;
  ASSERT_TRUE(path.Append(u"k"));
  NReportMessageParams params;
  auto key = NIniFileKey::Open(store, path, true, params);
  release.join();
  ASSERT_TRUE(key);
  EXPECT_EQ(Dword(*key, u"a"), 1u);
  ASSERT_EQ(m_traces.lines.size(), 1u);
  EXPECT_NE(m_traces.lines[0].find("still waiting for the lock on"), std::string::npos);
  EXPECT_NE(m_traces.lines[0].find("k.ini"), std::string::npos);
}

NIniFileStoreFactory* g_factory = nullptr;
NProfileStoreFactory* TestFactory() { return g_factory; }

TEST_F(NIniFileKeyTest, StoresComeFromTheRegisteredFactory) {
  CfgdeckInitProfileFactory(nullptr);
  EXPECT_EQ(NCreateProfileStore(), nullptr);
  Write("global.ini", std::string(kBom) + "D:\"Show Toolbar\"=00000001\r\n");
  NIniFileStoreFactory factory(NUnicodeString::FromUtf8(m_root.string()), NUnicodeString());
  g_factory = &factory;
  CfgdeckInitProfileFactory(&TestFactory);
  auto store = NCreateProfileStore();
  CfgdeckInitProfileFactory(nullptr);
  ASSERT_TRUE(store);
  NReportMessageParams params;
  auto root = store->OpenRootKey(false, params);
  ASSERT_TRUE(root);
  auto global = root->OpenSubKey(u"global");
  ASSERT_TRUE(global);
  EXPECT_EQ(Dword(*global, u"Show Toolbar"), 1u);
}

}  // namespace
