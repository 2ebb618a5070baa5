#include "tools/NStoreCommands.h"

#include "config/NEncryptedString.h"
#include "config/NSecretFormat.h"

#include <charconv>

#include "config/NSessionTree.h"
#include "location/NReportMessageParams.h"
#include "platform/NPlatform.h"
#include "store/NIniFileKey.h"
#include "store/NIniFileKeyIterator.h"
#include "store/NTextFile.h"
#include "tools/NToolOutput.h"

namespace {

std::string Utf8(std::u16string_view text) { return NUnicodeString(text).ToUtf8(); }

int Refuse(const std::string& why) {
  NErr("cfgdeck: " + why + "\n");
  return kExitFailure;
}

int Misuse(const std::string& why) {
  NErr("cfgdeck: " + why + "\n");
  return kExitUsage;
}

int Failed(const std::string& what, const NReportMessageParams& params) {
  NErr("cfgdeck: " + what + ": " + params.GetText().ToUtf8());
  return kExitFailure;
}

bool ParseDword(std::string_view text, std::uint32_t* value) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value, base);
  return !text.empty() && error == std::errc() && end == text.data() + text.size();
}

bool ParseHex(std::string_view text, std::string* bytes) {
  if (text.size() % 2) return false;
  for (size_t i = 0; i < text.size(); i += 2) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data() + i, text.data() + i + 2, value, 16);
    if (error != std::errc() || end != text.data() + i + 2) return false;
    bytes->push_back(static_cast<char>(value));
  }
  return true;
}

// Reads a value through the key's getter of its kind, as a host would.
bool ReadValue(const NIniFileKey& key, const NUnicodeString& name, std::uint32_t kind) {
  switch (static_cast<NProfileValueType>(kind)) {
    case NProfileValueType::kDword: {
      std::uint32_t value;
      return key.GetDwordValue(name, &value);
    }
    case NProfileValueType::kString: {
      NUnicodeString value;
      return key.GetStringValue(name, &value);
    }
    case NProfileValueType::kBinary: {
      std::uint32_t length = 0;
      if (!key.GetBinaryValue(name, nullptr, &length)) return false;
      std::string bytes(length, '\0');
      return key.GetBinaryValue(name, bytes.data(), &length);
    }
    case NProfileValueType::kMultiString: {
      NStringArray value;
      return key.GetMultiStringValue(name, &value);
    }
  }
  return false;
}

class ProgressBar {
 public:
  explicit ProgressBar(std::size_t total) : m_total(total), m_shown(total >= 1000 && NIsTerminal(NStandardStream::kError)) {}
  ~ProgressBar() {
    if (m_shown) NErr("\r\x1b[K");
  }
  void Update(std::size_t done) {
    if (!m_shown) return;
    const std::size_t percent = done * 100 / m_total;
    if (percent == m_lastPercent) return;
    m_lastPercent = percent;
    std::string bar(percent / 4, '#');
    bar.resize(25, '.');
    NErr("\rchecking [" + bar + "] " + std::to_string(percent) + "% (" + std::to_string(done) + "/" +
         std::to_string(m_total) + " keys)");
  }

 private:
  std::size_t m_total;
  bool m_shown;
  std::size_t m_lastPercent = 101;
};

// Every key under `path`, depth first in the iterator's order.
void CollectKeys(NPlatform& platform, const NIniFileStore& store, const NKeyPath& path, std::uint32_t kind,
                 std::vector<NKeyPath>* keys) {
  if (kind != kSubKeyFolder) keys->push_back(path);
  if (kind == kSubKeyFile) return;
  NIniFileKey::Iterator children(platform, path.Under(store.Root(), platform.PathSeparator()));
  NUnicodeString name;
  std::uint32_t childKind;
  while (children.Next(&name, &childKind)) {
    NKeyPath child = path;
    if (child.Append(name)) CollectKeys(platform, store, child, childKind, keys);
  }
}

}  // namespace

NStoreCommands::NStoreCommands(const std::string& folder)
    : m_folder(folder), m_store(NUnicodeString::FromUtf8(folder), NUnicodeString()) {}

bool NStoreCommands::ParsePath(const std::string& key, NKeyPath* path, bool rootAllowed) {
  if (key.empty()) {
    if (rootAllowed) return true;
    NErr("cfgdeck: name a key: the empty path is the folder itself, which holds no values\n");
    return false;
  }
  if (path->Append(NUnicodeString::FromUtf8(key), true)) return true;
  NErr("cfgdeck: refused key path '" + key + "': names separated by \\ or /, none empty, \".\" or \"..\", and "
       "none leaving the folder\n");
  return false;
}

