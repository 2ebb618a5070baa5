// The platform's behaviour that only Windows has: owner-only security as an
// access control list, devices and pipes that a path can name, reservations
// of disk space.
#include "platform/NPlatform.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

// The interface's own names, not the Win32 A/W macros.
#undef DeleteFile
#undef MoveFile

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/NUnicode.h"
#include "platform/testing/NScopedEnvironment.h"
#include "platform/testing/NSymbolicLink.h"
#include "platform/testing/NTestFolder.h"

namespace {

namespace fs = std::filesystem;

NPlatform& Platform() { return NPlatform::Default(); }

// The SID of the user this process runs as.
std::vector<BYTE> UserSid() {
  HANDLE token = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return {};
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<BYTE> buffer(size);
  std::vector<BYTE> sid;
  if (size && GetTokenInformation(token, TokenUser, buffer.data(), size, &size)) {
    PSID user = reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid;
    sid.assign(static_cast<BYTE*>(user), static_cast<BYTE*>(user) + GetLengthSid(user));
  }
  CloseHandle(token);
  return sid;
}

// Wine keeps no security descriptors of files: it shows one made from the
// Unix mode it gave the file, which lists SYSTEM besides the user and is not
// protected.
bool RunsOnWine() { return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr; }

// A file's or folder's DACL in SDDL; empty when it cannot be read.
std::wstring DaclOf(const fs::path& path) {
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, nullptr,
                            &descriptor) != ERROR_SUCCESS) {
    return {};
  }
  wchar_t* text = nullptr;
  std::wstring sddl;
  if (ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION,
                                                           &text, nullptr)) {
    sddl = text;
    LocalFree(text);
  }
  LocalFree(descriptor);
  return sddl;
}

using NWindowsPlatformTest = NTestFolderTest;

TEST_F(NWindowsPlatformTest, OwnerOnlyFilesAndFoldersAreTheUsersAlone) {
  std::unique_ptr<NFile> file;
  ASSERT_OK(Platform().OpenFile(
      Path("file"),
      {.mode = NOpenMode::kCreateIfMissing, .access = NFileAccess::kReadWrite, .security = NFileSecurity::kOwnerOnly},
      &file));
  ASSERT_OK(file->Write(0, "private", 7));
  file.reset();
  ASSERT_OK(Platform().CreateFolder(Path("folder"), NFileSecurity::kOwnerOnly));
  ASSERT_OK(Platform().CreateFolderChain(Path("chain/inner"), NFileSecurity::kOwnerOnly));

  std::vector<BYTE> user = UserSid();
  ASSERT_FALSE(user.empty());
  BYTE system[SECURITY_MAX_SID_SIZE];
  DWORD systemSize = sizeof system;
  ASSERT_TRUE(CreateWellKnownSid(WinLocalSystemSid, nullptr, system, &systemSize));
  const bool wine = RunsOnWine();
  for (const char* name : {"file", "folder", "chain", "chain/inner"}) {
    SCOPED_TRACE(name);
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    PACL dacl = nullptr;
    ASSERT_EQ(GetNamedSecurityInfoW(Native(name).c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                    &dacl, nullptr, &descriptor),
              static_cast<DWORD>(ERROR_SUCCESS));
    ASSERT_NE(dacl, nullptr);
    if (!wine) {
      SECURITY_DESCRIPTOR_CONTROL control = 0;
      DWORD revision = 0;
      ASSERT_TRUE(GetSecurityDescriptorControl(descriptor, &control, &revision));
      EXPECT_TRUE(control & SE_DACL_PROTECTED) << "the folder's inherited entries would let others in";
      EXPECT_EQ(dacl->AceCount, 1u);
    }
    // Full access for the user and no entry for anyone else.
    bool userHasAll = false;
    for (DWORD i = 0; i < dacl->AceCount; ++i) {
      void* entry = nullptr;
      ASSERT_TRUE(GetAce(dacl, i, &entry));
      const auto* ace = static_cast<const ACCESS_ALLOWED_ACE*>(entry);
      ASSERT_EQ(ace->Header.AceType, ACCESS_ALLOWED_ACE_TYPE);
      PSID sid = const_cast<DWORD*>(&ace->SidStart);
      if (EqualSid(sid, user.data())) {
        userHasAll = (ace->Mask & FILE_ALL_ACCESS) == FILE_ALL_ACCESS;
      } else {
        EXPECT_TRUE(wine && EqualSid(sid, system)) << "an entry for another account";
      }
    }
    EXPECT_TRUE(userHasAll);
    LocalFree(descriptor);
  }
  // And the user keeps every use of them.
  ASSERT_OK(Platform().OpenFile(Path("file"), {.access = NFileAccess::kReadWrite}, &file));
  file.reset();
  EXPECT_OK(Platform().DeleteFile(Path("file")));
  EXPECT_OK(Platform().RemoveFolder(Path("chain/inner")));
}

