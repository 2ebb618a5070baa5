#pragma once

#include <string_view>

// The host's cache of file-type icons, shown beside files in its lists.
// Owned by the host. UI thread only.
class NIconManager {
 public:
  virtual ~NIconManager() = default;
  // The program opening files of `extension` changed: its icon is fetched
  // again when next shown.
  virtual void Invalidate(std::u16string_view extension) = 0;
};
