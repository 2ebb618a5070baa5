#pragma once

#include <string_view>

#include "base/NExport.h"
#include "base/NUnicodeString.h"

// Paths kept in the configuration may begin with a token in place of a
// folder root, so that they stay right when the folders move:
//   "${NSW_CONFIG_PATH}"     the configuration folder
//   "${NSW_INSTALL_PATH}"    the installation folder
//   "${NSW_USER_DATA_PATH}"  the user data folder
//   "${NSW_SSH_DATA_PATH}"   the SSH data folder
// The tokens are tried in this order and the first that applies wins; no
// further token is tried for that path.
//
// A stored path separates its names with "\" whatever the system, so a
// configuration folder reads the same on every system; expanding turns the
// separators after the token into the system's own.

// The folders the tokens stand for. An empty one is not known: its token is
// neither expanded nor produced.
struct NPathTokenRoots {
  NUnicodeString config;
  NUnicodeString install;
  NUnicodeString userData;
  NUnicodeString sshData;
};

// The process's roots, used where none are given. The host sets them once
// it knows its folders. Thread-safe.
CFGDECK_API void NSetPathTokenRoots(const NPathTokenRoots& roots);
CFGDECK_API NPathTokenRoots NGetPathTokenRoots();

// `stored` with a leading token replaced by its root; unchanged when it
// begins with no token, or with one whose root is not known.
CFGDECK_API NUnicodeString NExpandPathTokens(std::u16string_view stored, const NPathTokenRoots& roots);
CFGDECK_API NUnicodeString NExpandPathTokens(std::u16string_view stored);

// `path` with the first root (in token order) that it equals or lies under
// replaced by that root's token; unchanged when it lies under none. A root
// matches whole names only ("/a/cfg" is not under "/a/c") and with the case
// as written: a path spelled otherwise stays absolute, which still works.
CFGDECK_API NUnicodeString NCollapsePathTokens(std::u16string_view path, const NPathTokenRoots& roots);
CFGDECK_API NUnicodeString NCollapsePathTokens(std::u16string_view path);
