// A minimal host: report a failure the way the library's operations do,
// then read a setting from a configuration folder. Built with the project
// so that it keeps compiling.
#include <cstdio>

#include "location/NReportMessageParams.h"
#include "store/NIniFileStoreFactory.h"

int main(int argc, char** argv) {
  // "The change to the Personal Data Folder will take effect the next time
  // you start %1."
  NReportMessageParams params(0x61380023);
  params.AddArgument(u"Skeldon");
  std::fputs(params.GetText().ToUtf8().c_str(), stdout);
  if (argc < 2) return 0;

  // The folder's key "global" and one of its values.
  NIniFileStoreFactory factory(NUnicodeString::FromUtf8(argv[1]), NUnicodeString());
  std::unique_ptr<NProfileStore> store = factory.CreateStore();
  NReportMessageParams failure;
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, failure);
  std::unique_ptr<NProfileKey> global = root ? root->OpenSubKey(u"global", failure) : nullptr;
  if (!global) {
    std::fputs(failure.GetText().ToUtf8().c_str(), stderr);
    return 1;
  }
  std::uint32_t showToolbar = 0;
  global->GetDwordValue(u"Show Toolbar", &showToolbar);
  std::printf("Show Toolbar: %u\n", showToolbar);
  return 0;
}
