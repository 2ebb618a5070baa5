#pragma once

#include "base/NUnicodeString.h"

// What a kind of dialog remembers between its openings in one process: the
// state-map name of the page that was showing when it last closed. Each
// kind of dialog keeps one, static, and hands it to every instance. UI
// thread only.
class NPropertyPageStateMap {
 public:
  const NUnicodeString& LastPage() const { return m_lastPage; }
  void SetLastPage(NUnicodeString name) { m_lastPage = std::move(name); }

 private:
  NUnicodeString m_lastPage;
};
