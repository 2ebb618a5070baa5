#include "store/NIniFileKey.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "location/NReportMessageParams.h"
#include "location/NReportMessageRouter.h"
#include "platform/NPlatform.h"
#include "platform/NUnicode.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKeyFixture.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NIniFileStore.h"
#include "store/NIniFileStoreFactory.h"

namespace {

namespace fs = std::filesystem;
using Listing = std::vector<std::pair<std::string, std::uint32_t>>;

class TraceRecorder final : public NReportMessageRouter {
 public:
  void RouteMessage(const NReportMessageParams&) override {}
  void Trace(std::u16string_view line) override { lines.push_back(NUnicodeString(line).ToUtf8()); }
  std::vector<std::string> lines;
};
TraceRecorder* g_recorder = nullptr;
NReportMessageRouter* Recorder() { return g_recorder; }

// Besides the store's roots, a folder outside both for planted links to
// point to; the traces the key writes are kept.
class NIniFileKeyTest : public NIniFileKeyFixture {
 protected:
  void SetUp() override {
    NIniFileKeyFixture::SetUp();
    if (HasFatalFailure()) return;
    m_outside = m_folder / "outside";
    NWriteFileBytes(m_outside / "secret.ini", Bom("S:\"Password\"=outside\r\n"));
    g_recorder = &m_traces;
    NSetReportMessageRouterGetter(&Recorder);
  }
  void TearDown() override {
    NSetReportMessageRouterGetter(nullptr);
    NIniFileKeyFixture::TearDown();
  }

  static Listing ListAll(NProfileKeyIterator& iterator) {
    Listing seen;
    NUnicodeString name;
    std::uint32_t kind = 0;
    while (iterator.Next(&name, &kind)) seen.emplace_back(name.ToUtf8(), kind);
    return seen;
  }
  static Listing ListAll(NProfileKey& key, bool values) { return ListAll(*key.CreateIterator(values)); }

