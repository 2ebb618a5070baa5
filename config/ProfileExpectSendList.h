#pragma once

#include <vector>

#include "base/NStringArray.h"
#include "base/NUnicodeString.h"

// The expect/send pairs of a session's logon script: wait for `expect`, then
// send `send`; `hide` keeps the sent text out of logs (a password).
//
// Stored in "Login Script V3" as a multi-string, one pair per string:
//   "expect","send",flags
// with the texts in double quotes (a quote inside doubled) and flags a
// decimal number (1: hide). The older forms, converted on load:
//   "Login Script"     one string; expect and send texts alternating,
//                      separated by tabs
//   "Login Script V2"  a multi-string, one pair per string, expect TAB send
class ProfileExpectSendList {
 public:
  struct Pair {
    NUnicodeString expect;
    NUnicodeString send;
    bool hide = false;
    bool operator==(const Pair&) const = default;
  };

  const std::vector<Pair>& Pairs() const { return m_pairs; }
  void Add(Pair pair) { m_pairs.push_back(std::move(pair)); }
  bool IsEmpty() const { return m_pairs.empty(); }
  bool operator==(const ProfileExpectSendList&) const = default;

  NStringArray ToStrings() const;
  // False when a string is not a pair; the pairs read so far are kept.
  static bool FromStrings(const NStringArray& strings, ProfileExpectSendList* list);
  static ProfileExpectSendList FromVersion1(std::u16string_view text);
  static ProfileExpectSendList FromVersion2(const NStringArray& strings);

 private:
  std::vector<Pair> m_pairs;
};
