#pragma once

// What tests of file operations share: a folder of their own, and checks of
// an NStatus that say what a failed call reported.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/NPlatform.h"
#include "platform/NUnicode.h"
#include "platform/testing/NTestFiles.h"

// A failed call's code, operation and path, for failure messages.
inline std::string NDescribe(const NStatus& status) {
  return "code " + std::to_string(status.Code()) + " from '" + status.Operation() + "' on '" +
         NUtf16ToUtf8(status.Path()) + "'";
}

// EXPECT_OK(call) and EXPECT_CODE(call, code) check a status and show, on
// failure, what the call said.
inline testing::AssertionResult NIsOk(const char* expression, const NStatus& status) {
  if (status.IsOk()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << expression << " failed: " << NDescribe(status);
}
inline testing::AssertionResult NHasCode(const char* expression, const char*, const NStatus& status,
                                         std::uint32_t code) {
  if (status.Code() == code) return testing::AssertionSuccess();
  return testing::AssertionFailure() << expression << " gave " << NDescribe(status) << ", not code " << code;
}
#define EXPECT_OK(expression) EXPECT_PRED_FORMAT1(NIsOk, expression)
#define ASSERT_OK(expression) ASSERT_PRED_FORMAT1(NIsOk, expression)
#define EXPECT_CODE(expression, code) EXPECT_PRED_FORMAT2(NHasCode, expression, code)
#define ASSERT_CODE(expression, code) ASSERT_PRED_FORMAT2(NHasCode, expression, code)

// The whole content of an open file, read from its start.
inline std::string NReadAll(NFile& file) {
  std::string content(4096, '\0');
  std::size_t read = 0;
  const NStatus status = file.Read(0, content.data(), content.size(), &read);
  EXPECT_TRUE(status.IsOk()) << NDescribe(status);
  content.resize(read);
  return content;
}

// Gives each test a folder of its own, empty at the start and removed with
// what it holds at the end. Names may hold "/", which every system takes for
// a separator.
class NTestFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    std::random_device device;
    for (int attempt = 0; attempt < 100 && m_folder.empty(); ++attempt) {
      const auto candidate = std::filesystem::path(testing::TempDir()) / ("cfgdeck_" + std::to_string(device()));
      if (std::filesystem::create_directory(candidate)) m_folder = candidate;
    }
    ASSERT_FALSE(m_folder.empty());
  }
  void TearDown() override {
    std::error_code ignored;
    if (!m_folder.empty()) std::filesystem::remove_all(m_folder, ignored);
  }

  std::filesystem::path Native(const std::string& name) const { return m_folder / name; }
  std::u16string Path(const std::string& name) const { return Native(name).u16string(); }
  void WriteText(const std::string& name, std::string_view text) const { NWriteFileBytes(Native(name), text); }
  std::string ReadText(const std::string& name) const { return NReadFileBytes(Native(name)); }
  // A link counts, whether or not what it names exists.
  bool Exists(const std::string& name) const {
    std::error_code ignored;
    return std::filesystem::exists(std::filesystem::symlink_status(Native(name), ignored));
  }

  // Null, with a failure, when the file does not open.
  std::unique_ptr<NFile> Open(const std::string& name, NOpenMode mode = NOpenMode::kCreateIfMissing,
                              NFileAccess access = NFileAccess::kReadWrite) const {
    return OpenOn(NPlatform::Default(), name, {.mode = mode, .access = access});
  }
  std::unique_ptr<NFile> OpenOn(NPlatform& platform, const std::string& name, const NOpenOptions& options) const {
    std::unique_ptr<NFile> file;
    const NStatus status = platform.OpenFile(Path(name), options, &file);
    EXPECT_TRUE(status.IsOk()) << NDescribe(status);
    return file;
  }

  std::filesystem::path m_folder;
};
