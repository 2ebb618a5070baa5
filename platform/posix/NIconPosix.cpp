#include "platform/NIcon.h"

NIconHandle NLoadLibraryIcon(int resourceId) {
  for (const NLibraryIcon& icon : NLibraryIcons()) {
    // The table is constant and lives for the process; a handle is only
    // ever read through.
    if (icon.resourceId == resourceId) return const_cast<NLibraryIcon*>(&icon);
  }
  return nullptr;
}