std::unique_ptr<NIniFileKey> NStoreCommands::OpenKey(const NKeyPath& path, bool readOnly) {
  NReportMessageParams params;
  auto key = NIniFileKey::Open(m_store, path, readOnly, params);
  if (!key) Failed("cannot open key '" + Utf8(path.Join(u'\\')) + "'", params);
  return key;
}

int NStoreCommands::Dump(const std::string& keyPath) {
  NKeyPath path;
  if (!ParsePath(keyPath, &path)) return kExitFailure;
  auto key = OpenKey(path, true);
  if (!key) return kExitFailure;
  NTextFile out;
  key->Values().ForEach([&out](const NIniFileKey::Map::Element& e) { e.Data()->WriteRecord(out, e.Name()); });
  NOut(out.Pending());
  return kExitSuccess;
}

int NStoreCommands::Iterate(const std::string& keyPath, bool values) {
  NKeyPath path;
  if (!ParsePath(keyPath, &path, !values)) return kExitFailure;
  auto key = OpenKey(path, true);
  if (!key) return kExitFailure;
  auto iterator = key->CreateIterator(values);
  NUnicodeString name;
  std::uint32_t kind;
  std::string lines;
  while (iterator->Next(&name, &kind)) lines += std::to_string(kind) + "\t" + name.ToUtf8() + "\n";
  NOut(lines);
  return kExitSuccess;
}

int NStoreCommands::Keys(const std::string& key) { return Iterate(key, false); }

int NStoreCommands::Values(const std::string& key) { return Iterate(key, true); }

