#pragma once

#include <string_view>

#include "base/NArray.h"
#include "base/NExport.h"
#include "base/NStringArray.h"
#include "base/NUnicodeString.h"

// Which product the library serves and which companion applications are
// installed beside it. Process-wide; set at start-up.
class NInstallation {
 public:
  // The application product id of an application name: compared without
  // case and for the whole length.
  static int ProductIdOfName(std::u16string_view appName);
  // The application product id of the running application (NGetAppName).
  static int AppProductId();

  // Looks for "Quenn.exe", "Skeldon.exe" and "Parrow.exe" in `folder` and
  // sets each flag from its version resource.
  static void Detect(std::u16string_view folder);
  // Whether the executable at `path` is an application of at least
  // `majorVersion`.
  static bool IsInstalledAt(std::u16string_view path, int majorVersion);

  // The emulation names offered for `productId`.
  static NStringArray EmulationsFor(int productId);

  // The names of the shared configuration cache's two objects for the
  // running application.
  static NStringArray SharedCacheNames();

  // Back to the state before start-up, for tests.
  static void ResetForTesting();
};
