#include "store/NKeyPath.h"

#include <algorithm>

bool NKeyPath::IsValidName(std::u16string_view name) {
  if (name.empty() || name == u"." || name == u"..") return false;
  if (name.back() == u'.' || name.back() == u' ') return false;
  for (const char16_t c : name) {
    if (c < 0x20 || c == 0x7F) return false;
    if (c == u'\\' || c == u'/' || c == u':') return false;
  }
  return true;
}

bool NKeyPath::Append(std::u16string_view path, bool allowSlash) {
  const std::u16string_view separators = allowSlash ? std::u16string_view(u"\\/") : std::u16string_view(u"\\");
  if (path.find_first_of(separators) == std::u16string_view::npos) {
    // One name, as a sub-key is opened: nothing to undo if it is refused.
    if (!IsValidName(path)) return false;
    m_names.emplace_back(path);
    return true;
  }
  std::vector<NUnicodeString> added;
  size_t start = 0;
  for (;;) {
    size_t end = path.find_first_of(separators, start);
    const std::u16string_view name = path.substr(start, end == std::u16string_view::npos ? end : end - start);
    if (!IsValidName(name)) return false;
    added.emplace_back(name);
    if (end == std::u16string_view::npos) break;
    start = end + 1;
  }
  for (NUnicodeString& name : added) m_names.push_back(std::move(name));
  return true;
}

bool NKeyPath::Child(std::u16string_view path, NKeyPath* child) const {
  const auto added = static_cast<std::size_t>(std::count(path.begin(), path.end(), u'\\')) + 1;
  child->m_names.clear();
  child->m_names.reserve(m_names.size() + added);
  child->m_names.insert(child->m_names.end(), m_names.begin(), m_names.end());
  return child->Append(path);
}

NKeyPath NKeyPath::Parent() const {
  NKeyPath parent = *this;
  if (!parent.m_names.empty()) parent.m_names.pop_back();
  return parent;
}

NUnicodeString NKeyPath::Join(char16_t separator) const {
  NUnicodeString joined;
  for (const NUnicodeString& name : m_names) {
    if (!joined.empty()) joined.push_back(separator);
    joined += name;
  }
  return joined;
}

NUnicodeString NKeyPath::Under(std::u16string_view root, char16_t separator, std::u16string_view suffix) const {
  std::size_t size = root.size() + suffix.size();
  for (const NUnicodeString& name : m_names) size += name.size() + 1;
  NUnicodeString path;
  path.reserve(size);  // one allocation: every key load builds its file's path
  path.append(root);
  for (const NUnicodeString& name : m_names) {
    if (!path.empty() && path.back() != separator) path.push_back(separator);
    path += name;
  }
  path += suffix;
  return path;
}
