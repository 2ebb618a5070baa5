#pragma once

// The fixture of the key's fault tests: a store in a fresh folder, a key
// whose save spans several read blocks, and the files the save makes when
// nothing fails, to compare a failed save with.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "platform/testing/NTestFiles.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileStore.h"
#include "store/NTextFile.h"

namespace fs = std::filesystem;

inline constexpr std::u16string_view kKeyName = u"Sessions\\lab";

inline NUnicodeString Native(const fs::path& path) { return NUnicodeString::FromUtf8(path.string()); }

// Every value of a key as the records a save would write, in its order: two
// keys hold the same values exactly when their dumps are equal.
inline std::string Dump(const NIniFileKey& key) {
  NTextFile writer;
  writer.SetEncoding(NTextFile::Encoding::kUtf8);
  key.Values().ForEach([&writer](const NIniFileKey::Map::Element& element) {
    element.Data()->WriteRecord(writer, element.Name());
  });
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

class NIniFileKeyFaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::random_device device;
    for (int attempt = 0; attempt < 100 && m_base.empty(); ++attempt) {
      const fs::path candidate = fs::path(testing::TempDir()) / ("cfgdeck_faults_" + std::to_string(device()));
      if (fs::create_directory(candidate)) m_base = candidate;
    }
    ASSERT_FALSE(m_base.empty());
  }
  void TearDown() override {
    std::error_code ignored;
    if (!m_base.empty()) fs::remove_all(m_base, ignored);
  }

  fs::path Root(const std::string& folder) const { return m_base / folder / "main"; }
  fs::path PrivateRoot(const std::string& folder) const { return m_base / folder / "personal"; }
  fs::path MainFile(const std::string& folder) const { return Root(folder) / "Sessions" / "lab.ini"; }
  fs::path PrivateFile(const std::string& folder) const { return PrivateRoot(folder) / "Sessions" / "lab.ini"; }

  std::unique_ptr<NIniFileStore> MakeStore(const std::string& folder, bool withPrivate, NPlatform& platform) const {
    NIniFileStoreOptions options;
    options.syncOnSave = true;  // so that Sync is among the calls that fail
    return std::make_unique<NIniFileStore>(Native(Root(folder)),
                                           withPrivate ? Native(PrivateRoot(folder)) : NUnicodeString(), platform,
                                           options);
  }

  static std::unique_ptr<NIniFileKey> OpenKey(const NIniFileStore& store, NReportMessageParams& params) {
    NKeyPath path;
    EXPECT_TRUE(path.Append(kKeyName));
    return NIniFileKey::Open(store, path, false, params);
  }

  NKeyFiles ReadFiles(const std::string& folder, bool withPrivate) const {
    return {NReadFileBytes(MainFile(folder)), withPrivate ? NReadFileBytes(PrivateFile(folder)) : std::string()};
  }
  void WriteFiles(const std::string& folder, const NKeyFiles& files, bool withPrivate) const {
    NWriteFileBytes(MainFile(folder), files.main);
    if (withPrivate) NWriteFileBytes(PrivateFile(folder), files.personal);
  }

  void EmptyFolder(const std::string& folder) const { fs::remove_all(m_base / folder); }

  // The files of the key before the save, as a save writes them.
  NKeyFiles OldFiles(bool withPrivate) {
    EmptyFolder("old");
    auto store = MakeStore("old", withPrivate, NPlatform::Default());
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    if (!key) return {};
    SetOldValues(*key);
    EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    return ReadFiles("old", withPrivate);
  }

  // The files after the save, made by the same save with nothing failing.
  NKeyFiles NewFiles(const NKeyFiles& old, bool withPrivate) {
    EmptyFolder("new");
    WriteFiles("new", old, withPrivate);
    auto store = MakeStore("new", withPrivate, NPlatform::Default());
    NReportMessageParams params;
    auto key = OpenKey(*store, params);
    EXPECT_TRUE(key) << params.GetText().ToUtf8();
    if (!key) return {};
    ChangeValues(*key);
    EXPECT_TRUE(key->Flush(params)) << params.GetText().ToUtf8();
    return ReadFiles("new", withPrivate);
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

  fs::path m_base;
};