  fs::path m_outside;
  TraceRecorder m_traces;
};

// Personal names go first, in their fixed order, whenever they were set.
TEST_F(NIniFileKeyTest, RecordsAreWrittenByTheirTemplatesAndReadBack) {
  auto key = Open(u"Sessions\\k");
  ASSERT_TRUE(key->SetStringValue(u"Password", u"p"));
  std::string bytes(33, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  ASSERT_TRUE(key->SetBinaryValue(u"Blob", bytes.data(), 33));
  ASSERT_TRUE(key->SetBinaryValue(u"Empty Blob", nullptr, 0));
  ASSERT_TRUE(key->SetMultiStringValue(u"None", NStringArray()));
  const NStringArray lines{NUnicodeString(u" lead"), NUnicodeString(u"")};
  ASSERT_TRUE(key->SetMultiStringValue(u"Lines", lines));
  ASSERT_TRUE(key->SetDwordValue(u"Big", 0xABCDEF01));
  ASSERT_TRUE(key->SetStringValue(u"Spaced = name: x", u"  both  "));
  ASSERT_TRUE(key->SetStringValue(u"Nothing", u""));
  ASSERT_TRUE(key->SetStringValue(u"Unicode", u"K\u00f6nig \u65e5\u672c"));
  ASSERT_TRUE(key->SetStringValue(u"Username", u"u"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("Sessions/k.ini"),
            Bom("S:\"Username\"=u\r\nS:\"Password\"=p\r\n"
                "B:\"Blob\"=00000021\r\n00070e151c232a31383f464d545b626970777e858c939aa1a8afb6bdc4cbd2d9\r\ne0\r\n"
                "B:\"Empty Blob\"=00000000\r\nZ:\"None\"=00000000\r\nZ:\"Lines\"=00000002\r\n  lead\r\n \r\n"
                "D:\"Big\"=abcdef01\r\nS:\"Spaced = name: x\"=  both  \r\nS:\"Nothing\"=\r\n"
                "S:\"Unicode\"=K\xC3\xB6nig \xE6\x97\xA5\xE6\x9C\xAC\r\n"));

  auto again = Open(u"Sessions\\k");
  // A buffer too small takes nothing; a null one asks for the length.
  std::string read(40, 'z');
  std::uint32_t length = 32;
  EXPECT_FALSE(again->GetBinaryValue(u"Blob", read.data(), &length));
  EXPECT_EQ(read, std::string(40, 'z'));
  length = 0;
  ASSERT_TRUE(again->GetBinaryValue(u"Blob", nullptr, &length));
  EXPECT_EQ(length, 33u);
  length = 40;
  ASSERT_TRUE(again->GetBinaryValue(u"Blob", read.data(), &length));
  EXPECT_EQ(length, 33u);
  EXPECT_EQ(read, bytes + "zzzzzzz");
  NStringArray readLines;
  ASSERT_TRUE(again->GetMultiStringValue(u"Lines", &readLines));
  EXPECT_EQ(readLines, lines);
  EXPECT_EQ(String(*again, u"Unicode"), u"K\u00f6nig \u65e5\u672c");
  EXPECT_EQ(Dword(*again, u"Big"), 0xABCDEF01u);
}

TEST_F(NIniFileKeyTest, LoadKeepsTheLastOfDuplicatesAndStopsAtTheFirstInvalidRecord) {
  Write("k.ini", Bom("D:\"a\"=00000001\r\nD:\"b\"=00000002\r\nD:\"a\"=00000003\r\nD:\"\"=00000009\r\n"
                     "d:\"c\"=00000004\r\nD:\"e\"=00000005\r\n"));
  auto key = Open(u"k");
  EXPECT_EQ(Dword(*key, u"a"), 3u);
  EXPECT_EQ(Dword(*key, u"b"), 2u);
  EXPECT_EQ(Dword(*key, u"c"), 0xDEADBEEFu);
  EXPECT_EQ(Dword(*key, u"e"), 0xDEADBEEFu);
  EXPECT_EQ(key->Values().ValueCount(), 2u);  // the empty name is discarded
  EXPECT_EQ(key->LoadReport().invalidLine, 5u);
  EXPECT_EQ(key->LoadReport().problem, "kind letter 'd' is not a kind");
}

TEST_F(NIniFileKeyTest, GettersMatchNameExactlyAndKindStrictly) {
  auto key = Open(u"k");
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
  std::string file;
  std::vector<std::u16string> names;
  for (int length = 1; length <= 70; ++length) {
    std::string name;
    for (int i = 0; i < length; ++i) name.push_back(static_cast<char>('a' + (length + i) % 26));
    const std::string digits = std::to_string(length);
    file += "D:\"" + name + "\"=" + std::string(8 - digits.size(), '0') + digits + "\r\n";
    names.push_back(NUnicodeString::FromUtf8(name));
  }
  Write("names.ini", Bom(file + "D:\"\xC3\xA9\"=000000e9\r\nD:\"\xC3\x83\xC2\xA9\"=000000c3\r\n"));
  auto key = Open(u"names");
  auto expect = [&](std::u16string_view name, std::uint32_t expected) {
    EXPECT_EQ(Dword(*key, name), expected) << NUnicodeString(name).ToUtf8();
  };
  auto written = [](std::size_t i) {
    return static_cast<std::uint32_t>(std::stoul(std::to_string(i + 1), nullptr, 16));
  };
  for (std::size_t i = 0; i < names.size(); ++i) expect(names[i], written(i));
  for (std::size_t i = names.size(); i-- > 0;) expect(names[i], written(i));
  expect(names.back(), 0x70);
  expect(u"\u00c3\u00a9", 0xc3);  // the element tried first holds "\u00e9"
  expect(u"\u00e9", 0xe9);
  expect(u"\u00c3\u00a9", 0xc3);
  expect(std::u16string(names[20]).substr(1), 0xDEADBEEF);  // no such name
  expect(names[20] + u"\u0100", 0xDEADBEEF);
}

TEST_F(NIniFileKeyTest, SettersRefuseWhatARecordCannotHold) {
  auto key = Open(u"k");
  EXPECT_FALSE(key->SetStringValue(u"s", u"two\nlines"));
  EXPECT_FALSE(key->SetStringValue(u"s", u"cr\r"));
  EXPECT_FALSE(key->SetMultiStringValue(u"m", NStringArray{NUnicodeString(u"a\r\nb")}));
  for (const std::u16string_view name : {u"quo\"te", u"line\nbreak", u""}) {
    EXPECT_FALSE(key->SetDwordValue(name, 1)) << NUnicodeString(name).ToUtf8();
  }
  EXPECT_FALSE(key->IsModified());
  EXPECT_EQ(key->Values().ValueCount(), 0u);
}

TEST_F(NIniFileKeyTest, ReadOnlyKeyChangesInMemoryButRefusesFlush) {
  Write("k.ini", Bom("D:\"a\"=00000001\r\n"));
  auto key = Open(u"k", true);
  EXPECT_FALSE(key->IsWritable());
  ASSERT_TRUE(key->SetDwordValue(u"a", 2));
  EXPECT_EQ(Dword(*key, u"a"), 2u);
  NReportMessageParams params;
  EXPECT_FALSE(key->Flush(params));
  EXPECT_NE(params.GetText().ToUtf8().find("read-only"), std::string::npos) << params.GetText().ToUtf8();
  EXPECT_EQ(Read("k.ini"), Bom("D:\"a\"=00000001\r\n"));
  auto child = key->OpenSubKey(u"child");
  ASSERT_TRUE(child);
  EXPECT_FALSE(child->IsWritable());
}

TEST_F(NIniFileKeyTest, UnmodifiedKeyFlushesWithoutTouchingTheDisk) {
  auto key = Open(u"missing\\deep");
  EXPECT_TRUE(key->Flush());
  EXPECT_FALSE(fs::exists(m_root / "missing"));
  ASSERT_TRUE(key->SetDwordValue(u"x", 1));
  ASSERT_TRUE(key->Flush());
  EXPECT_TRUE(fs::is_regular_file(m_root / "missing" / "deep.ini"));
}

TEST_F(NIniFileKeyTest, DeletedValueKeepsItsPlaceAndReloadDiscardsUnsavedChanges) {
  auto key = Open(u"k");
  ASSERT_TRUE(key->SetDwordValue(u"a", 1));
  ASSERT_TRUE(key->SetDwordValue(u"b", 2));
  ASSERT_TRUE(key->DeleteValue(u"a"));
  EXPECT_FALSE(key->DeleteValue(u"a"));
  ASSERT_TRUE(key->SetDwordValue(u"a", 3));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("k.ini"), Bom("D:\"a\"=00000003\r\nD:\"b\"=00000002\r\n"));
  ASSERT_TRUE(key->SetDwordValue(u"a", 5));
  ASSERT_TRUE(key->Reload());
  EXPECT_EQ(Dword(*key, u"a"), 3u);
  EXPECT_FALSE(key->IsModified());
}

TEST_F(NIniFileKeyTest, ChangesOfTwoWritersToOneKeyBothSurvive) {
  Write("k.ini", Bom("D:\"shared\"=00000001\r\nD:\"gone\"=00000001\r\n"));
  auto first = Open(u"k");
  auto second = Open(u"k");
  ASSERT_TRUE(first->SetDwordValue(u"mine", 1));
  ASSERT_TRUE(first->DeleteValue(u"gone"));
  ASSERT_TRUE(first->Flush());
  ASSERT_TRUE(second->SetDwordValue(u"yours", 2));
  ASSERT_TRUE(second->SetDwordValue(u"shared", 3));
  ASSERT_TRUE(second->Flush());
  EXPECT_EQ(Read("k.ini"), Bom("D:\"shared\"=00000003\r\nD:\"mine\"=00000001\r\nD:\"yours\"=00000002\r\n"));
  // The second writer now sees the first one's values, and a further save
  // keeps them.
  EXPECT_EQ(Dword(*second, u"mine"), 1u);
  ASSERT_TRUE(second->SetDwordValue(u"yours", 4));
  ASSERT_TRUE(second->Flush());
  EXPECT_NE(Read("k.ini").find("D:\"mine\"=00000001"), std::string::npos);
}

TEST_F(NIniFileKeyTest, PrivateRootReceivesThePersonalValues) {
  Store(true);
  auto key = Open(u"Sessions\\s");
  ASSERT_TRUE(key->SetStringValue(u"Hostname", u"h"));
  ASSERT_TRUE(key->SetStringValue(u"Password V2", u"secret"));
  ASSERT_TRUE(key->SetStringValue(u"Username", u"u"));
  ASSERT_TRUE(key->Flush());
  EXPECT_EQ(Read("Sessions/s.ini"), Bom("S:\"Hostname\"=h\r\n"));
  EXPECT_EQ(NReadFileBytes(m_personal / "Sessions" / "s.ini"), Bom("S:\"Username\"=u\r\nS:\"Password V2\"=secret\r\n"));

  auto again = Open(u"Sessions\\s");
  EXPECT_EQ(String(*again, u"Password V2"), u"secret");
  // Deleting the last personal values empties the private file, so that
  // they do not come back.
  ASSERT_TRUE(again->DeleteValue(u"Password V2"));
  ASSERT_TRUE(again->DeleteValue(u"Username"));
  ASSERT_TRUE(again->Flush());
  EXPECT_EQ(NReadFileBytes(m_personal / "Sessions" / "s.ini"), Bom(""));
  EXPECT_EQ(String(*Open(u"Sessions\\s"), u"Username"), u"<missing>");
}

TEST_F(NIniFileKeyTest, InterruptedSavesAreReportedButLoadedAsWritten) {
  Write("empty.ini", "");
  Write("cut.ini", Bom("D:\"a\"=00000001\r\nS:\"b\"=par"));
  auto empty = Open(u"empty");
  EXPECT_TRUE(empty->LoadReport().emptyFile);
  EXPECT_EQ(empty->Values().ValueCount(), 0u);
  auto cut = Open(u"cut");
  EXPECT_TRUE(cut->LoadReport().unterminated);
  EXPECT_EQ(String(*cut, u"b"), u"par");
  ASSERT_EQ(m_traces.lines.size(), 2u);
  EXPECT_NE(m_traces.lines[0].find("possibly interrupted save"), std::string::npos);
  EXPECT_NE(m_traces.lines[1].find("cut.ini"), std::string::npos);
}

TEST_F(NIniFileKeyTest, SubKeyIteratorKindsAndOrderAndAMissingFolder) {
  for (const char* file : {"both.ini", "both/x.ini", "File.ini", "__FolderData__.ini", "a.ini.txt", ".ini", "ab.INI"}) {
    Write(std::string("top/") + file, "");
  }
  fs::create_directories(m_root / "top" / "Folder");
  fs::create_directories(m_root / "top" / "a");
  const Listing expected = {{"__FolderData__", 6}, {"a", 5}, {"ab", 6}, {"both", 7}, {"File", 6}, {"Folder", 5}};
  EXPECT_EQ(ListAll(*Open(u"top"), false), expected);
  EXPECT_TRUE(m_traces.lines.empty());
  // A key without a folder has no sub-keys, and says why.
  NUnicodeString name;
  EXPECT_FALSE(Open(u"nothing")->CreateIterator(false)->NextName(&name));
  ASSERT_EQ(m_traces.lines.size(), 1u);
  EXPECT_EQ(m_traces.lines[0].rfind("NIniFileKey::Iterator failed to open path ", 0), 0u);
}

TEST_F(NIniFileKeyTest, ValueIteratorsSortWithoutCaseAndSkipValuesDeletedMeanwhile) {
  auto key = Open(u"k");
  ASSERT_TRUE(key->SetDwordValue(u"beta", 1));
  ASSERT_TRUE(key->SetStringValue(u"Alpha", u"x"));
  ASSERT_TRUE(key->SetBinaryValue(u"al", "x", 1));
  ASSERT_TRUE(key->SetMultiStringValue(u"Gamma", NStringArray()));
  auto iterator = key->CreateIterator(true);
  ASSERT_TRUE(key->DeleteValue(u"beta"));
  EXPECT_EQ(ListAll(*iterator), (Listing{{"al", 2}, {"Alpha", 1}, {"Gamma", 3}}));

  auto names = Open(u"names");
  for (const char* spelled : {"Color Scheme V2", "color scheme", "Color Scheme Name", "COLOR", "Colour", "Col\xC3\xA9",
                              "Co", "Color Scheme V1", "a\x01b", "a"}) {
    ASSERT_TRUE(names->SetDwordValue(NUnicodeString::FromUtf8(spelled), 1));
  }
  iterator = names->CreateIterator(true);
  std::vector<std::string> sorted;
  NUnicodeString name;
  while (iterator->NextName(&name)) sorted.push_back(name.ToUtf8());
  // "color scheme" and "Color Scheme ..." differ beyond the shorter name, so
  // both stay; the order is the iterator's own rule.
  const std::vector<std::string> expected = {
      "a",      "a\x01b",     "Co", "COLOR", "color scheme", "Color Scheme Name", "Color Scheme V1", "Color Scheme V2",
      "Colour", "Col\xC3\xA9"};
  EXPECT_EQ(sorted, expected);
}

TEST(NIniFileKeyIteratorTest, OrderComparesWithoutCaseAndPutsPrefixesFirst) {
  // Sorted as the iterator must sort: names that differ only in case are
  // equal; a name that is a prefix of another comes first; non-ASCII names
  // compare by their folded UTF-16 units.
  // The characters either side of 'A'-'Z' and 'a'-'z' are not folded.
  // clang-format off
  const std::vector<std::u16string> sorted = {
      u"", u"\x01", u"__FolderData__", u"a", u"A b", u"a@", u"a[", u"a`", u"ab", u"Abcdefgh", u"abcdefghi",
      u"abcdefgI1", u"abcdefgi@", u"abcdefgi[", u"abcdefgi`", u"abcdefgiZ", u"abcdefgiZZZZZZZZ@", u"abcdefgizzzzzzzz[",
      u"abcdefgi{", u"b", u"Z", u"\u00e9t\u00e9", u"\u00c9t\u00e9s", u"\u65e5"};
  // clang-format on
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = 0; j < sorted.size(); ++j) {
      const std::string a = NUnicodeString(sorted[i]).ToUtf8();
      const std::string b = NUnicodeString(sorted[j]).ToUtf8();
      EXPECT_EQ(NIniFileKey::Iterator::Compare(sorted[i], sorted[j]) < 0, i < j) << a << " vs " << b;
      EXPECT_EQ(NIniFileKey::Iterator::CompareUtf8(a, b) < 0, i < j) << a << " vs " << b;
    }
  }
  EXPECT_EQ(NIniFileKey::Iterator::CompareUtf8("Show Toolbar", "show toolbar"), 0);
}

