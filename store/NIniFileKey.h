#pragma once

#include <memory>
#include <string>

#include "platform/NFile.h"
#include "store/NIniFileKeyMap.h"
#include "store/NKeyJournal.h"
#include "store/NKeyPath.h"
#include "store/NProfileKey.h"

class NIniFileStore;
class NFile;
class NTextFile;

// What loading a key file noticed beyond the values: a load stops at the
// first invalid record, and a file cut short by an interrupted save loads as
// the format says. The key's values are never made up from this; it is a
// side channel for diagnostics.
struct NIniLoadReport {
  NUnicodeString file;        // the file read (empty when it did not exist)
  bool emptyFile = false;     // 0 bytes: not even the byte-order mark a save writes
  bool unterminated = false;  // the last line has no line end
  std::size_t invalidLine = 0;  // 1-based line of the first invalid record, or 0
  std::string problem;          // why that record is invalid
  // What the journal of a save that died was found to be, and what was done.
  NKeyJournal::Outcome journal = NKeyJournal::Outcome::kNone;
};

// A key of the INI folder store. Its values are loaded when it is opened;
// Flush rewrites its file in place under an exclusive lock.
//
// Another process's changes: Flush reads the file under the lock first; if
// it is not what this key loaded, it is read again and this key's own
// changes (the values it set or deleted since loading or saving) are
// applied on top, so two processes that change different values of one key
// both keep their change.
//
// Owned by whoever opened it; one thread at a time. The store must outlive it.
class NIniFileKey final : public NProfileKey {
 public:
  using Map = NIniFileKeyMap;
  class Iterator;

  // Opens and loads the key at `path`. Null when its file exists but cannot
  // be read (params say why).
  static std::unique_ptr<NIniFileKey> Open(const NIniFileStore& store, NKeyPath path, bool readOnly,
                                           NReportMessageParams& params);
  ~NIniFileKey() override;

  using NProfileKey::Flush;
  using NProfileKey::OpenSubKey;
  using NProfileKey::Reload;

  bool GetSecurityDescriptorValue(std::u16string_view name, NSecurityDescriptor* value) const override;
  bool GetMultiStringValue(std::u16string_view name, NStringArray* value) const override;
  bool GetBinaryValue(std::u16string_view name, void* buffer, std::uint32_t* length) const override;
  bool GetStringValue(std::u16string_view name, NUnicodeString* value) const override;
  bool GetDwordValue(std::u16string_view name, std::uint32_t* value) const override;
  bool SetSecurityDescriptorValue(std::u16string_view name, const NSecurityDescriptor& value) override;
  bool SetMultiStringValue(std::u16string_view name, const NStringArray& value) override;
  bool SetBinaryValue(std::u16string_view name, const void* data, std::uint32_t length) override;
  bool SetStringValue(std::u16string_view name, std::u16string_view value) override;
  bool SetDwordValue(std::u16string_view name, std::uint32_t value) override;
  bool DeleteValue(std::u16string_view name) override;
  bool DeleteSubKey(std::u16string_view name, NReportMessageParams& params) override;
  bool SubKeyExists(std::u16string_view name) const override;
  bool IsWritable() const override { return !m_readOnly; }
  NUnicodeString GetPath() const override { return m_path.Join(u'\\'); }
  bool Reload(NReportMessageParams& params) override;
  bool Flush(NReportMessageParams& params) override;
  std::unique_ptr<NProfileKey> OpenSubKey(std::u16string_view name, NReportMessageParams& params) override;
  std::unique_ptr<NProfileKeyIterator> CreateIterator(bool values) override;

  // The sub-key `name` as a key without a file, nothing read: for a walk
  // that knows from listing this key's folder that the sub-key is a folder
  // alone, which spares the search for a file by case. Values set on it
  // are saved as on any key (merged with a file made meanwhile). Null for
  // a name no key can have.
  std::unique_ptr<NIniFileKey> OpenFolderSubKey(std::u16string_view name) const;

  bool IsModified() const { return m_modified; }
  const Map& Values() const { return *m_map; }
  // Changes whenever the key's table is replaced (reload, merge on save).
  std::uint64_t TableGeneration() const { return m_tableGeneration; }
  // What loading the main file (index 0) and the private file (1) noticed.
  const NIniLoadReport& LoadReport(int file = 0) const { return m_reports[file]; }
  // The key's files and folder as the key spells them; the private file is
  // empty without a private root. Where the system tells cases apart, the
  // files actually used may be spelled otherwise (LoadReport names the file
  // read): an existing file that differs only in case is read and rewritten,
  // and only a new file takes the key's own spelling.
  NUnicodeString FilePath() const;
  NUnicodeString PrivateFilePath() const;
  NUnicodeString FolderPath() const;

 private:
  // What this key knows of a file as it last read or wrote it. Loading
  // keeps the usual file's bytes (a byte-order mark, then the text the table
  // keeps) rather than hash them; the hash is taken when the table is about
  // to go, or for a file decoding changed.
  struct FileState {
    bool existed = false;
    bool hashed = true;
    std::uint64_t hash = 0;
    std::string_view mark;  // until hashed: the bytes before `text`
    std::string_view text;  // until hashed: the table's copy of the rest
    bool SameAs(const std::string& bytes) const;
    void Hash();
  };

  NIniFileKey(const NIniFileStore& store, NKeyPath path, bool readOnly);

  bool Load(NReportMessageParams& params);
  // Settles the journal that a load found beside the key file `path`: under
  // the exclusive lock when it is free at once, else by reading the old
  // bytes from it into *raw.
  NStatus SettleJournal(const NUnicodeString& path, NKeyJournal& journal, bool whole, std::string* raw,
                        NKeyJournal::Outcome* outcome) const;
  bool LoadFile(Map& map, std::u16string_view root, FileState* state, NIniLoadReport* report,
                NReportMessageParams& params);
  // The key's file under `root` for a save: the existing one, whatever its
  // case, else the path a new one is made at.
  NUnicodeString FileToSave(std::u16string_view root) const;
  NStatus LockWithWarning(NFile& file, NLockKind kind) const;
  bool Change(std::u16string_view name, NIniFileData* data);
  NIniFileData* FindData(std::u16string_view name) const;
  bool SaveFiles(NReportMessageParams& params);
  void MergeOnto(const std::string& mainBytes, const std::string& privateBytes);

  const NIniFileStore& m_store;
  NKeyPath m_path;
  bool m_readOnly;
  bool m_modified = false;
  std::unique_ptr<Map> m_map;
  std::uint64_t m_tableGeneration = 0;
  FileState m_files[2];
  NIniLoadReport m_reports[2];
};
