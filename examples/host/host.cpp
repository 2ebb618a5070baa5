// A minimal host: report a failure the way the library's operations do and
// print its text. Built with the project so that it keeps compiling.
#include <cstdio>

#include "location/NReportMessageParams.h"

int main() {
  // "The change to the Personal Data Folder will take effect the next time
  // you start %1."
  NReportMessageParams params(0x61380023);
  params.AddArgument(u"Skeldon");
  std::fputs(params.GetText().ToUtf8().c_str(), stdout);
  return params.GetTextLength() > 0 ? 0 : 1;
}