TEST_F(NIniFileKeyTest, DeleteSubKeyRemovesEverythingButNeverFollowsALink) {
  Write("Sessions/Lab.ini", "");
  Write("Sessions/Lab/a.ini", "x");
  Write("Sessions/Lab/inner/b.ini", "x");
  if (!NMakeSymbolicLink(m_outside, m_root / "Sessions" / "Lab" / "link", true)) {
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  auto sessions = Open(u"Sessions");
  EXPECT_TRUE(sessions->SubKeyExists(u"Lab"));
  NReportMessageParams params;
  ASSERT_TRUE(sessions->DeleteSubKey(u"Lab", params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(fs::exists(m_root / "Sessions" / "Lab"));
  EXPECT_FALSE(fs::exists(m_root / "Sessions" / "Lab.ini"));
  EXPECT_FALSE(sessions->SubKeyExists(u"Lab"));
  EXPECT_EQ(NReadFileBytes(m_outside / "secret.ini"), Bom("S:\"Password\"=outside\r\n"));
}

TEST_F(NIniFileKeyTest, NamesThatWouldLeaveTheRootAreRefused) {
  auto root = Open(u"");
  using namespace std::string_view_literals;
  for (const std::u16string_view name :
       {u".."sv, u"."sv, u""sv, u"a\\..\\.."sv, u"/etc/passwd"sv, u"C:\\Windows"sv, u"\\\\server\\share"sv,
        u"trailing."sv, u"trailing "sv, u"nul\0byte"sv, u"tab\there"sv, u"a/b"sv}) {
    NReportMessageParams params;
    EXPECT_FALSE(root->OpenSubKey(name, params)) << NUnicodeString(name).ToUtf8();
    EXPECT_FALSE(root->SubKeyExists(name));
    EXPECT_FALSE(root->DeleteSubKey(name, params));
  }
  EXPECT_TRUE(root->OpenSubKey(u"Sessions\\Lab\\router1"));
  EXPECT_TRUE(root->OpenSubKey(u"caf\u00e9 .x"));
}

TEST_F(NIniFileKeyTest, RootKeyHoldsNoValues) {
  auto root = Open(u"");
  EXPECT_TRUE(root->GetPath().empty());
  ASSERT_TRUE(root->SetDwordValue(u"x", 1));
  NReportMessageParams params;
  EXPECT_FALSE(root->Flush(params));
  EXPECT_TRUE(fs::is_empty(m_root));
}

TEST_F(NIniFileKeyTest, ALongWaitForALockIsLoggedAndTheWaitGoesOn) {
  Write("k.ini", Bom("D:\"a\"=00000001\r\n"));
  NIniFileStoreOptions options;
  options.lockWarning = std::chrono::milliseconds(20);
  Store(false, options);
  std::unique_ptr<NFile> holder;
  NOpenOptions open;
  open.access = NFileAccess::kReadWrite;
  ASSERT_TRUE(NPlatform::Default().OpenFile(NUnicodeString::FromUtf8((m_root / "k.ini").string()), open, &holder));
  ASSERT_TRUE(holder->Lock(0, 4, NLockKind::kExclusive));
  std::thread release([&holder] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    (void)holder->Unlock(0, 4);
  });
  auto key = Open(u"k", true);
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
  Write("global.ini", Bom("D:\"Show Toolbar\"=00000001\r\n"));
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

// ---- Folders a user, a crash or an attacker could leave behind: each gives
// a defined result or a clear error, never a crash, an escape or unbounded
// memory.

TEST_F(NIniFileKeyTest, LinksInsideTheStoreNeverLeadOut) {
  if (!NMakeSymbolicLink(m_outside, m_root / "Sessions", true) ||
      !NMakeSymbolicLink(m_outside / "secret.ini", m_root / "link.ini", false)) {
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  // Reading through a link is refused with a clear error, whether it is the
  // key's file or a folder on its path.
  NReportMessageParams linkParams, params;
  EXPECT_FALSE(TryOpen(u"link", linkParams, false));
  EXPECT_NE(linkParams.GetText().ToUtf8().find("link.ini"), std::string::npos) << linkParams.GetText().ToUtf8();
  EXPECT_FALSE(TryOpen(u"Sessions\\secret", params, true));
  EXPECT_NE(params.GetText().ToUtf8().find("secret.ini"), std::string::npos) << params.GetText().ToUtf8();
  // So is writing through it, and deleting through it leaves the target.
  if (auto key = TryOpen(u"Sessions\\planted", params, false)) {
    ASSERT_TRUE(key->SetDwordValue(u"x", 1));
    EXPECT_FALSE(key->Flush(params));
  }
  EXPECT_FALSE(fs::exists(m_outside / "planted.ini"));
  auto root = Open(u"");
  EXPECT_FALSE(root->DeleteSubKey(u"Sessions\\secret", params));
  EXPECT_NE(params.GetText().ToUtf8().find("not a folder"), std::string::npos) << params.GetText().ToUtf8();
  EXPECT_TRUE(fs::exists(m_outside / "secret.ini"));
  // Deleting the linked key removes the link, not what it names.
  EXPECT_TRUE(root->DeleteSubKey(u"Sessions", params)) << params.GetText().ToUtf8();
  EXPECT_FALSE(fs::exists(fs::symlink_status(m_root / "Sessions")));
  EXPECT_TRUE(fs::exists(m_outside / "secret.ini"));
}

TEST_F(NIniFileKeyTest, AKeyFileThatIsAFolderIsAnErrorAndAFolderSubKey) {
  fs::create_directories(m_root / "odd.ini");
  NReportMessageParams params;
  EXPECT_FALSE(TryOpen(u"odd", params, true));
  EXPECT_NE(params.GetText().ToUtf8().find("odd.ini"), std::string::npos);
  EXPECT_EQ(ListAll(*Open(u"", true), false), (Listing{{"odd.ini", kSubKeyFolder}}));
}

TEST_F(NIniFileKeyTest, HugeLinesAndManyRecordsLoadCompletely) {
  std::string text = Bom("S:\"long\"=" + std::string(10 << 20, 'x') + "\r\n");
  for (int i = 0; i < 200000; ++i) text += "D:\"v" + std::to_string(i) + "\"=0000000a\r\n";
  Write("big.ini", text);
  auto key = Open(u"big", true);
  ASSERT_TRUE(key);
  EXPECT_EQ(String(*key, u"long").size(), std::size_t{10} << 20);
  EXPECT_EQ(Dword(*key, u"v199999"), 10u);
  EXPECT_EQ(key->Values().ValueCount(), 200001u);
}

TEST_F(NIniFileKeyTest, BadEncodingsBecomeReplacementCharacters) {
  const struct {
    std::u16string_view key;
    std::string bytes;
    std::u16string expected;  // the value of "s"
  } cases[] = {
      {u"overlong", Bom("S:\"s\"=a\xC0\xAF\x62\r\n"), u"a\uFFFD\uFFFDb"},
      {u"surrogate", Bom("S:\"s\"=\xED\xA0\x80!\r\n"), u"\uFFFD\uFFFD\uFFFD!"},
      {u"lone", std::string("\xFF\xFES\0:\0\"\0s\0\"\0=\0\0\xD8x\0", 18), u"\uFFFDx"},
      // Without a mark: the system's ANSI text.
      {u"latin", "S:\"s\"=caf\xE9\r\n", NAnsiToUtf16("caf\xE9")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(NUnicodeString(c.key).ToUtf8());
    Write(NUnicodeString(c.key).ToUtf8() + ".ini", c.bytes);
    auto key = Open(c.key, true);
    ASSERT_TRUE(key);
    EXPECT_EQ(String(*key, u"s"), c.expected);
  }
  Write("bomonly.ini", Bom(""));
  auto empty = Open(u"bomonly", true);
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->Values().ValueCount(), 0u);
  EXPECT_FALSE(empty->LoadReport().emptyFile);
}

}  // namespace
