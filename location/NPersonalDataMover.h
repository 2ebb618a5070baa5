#pragma once

#include <cstddef>
#include <functional>
#include <unordered_set>
#include <vector>

#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"
#include "store/NKeyPath.h"

class NIniFileStore;
class NPlatform;
class NProfileKey;

// Moves the personal values of the sessions tree between a configuration
// folder and a personal data folder, through INI folder stores on them.
// Every step leaves each value in at least one place it is read from, so a
// run cut short anywhere loses nothing and the next run completes it.
//
// Migration: each session whose main file holds personal values is saved
// through a store with the personal data folder as its private root, which
// writes them to the private file (first) and the rest to the main file.
// Where an earlier run left a copy in the private file, the main file's
// value wins: it is the one in use until the migration ends.
//
// Merge: each session's values in the personal data folder are written into
// its main file (they win over copies left there: they are the ones in
// use). First the two folders are matched: when the personal data folder
// holds values for a key that is no session of the configuration folder,
// they do not belong together and nothing is written (kMsgPersonalDataMismatch,
// each such key traced). At the end the personal data folder's "Sessions"
// becomes "Sessions-merged-<UTC YYYYMMDD-HHMMSS>", so that a later migration
// into the same folder starts afresh instead of reading old values back.
//
// Used by one thread at a time; `platform` must outlive it.
class NPersonalDataMover {
 public:
  // Called after each session (and once with 0 before the first) with the
  // count done and the total; false stops the run there.
  using Step = std::function<bool(std::size_t done, std::size_t total)>;

  NPersonalDataMover(NUnicodeString configFolder, NUnicodeString personalFolder, NPlatform& platform);

  void SetStep(Step step) { m_step = std::move(step); }

  // True when every session was done; otherwise params say why (a stop by
  // the step: kMsgPersonalDataInterrupted).
  bool Migrate(NReportMessageParams& params);
  bool Merge(NReportMessageParams& params);

  // The name the merge gives the merged "Sessions" folder at `fileTime`
  // (100 ns units since 1601, UTC).
  static NUnicodeString MergedFolderName(std::uint64_t fileTime);

 private:
  struct Session {
    NKeyPath path;                // from the root: "Sessions", then the tree's names
    NUnicodeString relative;      // beneath "Sessions", names separated by "\"
    bool personalInMain = false;  // its main file holds personal values
  };
  using KeySet = std::unordered_set<NUnicodeString, NIgnoreCaseHash, NIgnoreCaseEqual>;

  bool CheckFolders(NReportMessageParams& params) const;
  bool FindSessions(NIniFileStore& store, std::vector<Session>* sessions, NReportMessageParams& params) const;
  bool FindPersonalKeys(NProfileKey& folder, const NUnicodeString& prefix, std::vector<NUnicodeString>* keys,
                        NReportMessageParams& params) const;
  // The keys beneath "Sessions" that hold values in the personal data
  // folder; false, with kMsgPersonalDataMismatch, when one is no session.
  bool MatchFolders(NIniFileStore& personal, const std::vector<Session>& sessions, KeySet* personalKeys,
                    NReportMessageParams& params) const;
  bool ArchiveMergedSessions(const NUnicodeString& personalRoot, NReportMessageParams& params) const;
  bool Stepped(std::size_t done, std::size_t total, NReportMessageParams& params) const;

  NUnicodeString m_configFolder;
  NUnicodeString m_personalFolder;
  NPlatform& m_platform;
  Step m_step;
};
