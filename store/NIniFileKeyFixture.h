#pragma once

// What the key tests share: a store over a root folder of the test's own,
// with a private root beside it, and short reads of a key's values; for the
// fault tests, a key whose save spans several read blocks, and the files the
// save makes when nothing fails, to compare a failed save with.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "platform/testing/NTestFolder.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"
#include "store/NKeyJournal.h"
#include "store/NTextFile.h"

// Records after the UTF-8 mark a save writes first.
inline std::string Bom(std::string_view records) { return "\xEF\xBB\xBF" + std::string(records); }

// A value, or a marker no value of that kind has, when the key holds none.
inline std::uint32_t Dword(const NProfileKey& key, std::u16string_view name) {
  std::uint32_t value = 0xDEADBEEF;
  key.GetDwordValue(name, &value);
  return value;
}
inline NUnicodeString String(const NProfileKey& key, std::u16string_view name) {
  NUnicodeString value = u"<missing>";
  key.GetStringValue(name, &value);
  return value;
}

class NIniFileKeyFixture : public NTestFolderTest {
 protected:
  void SetUp() override {
    NTestFolderTest::SetUp();
    if (HasFatalFailure()) return;
    m_root = m_folder / "root";
    m_personal = m_folder / "personal";
    std::filesystem::create_directories(m_root);
  }

  // The platform the store works on.
  virtual NPlatform& Platform() { return NPlatform::Default(); }

  static NIniFileStoreOptions Unsynced() {
    NIniFileStoreOptions options;
    options.syncOnSave = false;
    return options;
  }
  // Made at the first call, with its arguments; later calls return it as it is.
  NIniFileStore& Store(bool withPrivate = false, const NIniFileStoreOptions& options = Unsynced()) {
    if (!m_store) {
      m_store = std::make_unique<NIniFileStore>(NUnicodeString(m_root.u16string()),
                                                withPrivate ? NUnicodeString(m_personal.u16string()) : NUnicodeString(),
                                                Platform(), options);
    }
    return *m_store;
  }

  std::unique_ptr<NIniFileKey> TryOpen(std::u16string_view path, NReportMessageParams& params, bool readOnly = false) {
    NKeyPath keyPath;
    if (!path.empty() && !keyPath.Append(path)) return nullptr;
    return NIniFileKey::Open(Store(), keyPath, readOnly, params);
  }
  // Null, with a failure that says why, when the key does not open.
  std::unique_ptr<NIniFileKey> Open(std::u16string_view path, bool readOnly = false) {
    NReportMessageParams params;
    auto key = TryOpen(path, params, readOnly);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    return key;
  }

  void Write(const std::string& relative, std::string_view bytes) const { NWriteFileBytes(m_root / relative, bytes); }
  std::string Read(const std::string& relative) const { return NReadFileBytes(m_root / relative); }

  std::filesystem::path m_root, m_personal;
  std::unique_ptr<NIniFileStore> m_store;
};

// ---- The fault tests' key ---------------------------------------------------

namespace fs = std::filesystem;

inline constexpr std::u16string_view kKeyName = u"Sessions\\lab";

inline NUnicodeString UnicodePath(const fs::path& path) { return NUnicodeString(path.u16string()); }

// Every value of a key as the records a save would write, in its order: two
// keys hold the same values exactly when their dumps are equal.
inline std::string Dump(const NIniFileKey& key) {
  NTextFile writer;
  writer.SetEncoding(NTextFile::Encoding::kUtf8);
  key.Values().ForEach(
      [&writer](const NIniFileKey::Map::Element& element) { element.Data()->WriteRecord(writer, element.Name()); });
  return writer.Pending();
}

// Where two byte strings part, for failure messages that would otherwise print
// kilobytes.
inline std::string Difference(const std::string& actual, const std::string& expected) {
  std::size_t at = 0;
  while (at < actual.size() && at < expected.size() && actual[at] == expected[at]) ++at;
  return std::to_string(actual.size()) + " bytes against " + std::to_string(expected.size()) +
         ", first difference at " + std::to_string(at);
}

// The key before the save; personal names included, so that with a private
// root both files exist.
inline void SetOldValues(NIniFileKey& key) {
  ASSERT_TRUE(key.SetStringValue(u"Hostname", u"old.example"));
  ASSERT_TRUE(key.SetDwordValue(u"Port", 22));
  ASSERT_TRUE(key.SetStringValue(u"Username", u"alice"));
  ASSERT_TRUE(key.SetStringValue(u"Password", u"old secret"));
  ASSERT_TRUE(key.SetDwordValue(u"Doomed", 1));
  ASSERT_TRUE(key.SetMultiStringValue(u"Lines", NStringArray{NUnicodeString(u"one"), NUnicodeString(u"two")}));
}

// The save: a change, a deletion, a changed personal value and enough new
// values that the content spans several read blocks.
inline void ChangeValues(NIniFileKey& key) {
  ASSERT_TRUE(key.SetDwordValue(u"Port", 2222));
  ASSERT_TRUE(key.DeleteValue(u"Doomed"));
  ASSERT_TRUE(key.SetStringValue(u"Password", u"new secret"));
  ASSERT_TRUE(key.SetBinaryValue(u"Blob", "\x01\x02\x03", 3));
  for (int i = 0; i < 200; ++i) {
    const NUnicodeString name = NUnicodeString::FromUtf8("Added " + std::to_string(i));
    ASSERT_TRUE(key.SetStringValue(name, u"a value long enough to fill blocks"));
  }
}