int NStoreCommands::Set(const std::string& keyPath, const std::string& name, const NewValue& value) {
  NKeyPath path;
  if (!ParsePath(keyPath, &path)) return kExitFailure;
  const NUnicodeString valueName = NUnicodeString::FromUtf8(name);
  std::uint32_t dword = 0;
  std::string bytes;
  if (value.dword && !ParseDword(*value.dword, &dword)) {
    return Misuse("'" + *value.dword + "' is not a 32-bit number (decimal, or 0x followed by hex digits)");
  }
  if (value.binary && !ParseHex(*value.binary, &bytes)) {
    return Misuse("'" + *value.binary + "' is not pairs of hex digits");
  }
  auto key = OpenKey(path, false);
  if (!key) return kExitFailure;
  bool accepted = false;
  if (value.dword) {
    accepted = key->SetDwordValue(valueName, dword);
  } else if (value.string) {
    accepted = key->SetStringValue(valueName, NUnicodeString::FromUtf8(*value.string));
  } else if (value.binary) {
    accepted = key->SetBinaryValue(valueName, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
  } else if (value.multi) {
    NStringArray strings;
    for (const std::string& s : *value.multi) strings.Add(NUnicodeString::FromUtf8(s));
    accepted = key->SetMultiStringValue(valueName, strings);
  } else if (value.secret) {
    NUnicodeString stored;
    NReportMessageParams params;
    if (!NEncryptedString::FromPlain(NUnicodeString::FromUtf8(*value.secret))
             .ToStore(NSecretPlace(key->GetPath(), valueName), &stored, params)) {
      return Failed("cannot encrypt value '" + name + "'", params);
    }
    accepted = key->SetStringValue(valueName, stored);
  }
  if (!accepted) {
    return Refuse("the store cannot hold this value: names cannot be empty or hold a double quote or a line "
                  "break, and texts cannot hold line breaks");
  }
  NReportMessageParams params;
  if (!key->Flush(params)) return Failed("cannot save key '" + keyPath + "'", params);
  return kExitSuccess;
}

int NStoreCommands::Delete(const std::string& keyPath, const std::string& name) {
  NKeyPath path;
  if (!ParsePath(keyPath, &path)) return kExitFailure;
  auto key = OpenKey(path, false);
  if (!key) return kExitFailure;
  if (!key->DeleteValue(NUnicodeString::FromUtf8(name))) return Refuse("key '" + keyPath + "' has no value '" + name + "'");
  NReportMessageParams params;
  if (!key->Flush(params)) return Failed("cannot save key '" + keyPath + "'", params);
  return kExitSuccess;
}

int NStoreCommands::DeleteKey(const std::string& keyPath) {
  NKeyPath path;
  if (!ParsePath(keyPath, &path)) return kExitFailure;
  auto parent = OpenKey(path.Parent(), false);
  if (!parent) return kExitFailure;
  const NUnicodeString leaf(path.Leaf());
  if (!parent->SubKeyExists(leaf)) return Refuse("there is no key '" + keyPath + "'");
  NReportMessageParams params;
  if (!parent->DeleteSubKey(leaf, params)) return Failed("cannot delete key '" + keyPath + "'", params);
  return kExitSuccess;
}

int NStoreCommands::Check(const std::string& keyPath) {
  NKeyPath path;
  if (!ParsePath(keyPath, &path, true)) return kExitFailure;
  NPlatform& platform = m_store.Platform();
  const NUnicodeString folder = path.Under(m_store.Root(), platform.PathSeparator());
  const bool hasFolder = platform.IsFolder(folder);
  const bool hasFile = !path.IsRoot() && platform.IsFile(folder + u".ini");
  if (!hasFolder && !hasFile) return Refuse("there is no key '" + (keyPath.empty() ? m_folder : keyPath) + "'");

  std::vector<NKeyPath> keys;
  CollectKeys(platform, m_store, path, hasFolder ? (hasFile ? kSubKeyFolderAndFile : kSubKeyFolder) : kSubKeyFile,
              &keys);
  std::size_t valueCount = 0;
  std::size_t problems = 0;
  std::string report;
  auto problem = [&](const NKeyPath& key, const std::string& what) {
    report += Utf8(key.Join(u'\\')) + ": " + what + "\n";
    ++problems;
  };
  ProgressBar progress(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    progress.Update(i);
    NReportMessageParams params;
    auto key = NIniFileKey::Open(m_store, keys[i], true, params);
    if (!key) {
      std::string text = params.GetText().ToUtf8();
      while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
      problem(keys[i], "cannot be read: " + text);
      continue;
    }
    for (int file = 0; file < 2; ++file) {
      const NIniLoadReport& load = key->LoadReport(file);
      if (load.file.empty()) continue;
      // Settled by the load itself: the key is whole again, so no problem.
      if (load.journal != NKeyJournal::Outcome::kNone) {
        report += Utf8(keys[i].Join(u'\\')) + ": " + std::string(NKeyJournal::Describe(load.journal)) + "\n";
      }
      if (load.emptyFile) problem(keys[i], "empty file");
      if (load.invalidLine) problem(keys[i], "line " + std::to_string(load.invalidLine) + ": " + load.problem);
      if (load.unterminated && !load.emptyFile) {
        problem(keys[i], "no line end after the last record: possibly interrupted save");
      }
    }
    auto values = key->CreateIterator(true);
    NUnicodeString name;
    std::uint32_t kind;
    while (values->Next(&name, &kind)) {
      if (ReadValue(*key, name, kind)) {
        ++valueCount;
      } else {
        problem(keys[i], "value '" + name.ToUtf8() + "' cannot be read as its kind");
      }
    }
  }
  progress.Update(keys.size());
  report += std::to_string(keys.size()) + " keys, " + std::to_string(valueCount) + " values, " +
            std::to_string(problems) + " problems\n";
  NOut(report);
  return problems == 0 ? kExitSuccess : kExitFailure;
}


int NStoreCommands::Overview() {
  NPlatform& platform = m_store.Platform();
  if (!platform.IsFolder(m_store.Root())) return Refuse("the configuration folder '" + m_folder + "' does not exist");
  NIniFileKey::Iterator top(platform, m_store.Root());
  NUnicodeString name;
  std::uint32_t kind;
  std::string lines = "Keys:\n";
  while (top.Next(&name, &kind)) {
    NKeyPath path;
    if (!path.Append(name)) continue;
    std::string line = "  " + name.ToUtf8() + (kind == kSubKeyFile ? "" : "\\");
    if (kind != kSubKeyFolder) {
      NReportMessageParams params;
      auto key = NIniFileKey::Open(m_store, path, true, params);
      line += key ? "  (" + std::to_string(key->Values().ValueCount()) + " values)" : "  (cannot be read)";
    }
    lines += line + "\n";
  }
  std::size_t sessions = 0, folders = 0;
  NReportMessageParams params;
  std::unique_ptr<NProfileKey> root = m_store.OpenRootKey(true, params);
  if (!root) return Failed("cannot open the configuration folder", params);
  NSessionTree tree(*root);
  const bool walked = tree.Walk(
      [&](const NSessionTreeEntry& entry) {
        ++(entry.isSession ? sessions : folders);
        return true;
      },
      params);
  lines += "Sessions: " + std::to_string(sessions) + " in " + std::to_string(folders) + " folders\n";
  NOut(lines);
  return walked ? kExitSuccess : Failed("cannot walk the sessions", params);
}
