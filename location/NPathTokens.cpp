#include "location/NPathTokens.h"

#include <mutex>

#include "platform/NPlatform.h"

namespace {

std::mutex g_mutex;  // guards g_roots
NPathTokenRoots g_roots;

constexpr std::u16string_view kTokens[] = {u"${NSW_CONFIG_PATH}", u"${NSW_INSTALL_PATH}", u"${NSW_USER_DATA_PATH}",
                                           u"${NSW_SSH_DATA_PATH}"};

// The roots in token order.
const NUnicodeString* RootsInOrder(const NPathTokenRoots& roots, std::size_t i) {
  const NUnicodeString* ordered[] = {&roots.config, &roots.install, &roots.userData, &roots.sshData};
  return ordered[i];
}

bool IsSeparator(char16_t c) { return c == u'\\' || c == u'/'; }

// `text` with every separator replaced by `separator`.
NUnicodeString WithSeparators(std::u16string_view text, char16_t separator) {
  NUnicodeString result(text);
  for (char16_t& c : result) {
    if (IsSeparator(c)) c = separator;
  }
  return result;
}

// `root` without the separators it may end in; "/" alone stays.
std::u16string_view Trimmed(std::u16string_view root) {
  while (root.size() > 1 && IsSeparator(root.back())) root.remove_suffix(1);
  return root;
}

// True when `path` is `root` or lies under it, names compared exactly and
// either separator matching the other.
bool IsUnder(std::u16string_view path, std::u16string_view root) {
  if (root.empty() || path.size() < root.size()) return false;
  for (std::size_t i = 0; i < root.size(); ++i) {
    if (path[i] != root[i] && !(IsSeparator(path[i]) && IsSeparator(root[i]))) return false;
  }
  return path.size() == root.size() || IsSeparator(path[root.size()]) || IsSeparator(root.back());
}

}  // namespace

void NSetPathTokenRoots(const NPathTokenRoots& roots) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_roots = roots;
}

NPathTokenRoots NGetPathTokenRoots() {
  std::lock_guard<std::mutex> lock(g_mutex);
  return g_roots;
}

NUnicodeString NExpandPathTokens(std::u16string_view stored, const NPathTokenRoots& roots) {
  for (std::size_t i = 0; i < std::size(kTokens); ++i) {
    if (!stored.starts_with(kTokens[i])) continue;
    const std::u16string_view root = Trimmed(*RootsInOrder(roots, i));
    if (root.empty()) return NUnicodeString(stored);
    std::u16string_view rest = stored.substr(kTokens[i].size());
    // The root brings its own separator when it is one, such as "/".
    if (!rest.empty() && IsSeparator(rest.front()) && IsSeparator(root.back())) rest.remove_prefix(1);
    NUnicodeString path(root);
    path += WithSeparators(rest, NPlatform::Default().PathSeparator());
    return path;
  }
  return NUnicodeString(stored);
}

NUnicodeString NExpandPathTokens(std::u16string_view stored) { return NExpandPathTokens(stored, NGetPathTokenRoots()); }

NUnicodeString NCollapsePathTokens(std::u16string_view path, const NPathTokenRoots& roots) {
  for (std::size_t i = 0; i < std::size(kTokens); ++i) {
    const std::u16string_view root = Trimmed(*RootsInOrder(roots, i));
    if (!IsUnder(path, root)) continue;
    std::u16string_view rest = path.substr(root.size());
    NUnicodeString stored(kTokens[i]);
    if (!rest.empty() && !IsSeparator(rest.front())) stored.push_back(u'\\');  // the root was "/" or "C:\"
    stored += WithSeparators(rest, u'\\');
    return stored;
  }
  return NUnicodeString(path);
}

NUnicodeString NCollapsePathTokens(std::u16string_view path) { return NCollapsePathTokens(path, NGetPathTokenRoots()); }