TEST_F(NWindowsPlatformTest, OwnerOnlyLeavesAnExistingFileOrFolderAsItIs) {
  WriteText("file", "x");
  fs::create_directory(Native("folder"));
  const std::wstring fileDacl = DaclOf(Native("file"));
  const std::wstring folderDacl = DaclOf(Native("folder"));
  ASSERT_FALSE(fileDacl.empty());
  for (NOpenMode mode : {NOpenMode::kExistingOnly, NOpenMode::kCreateIfMissing, NOpenMode::kCreateAlways}) {
    std::unique_ptr<NFile> file;
    ASSERT_OK(Platform().OpenFile(
        Path("file"), {.mode = mode, .access = NFileAccess::kReadWrite, .security = NFileSecurity::kOwnerOnly}, &file));
    EXPECT_EQ(DaclOf(Native("file")), fileDacl) << "mode " << static_cast<int>(mode);
  }
  ASSERT_OK(Platform().CreateFolderChain(Path("folder/sub"), NFileSecurity::kOwnerOnly));
  EXPECT_EQ(DaclOf(Native("folder")), folderDacl);
}

TEST_F(NWindowsPlatformTest, DevicesAndPipesAreNoFilesToOpen) {
  const std::wstring pipeName = L"\\\\.\\pipe\\cfgdeck_test_" + std::to_wstring(GetCurrentProcessId());
  HANDLE pipe = CreateNamedPipeW(pipeName.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 4096, 4096, 0, nullptr);
  ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
  const std::u16string paths[] = {u"\\\\.\\NUL", std::u16string(pipeName.begin(), pipeName.end())};
  for (const std::u16string& path : paths) {
    SCOPED_TRACE(NUtf16ToUtf8(path));
    std::unique_ptr<NFile> file;
    EXPECT_CODE(Platform().OpenFile(path, {.access = NFileAccess::kReadWrite}, &file), NStatus::kAccessDenied);
    EXPECT_EQ(file, nullptr);
  }
  CloseHandle(pipe);
}

TEST_F(NWindowsPlatformTest, ReservedSpaceIsReallyThereWhereTheFileSystemCanReserve) {
  {
    HANDLE probe = CreateFileW(Native("probe").c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(probe, INVALID_HANDLE_VALUE);
    FILE_ALLOCATION_INFO allocation = {};
    allocation.AllocationSize.QuadPart = 4096;
    const bool canReserve = SetFileInformationByHandle(probe, FileAllocationInfo, &allocation, sizeof allocation);
    CloseHandle(probe);
    // Wine implements no reservations.
    if (!canReserve) GTEST_SKIP() << "this file system cannot reserve space";
  }
  auto file = Open("data", NOpenMode::kCreateAlways);
  ASSERT_TRUE(file);
  ASSERT_OK(file->Write(0, "abc", 3));
  constexpr LONGLONG kReserved = 1 << 20;
  ASSERT_OK(file->Reserve(kReserved));
  HANDLE handle = CreateFileW(Native("data").c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(handle, INVALID_HANDLE_VALUE);
  FILE_STANDARD_INFO standard = {};
  ASSERT_TRUE(GetFileInformationByHandleEx(handle, FileStandardInfo, &standard, sizeof standard));
  CloseHandle(handle);
  EXPECT_GE(standard.AllocationSize.QuadPart, kReserved);
  EXPECT_EQ(standard.EndOfFile.QuadPart, 3);
}

TEST_F(NWindowsPlatformTest, DeletingALinkToAFolderLeavesTheFolder) {
  WriteText("folder/inside", "keep");
  if (!NMakeSymbolicLink(Native("folder"), Native("link"), true)) {
    GTEST_SKIP() << "this system makes no symbolic links here";
  }
  ASSERT_OK(Platform().DeleteFile(Path("link")));
  EXPECT_EQ(Platform().GetPathKind(Path("link")), NPathKind::kNone);
  EXPECT_EQ(ReadText("folder/inside"), "keep");
}

// Links the host made beforehand (testing/MakeLinks.cmake), for a run under
// Wine, which makes none itself: Sessions leads to a folder outside the
// store, filelink.ini to a file there.
TEST(NWindowsPremadeLinksTest, NoLinksRefusesLinksToFoldersAndFilesAndMakesNothingThrough) {
  const std::optional<std::u16string> premade = NScopedEnvironment::Get("CFGDECK_PREMADE_LINKS");
  if (!premade) GTEST_SKIP() << "no links made beforehand (CFGDECK_PREMADE_LINKS)";
  std::u16string folder;
  ASSERT_OK(Platform().CanonicalPath(*premade, &folder));
  const std::u16string store = folder + u"\\store\\";
  const std::u16string outside = folder + u"\\outside\\";
  const NOpenOptions refusing{.noFollow = true, .noLinks = true};
  const NOpenOptions creating{
      .mode = NOpenMode::kCreateIfMissing, .access = NFileAccess::kReadWrite, .noFollow = true, .noLinks = true};

  std::unique_ptr<NFile> file;
  EXPECT_CODE(Platform().OpenFile(store + u"Sessions\\secret.ini", refusing, &file), NStatus::kAccessDenied);
  EXPECT_CODE(Platform().OpenFile(store + u"filelink.ini", refusing, &file), NStatus::kAccessDenied);
  EXPECT_CODE(Platform().OpenFile(store + u"Sessions\\planted.ini", creating, &file), NStatus::kAccessDenied);
  EXPECT_EQ(Platform().GetPathKind(outside + u"planted.ini"), NPathKind::kNone) << "made through a refused link";
  EXPECT_EQ(Platform().GetPathKind(store + u"Sessions"), NPathKind::kOther);
  // Without noLinks both are followed.
  EXPECT_OK(Platform().OpenFile(store + u"Sessions\\secret.ini", {}, &file));
  EXPECT_OK(Platform().OpenFile(store + u"filelink.ini", {}, &file));
}

}  // namespace
