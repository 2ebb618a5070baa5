#pragma once

#include <span>
#include <string_view>

// Icons compiled into the library, by resource id. The .ico files live in
// platform/resources; platform/CMakeLists.txt gives each its id, and the
// build embeds their bytes on every system and, on Windows, also adds them
// to the DLL's resources.

inline constexpr int kConnectedIconId = 5018;
inline constexpr int kDisconnectedIconId = 5019;
inline constexpr int kNewInputIconId = 5020;
inline constexpr int kLockedIconId = 5021;

// An icon ready to draw. On Windows it is an HICON at the system's small
// icon size; elsewhere it points at the icon's NLibraryIcon. Either way it
// lives for the whole process: never destroy or free it.
using NIconHandle = void*;

// One icon compiled into the library: its id and the bytes of its .ico file.
struct NLibraryIcon {
  int resourceId;
  std::string_view bytes;
};

// Every compiled-in icon, by ascending id.
std::span<const NLibraryIcon> NLibraryIcons();

// The .ico file bytes of the icon with that id; empty for an unknown id.
std::string_view NLibraryIconBytes(int resourceId);

// The handle of the icon with that id; null for an unknown id. Loading the
// same id again gives the same handle. On Windows the icon comes from the
// resources of the module that holds this code when they have it (the DLL),
// and is otherwise made from the embedded bytes (tests and the tool, which
// link the layers directly), so a known id never gives null.
NIconHandle NLoadLibraryIcon(int resourceId);

// The image of an .ico file that best fits `pixels` wide: that width, else
// the smallest wider one, else the widest. The bytes are as
// CreateIconFromResourceEx takes them; empty when `icoBytes` is no
// well-formed icon file.
std::string_view NIconImage(std::string_view icoBytes, int pixels);