// The bytes of a key's main and private file.
struct NKeyFiles {
  std::string main;
  std::string personal;  // empty without a private root
};

// Each named folder under the test's own holds a main root and a private one.
class NIniFileKeyFaultsTest : public NTestFolderTest {
 protected:
  fs::path Root(const std::string& folder) const { return m_folder / folder / "main"; }
  fs::path PrivateRoot(const std::string& folder) const { return m_folder / folder / "personal"; }
  fs::path MainFile(const std::string& folder) const { return Root(folder) / "Sessions" / "lab.ini"; }
  fs::path PrivateFile(const std::string& folder) const { return PrivateRoot(folder) / "Sessions" / "lab.ini"; }
  static fs::path JournalOf(const fs::path& keyFile) { return fs::path(keyFile.string() + "-journal"); }

  // The default options sync each save, so that Sync is among the calls that fail.
  std::unique_ptr<NIniFileStore> MakeStore(const std::string& folder, bool withPrivate, NPlatform& platform) const {
    return std::make_unique<NIniFileStore>(UnicodePath(Root(folder)),
                                           withPrivate ? UnicodePath(PrivateRoot(folder)) : NUnicodeString(), platform);
  }

  static std::unique_ptr<NIniFileKey> OpenKey(const NIniFileStore& store, NReportMessageParams& params) {
    NKeyPath path;
    EXPECT_TRUE(path.Append(kKeyName));
    return NIniFileKey::Open(store, path, false, params);
  }
  // Null, with a failure that says why, when the key does not open.
  static std::unique_ptr<NIniFileKey> OpenKey(const NIniFileStore& store) {
    NReportMessageParams params;
    auto key = OpenKey(store, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    return key;
  }

  // Opens the key as the next process would, and returns what settling its
  // main file's journal did.
  NKeyJournal::Outcome OpenAgain(const std::string& folder, bool withPrivate,
                                 NPlatform& platform = NPlatform::Default()) const {
    auto store = MakeStore(folder, withPrivate, platform);
    auto key = OpenKey(*store);
    return key ? key->LoadReport(0).journal : NKeyJournal::Outcome::kNone;
  }

  NKeyFiles ReadFiles(const std::string& folder, bool withPrivate) const {
    return {NReadFileBytes(MainFile(folder)), withPrivate ? NReadFileBytes(PrivateFile(folder)) : std::string()};
  }
  void WriteFiles(const std::string& folder, const NKeyFiles& files, bool withPrivate) const {
    NWriteFileBytes(MainFile(folder), files.main);
    if (withPrivate) NWriteFileBytes(PrivateFile(folder), files.personal);
  }

  void EmptyFolder(const std::string& folder) const { fs::remove_all(m_folder / folder); }

  // The files of the key before the save, as a save writes them.
  NKeyFiles OldFiles(bool withPrivate) {
    EmptyFolder("old");
    return SavedFiles("old", withPrivate, SetOldValues);
  }
  // The files after the save, made by the same save with nothing failing.
  NKeyFiles NewFiles(const NKeyFiles& old, bool withPrivate) {
    EmptyFolder("new");
    WriteFiles("new", old, withPrivate);
    return SavedFiles("new", withPrivate, ChangeValues);
  }
  NKeyFiles SavedFiles(const std::string& folder, bool withPrivate, void (*change)(NIniFileKey&)) {
    auto store = MakeStore(folder, withPrivate, NPlatform::Default());
    auto key = OpenKey(*store);
    if (!key) return {};
    change(*key);
    NReportMessageParams params;
    EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    return ReadFiles(folder, withPrivate);
  }

  // Checks that each file holds its old or its new bytes; "o" or "N" for each.
  static std::string OldOrNew(const NKeyFiles& after, const NKeyFiles& old, const NKeyFiles& fresh, bool withPrivate) {
    const bool mainNew = after.main == fresh.main;
    EXPECT_TRUE(mainNew || after.main == old.main) << Difference(after.main, fresh.main);
    std::string letters(1, mainNew ? 'N' : 'o');
    if (withPrivate) {
      const bool privateNew = after.personal == fresh.personal;
      EXPECT_TRUE(privateNew || after.personal == old.personal) << Difference(after.personal, fresh.personal);
      letters += privateNew ? 'N' : 'o';
    }
    return letters;
  }

  // A failure report names the file it concerns and has real texts, its own
  // and the system's for the error.
  void ExpectNamesAFile(const NReportMessageParams& params, const std::string& folder, bool withPrivate) const {
    const std::string text = params.GetText().ToUtf8();
    EXPECT_EQ(text.find("Could not retrieve"), std::string::npos) << text;
    const bool namesMain = text.find(MainFile(folder).string()) != std::string::npos;
    const bool namesPrivate = withPrivate && text.find(PrivateFile(folder).string()) != std::string::npos;
    EXPECT_TRUE(namesMain || namesPrivate) << text;
  }
};
