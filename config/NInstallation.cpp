#include "config/NInstallation.h"

#include <mutex>

#include "config/NLibraryState.h"
#include "platform/NFileVersion.h"
#include "platform/NPlatform.h"
#include "uicore/NAppName.h"

namespace {

struct NCompanion {
  std::u16string_view file;
  int majorVersion;
};
constexpr NCompanion kQuenn{u"Quenn.exe", 5};
constexpr NCompanion kSkeldon{u"Skeldon.exe", 5};
constexpr NCompanion kParrow{u"Parrow.exe", 3};

NUnicodeString Join(std::u16string_view folder, std::u16string_view file) {
  NUnicodeString path(folder);
  if (!path.empty() && path.back() != u'\\' && path.back() != u'/') path += NPlatform::Default().PathSeparator();
  path += file;
  return path;
}

}  // namespace

int NInstallation::ProductIdOfName(std::u16string_view appName) {
  struct NNamed {
    std::u16string_view name;
    int id;
  };
  constexpr NNamed kProducts[] = {{u"Skeldon", 3}, {u"Kindler", 3}, {u"Parrow", 6}, {u"Tunnex", 8}, {u"Vexa", 9}};
  for (const NNamed& product : kProducts) {
    if (appName.size() == product.name.size() && NUnicodeString::CompareIgnoreCase(appName, product.name) == 0) {
      return product.id;
    }
  }
  return -1;
}

int NInstallation::AppProductId() { return ProductIdOfName(NGetAppName()); }

bool NInstallation::IsInstalledAt(std::u16string_view path, int majorVersion) {
  if (path.size() < 2) return false;
  NFileVersion version;
  if (!NReadFileVersion(path, &version)) return false;
  return version.fileType == NFileVersion::kFileTypeApplication && version.major >= majorVersion;
}

void NInstallation::Detect(std::u16string_view folder) {
  NLibraryState& state = NLibraryState::Get();
  std::lock_guard<std::recursive_mutex> lock(state.mutex);
  state.quennPath = Join(folder, kQuenn.file);
  state.skeldonPath = Join(folder, kSkeldon.file);
  state.parrowPath = Join(folder, kParrow.file);
  state.quennInstalled = IsInstalledAt(state.quennPath, kQuenn.majorVersion);
  state.skeldonInstalled = IsInstalledAt(state.skeldonPath, kSkeldon.majorVersion);
  state.parrowInstalled = IsInstalledAt(state.parrowPath, kParrow.majorVersion);
}

NStringArray NInstallation::EmulationsFor(int productId) {
  // The terminal application offers every emulation, with "Hollet" fifth,
  // where it looks for it. The file-transfer and tunnelling products have
  // no terminal; an unknown product gets the common ones.
  NStringArray names;
  if (productId == 6 || productId == 8 || productId == 9) return names;
  const std::initializer_list<const char16_t*> all = {
      u"VT100", u"VT102", u"VT220", u"VT320", u"Hollet", u"ANSI", u"Linux", u"SCOANSI", u"Wyse50", u"Wyse60",
      u"Xterm", u"TN3270", u"IBM-3278-2", u"IBM-3278-3", u"IBM-3278-4", u"IBM-3278-5"};
  const std::initializer_list<const char16_t*> common = {u"VT100", u"VT102", u"VT220", u"VT320",
                                                         u"ANSI",  u"Linux", u"SCOANSI", u"Xterm"};
  for (const char16_t* name : productId == 3 ? all : common) names.Add(NUnicodeString(name));
  return names;
}

NStringArray NInstallation::SharedCacheNames() {
  // Only an integrated pair of applications shares one cache: any other
  // product gets names of its own.
  const int product = AppProductId();
  bool integrated;
  {
    NLibraryState& state = NLibraryState::Get();
    std::lock_guard<std::recursive_mutex> lock(state.mutex);
    integrated = (product == 3 || product == 6) && state.skeldonInstalled && state.parrowInstalled;
  }
  NStringArray names;
  for (std::u16string_view id : {std::u16string_view(u"{BE251B73-D0CC-49D6-BAD8-73E1DF33D0DE}"),
                                 std::u16string_view(u"{4F896D0D-BE15-474B-9673-7EE8C3FB1222}")}) {
    NUnicodeString name(id.substr(0, id.size() - 1));
    if (!integrated) name += NUnicodeString::FromUtf8(std::to_string(product));
    name += u'}';
    names.Add(std::move(name));
  }
  return names;
}

void NInstallation::ResetForTesting() { NLibraryState::Get().Reset(); }
