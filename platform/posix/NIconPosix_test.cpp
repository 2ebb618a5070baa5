#include <gtest/gtest.h>

#include "platform/NIcon.h"

namespace {

// Without icon handles of the system's own, a handle is the icon's entry.
TEST(NIconPosix, AHandlePointsAtTheIconsIdAndBytes) {
  for (const int id : {kConnectedIconId, kDisconnectedIconId, kNewInputIconId, kLockedIconId}) {
    SCOPED_TRACE(id);
    const auto* icon = static_cast<const NLibraryIcon*>(NLoadLibraryIcon(id));
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->resourceId, id);
    EXPECT_EQ(icon->bytes.data(), NLibraryIconBytes(id).data());
    EXPECT_EQ(icon->bytes.size(), NLibraryIconBytes(id).size());
  }
}

}  // namespace
