#pragma once

#include <memory>
#include <mutex>

#include "location/NReportMessageDestination.h"

class NFile;
class NPlatform;

// A destination that appends one line per event to a dated log file in a
// folder: `prefix` + "%Y%m%d.log", the date being the event's UTC day (today
// for an event without a time), so a new file is begun each day. Each line
// is written straight to the file, with no buffering in the process, so a
// crash loses no line that was written. Thread-safe: writes are serialised.
class NFileDestination : public NReportMessageDestination {
 public:
  NFileDestination(NUnicodeString sourceName, NUnicodeString folder, NUnicodeString prefix = {});
  // Uses `platform` for files and the clock; it must outlive the destination.
  NFileDestination(NUnicodeString sourceName, NUnicodeString folder, NUnicodeString prefix, NPlatform& platform);
  ~NFileDestination() override;

  // The log file that an event of `fileTime` goes to.
  NUnicodeString FilePathFor(std::uint64_t fileTime) const;

  // Creates the folder when missing. Fails with the platform's error, naming
  // the file, when the file cannot be opened or written.
  bool WriteEvent(const ILogEvent& event, NReportMessageParams& params) override;

 protected:
  // The lines written when a file is begun (empty: none). `now` is the
  // current file time.
  virtual std::u16string FormatHeader(std::uint64_t now) const;
  // One event's line, with its line end.
  virtual std::u16string FormatLine(const ILogEvent& event) const;

  NPlatform& Platform() const { return m_platform; }

 private:
  bool OpenFor(const NUnicodeString& path, NReportMessageParams& params);

  NUnicodeString m_folder;
  NUnicodeString m_prefix;
  NPlatform& m_platform;
  std::mutex m_mutex;  // guards the members below
  std::unique_ptr<NFile> m_file;
  NUnicodeString m_filePath;
  std::uint64_t m_fileSize = 0;
};
