#include "config/ProfileExpectSendList.h"

namespace {

void AppendQuoted(NUnicodeString& out, std::u16string_view text) {
  out += u'"';
  for (const char16_t c : text) {
    if (c == u'"') out += u'"';
    out += c;
  }
  out += u'"';
}

// Reads a quoted text at `at`, leaving `at` after its closing quote.
bool ReadQuoted(std::u16string_view line, std::size_t& at, NUnicodeString* text) {
  if (at >= line.size() || line[at] != u'"') return false;
  ++at;
  text->clear();
  while (at < line.size()) {
    if (line[at] == u'"') {
      if (at + 1 < line.size() && line[at + 1] == u'"') {
        *text += u'"';
        at += 2;
        continue;
      }
      ++at;
      return true;
    }
    *text += line[at++];
  }
  return false;
}

}  // namespace

NStringArray ProfileExpectSendList::ToStrings() const {
  NStringArray strings;
  for (const Pair& pair : m_pairs) {
    NUnicodeString line;
    AppendQuoted(line, pair.expect);
    line += u',';
    AppendQuoted(line, pair.send);
    line += pair.hide ? u",1" : u",0";
    strings.Add(std::move(line));
  }
  return strings;
}

bool ProfileExpectSendList::FromStrings(const NStringArray& strings, ProfileExpectSendList* list) {
  list->m_pairs.clear();
  for (const NUnicodeString& line : strings) {
    Pair pair;
    std::size_t at = 0;
    if (!ReadQuoted(line, at, &pair.expect) || at >= line.size() || line[at++] != u',' ||
        !ReadQuoted(line, at, &pair.send) || at >= line.size() || line[at++] != u',') {
      return false;
    }
    const std::u16string_view flags = std::u16string_view(line).substr(at);
    if (flags != u"0" && flags != u"1") return false;
    pair.hide = flags == u"1";
    list->m_pairs.push_back(std::move(pair));
  }
  return true;
}

ProfileExpectSendList ProfileExpectSendList::FromVersion1(std::u16string_view text) {
  ProfileExpectSendList list;
  std::vector<NUnicodeString> items;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    std::size_t end = text.find(u'\t', begin);
    if (end == std::u16string_view::npos) end = text.size();
    items.emplace_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  for (std::size_t i = 0; i + 1 < items.size() || (i < items.size() && !items[i].empty()); i += 2) {
    Pair pair;
    pair.expect = items[i];
    if (i + 1 < items.size()) pair.send = items[i + 1];
    list.m_pairs.push_back(std::move(pair));
  }
  return list;
}

ProfileExpectSendList ProfileExpectSendList::FromVersion2(const NStringArray& strings) {
  ProfileExpectSendList list;
  for (const NUnicodeString& line : strings) {
    Pair pair;
    const std::size_t tab = line.find(u'\t');
    pair.expect = NUnicodeString(std::u16string_view(line).substr(0, tab));
    if (tab != NUnicodeString::npos) pair.send = NUnicodeString(std::u16string_view(line).substr(tab + 1));
    list.m_pairs.push_back(std::move(pair));
  }
  return list;
}
