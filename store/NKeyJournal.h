#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/NHash.h"
#include "base/NUnicodeString.h"
#include "platform/NPlatform.h"

// The rollback journal of one key file. A key file is rewritten in place
// under its exclusive lock (other processes hold locks on that very file, so
// it cannot be replaced by a new one), and a save that dies between the cut
// and the end of its write would leave it short. So before the cut a save
// writes a journal beside the file, "NAME.ini-journal": a header naming the
// new bytes (their length and hash) followed by the old bytes, flushed; once
// the new bytes are flushed the journal is removed.
//
// Whoever next holds the key's exclusive lock and finds a journal settles it
// first: when the file holds exactly the new bytes the save completed and
// the journal is dropped; otherwise the old bytes are written back. A journal
// that is not whole was cut short before the file was touched, and is
// dropped. A journal is only ever settled against the file it sits beside,
// and a file without one is read as it is.
//
// Not thread-safe; the caller holds the key's lock as each call says.
class NKeyJournal {
 public:
  static constexpr std::u16string_view kSuffix = u"-journal";

  // What settling found and did.
  enum class Outcome {
    kNone,        // no journal
    kCompleted,   // the file held the new bytes: the journal was dropped
    kRolledBack,  // the old bytes were written back, and the journal dropped
    kDamaged,     // a journal cut short, dropped: the file had not been touched
    kReadOld,     // left for a writer (the exclusive lock was not free): the old bytes were read from it
  };
  // One line for a report: "an interrupted save was rolled back".
  static std::string_view Describe(Outcome outcome);

  NKeyJournal(NPlatform& platform, std::u16string_view keyFile);

  const NUnicodeString& Path() const { return m_path; }

  // Under the exclusive lock, before the key file is cut: writes the journal
  // of a save that replaces `old` by `next`, and with `sync` flushes it and
  // its folder. On failure (a full disk among others) no journal is left and
  // the key file has not been touched.
  NStatus Write(std::string_view old, std::string_view next, NFileSecurity security, bool sync);

  // Once the new bytes are flushed.
  NStatus Remove();

  // Reads the journal, if there is one: kFileNotFound when there is none
  // (one failed lookup, the whole cost on the load path). On success *whole
  // says whether it is complete, and OldBytes() holds the old bytes.
  NStatus Read(bool* whole);
  const std::string& OldBytes() const { return m_old; }

  // Under the exclusive lock, held through `file` (open for writing):
  // settles the journal, if any. `current` holds the file's bytes on entry
  // and what it holds afterwards on return. On failure the journal stays,
  // for the next holder of the lock to settle.
  NStatus Settle(NFile& file, std::string* current, bool sync, Outcome* outcome);

 private:
  NPlatform& m_platform;
  NUnicodeString m_path;
  NUnicodeString m_folder;
  std::string m_old;
  std::uint64_t m_newLength = 0;
  NHash128 m_newHash;
};
