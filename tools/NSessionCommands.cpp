#include "tools/NSessionCommands.h"

#include "tools/NSecretCommands.h"

#include <cstdio>

#include "base/NUnknownPointer.h"
#include "config/ISessionConfig.h"
#include "config/NSessionName.h"
#include "config/NSessionPath.h"
#include "config/NSessionTree.h"
#include "store/NIniFileStoreFactory.h"
#include "tools/NFieldPrinter.h"
#include "tools/NToolOutput.h"

namespace {

NUnicodeString SessionPath(const std::string& path) { return NSessionPathFromUtf8(path); }

int Failed(const std::string& what, const NReportMessageParams& params) {
  NErr("cfgdeck: " + what + ": " + params.GetText().ToUtf8());
  if (params.GetText().empty() || params.GetText().back() != u'\n') NErr("\n");
  return kExitFailure;
}

// The message of a refused name, as "0x%08x text", on stderr unless it is
// the command's answer.
int RefusedName(const NReportMessageParams& params, bool answer = false) {
  char code[16];
  std::snprintf(code, sizeof code, "0x%08x", static_cast<unsigned>(params.GetCode()));
  std::string text = params.GetText().ToUtf8();
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  const std::string line = std::string(code) + " " + text + "\n";
  answer ? NOut(line) : NErr(line);
  return kExitFailure;
}

using NSessionHandle = NUnknownPointer<ISessionConfig>;

}  // namespace

NSessionCommands::NSessionCommands(const std::string& folder, const std::string& appName)
    : m_store(folder, appName), m_folder(folder) {}

int NSessionCommands::List() {
  std::unique_ptr<NProfileStore> store = m_store.Factory().CreateStore();
  NReportMessageParams params;
  std::unique_ptr<NProfileKey> root = store->OpenRootKey(true, params);
  if (!root) return Failed("open the configuration folder", params);
  std::string lines;
  NSessionTree tree(*root);
  const bool walked = tree.Walk(
      [&lines](const NSessionTreeEntry& entry) {
        lines += entry.path.ToUtf8() + (entry.isSession ? "\n" : "\\\n");
        if (lines.size() > 1 << 16) {
          NOut(lines);
          lines.clear();
        }
        return true;
      },
      params);
  NOut(lines);
  return walked ? kExitSuccess : Failed("walk the sessions", params);
}

int NSessionCommands::Show(const std::string& path, bool json, bool save, bool showSecrets) {
  if (showSecrets && !NSecretCommands::OpenSecrets(m_folder, false)) return kExitFailure;
  NReportMessageParams params;
  // Writable: loading converts an old logon script and writes it at once.
  auto session = NSessionHandle::Adopt(NOpenSession(SessionPath(path), false, params));
  if (!session) return Failed("open the session '" + path + "'", params);
  NOut(NFormatFields(session->Config().AllFields(), json, u"Sessions\\" + SessionPath(path), showSecrets));
  if (!save) return kExitSuccess;
  // Every value, as a save with the save flag set writes it.
  for (NProfileData* field : session->Config().AllFields()) field->Touch();
  return session->Save(params) ? kExitSuccess : Failed("save the session '" + path + "'", params);
}

int NSessionCommands::Create(const std::string& path) {
  const NUnicodeString sessionPath = SessionPath(path);
  NReportMessageParams params;
  if (!NCheckSessionName(NSessionFolderOf(sessionPath), u"", NSessionNameOf(sessionPath), true, params)) {
    return RefusedName(params);
  }
  auto session = NSessionHandle::Adopt(NCreateSession(sessionPath, params));
  if (!session || !session->Save(params)) return Failed("create the session '" + path + "'", params);
  return kExitSuccess;
}

int NSessionCommands::Rename(const std::string& path, const std::string& newName) {
  const NUnicodeString sessionPath = SessionPath(path);
  const NUnicodeString name = NUnicodeString::FromUtf8(newName);
  NReportMessageParams params;
  if (!NCheckSessionName(sessionPath, NSessionNameOf(sessionPath), name, false, params)) return RefusedName(params);
  auto session = NSessionHandle::Adopt(NOpenSession(sessionPath, false, params));
  if (!session || !session->Rename(name, params)) return Failed("rename the session '" + path + "'", params);
  return kExitSuccess;
}

int NSessionCommands::Copy(const std::string& path, const std::string& newPath) {
  const NUnicodeString target = SessionPath(newPath);
  NReportMessageParams params;
  if (!NCheckSessionName(NSessionFolderOf(target), u"", NSessionNameOf(target), true, params)) {
    return RefusedName(params);
  }
  auto session = NSessionHandle::Adopt(NOpenSession(SessionPath(path), true, params));
  if (!session) return Failed("open the session '" + path + "'", params);
  auto copy = NSessionHandle::Adopt(session->Copy(target, params));
  return copy ? kExitSuccess : Failed("copy the session '" + path + "'", params);
}

int NSessionCommands::Delete(const std::string& path) {
  NReportMessageParams params;
  auto session = NSessionHandle::Adopt(NOpenSession(SessionPath(path), false, params));
  if (!session || !session->Delete(params)) return Failed("delete the session '" + path + "'", params);
  return kExitSuccess;
}

int NSessionCommands::ValidateName(const std::string& location, const std::string& oldName, const std::string& newName,
                                   bool isNew) {
  NReportMessageParams params;
  if (NCheckSessionName(SessionPath(location), NUnicodeString::FromUtf8(oldName), NUnicodeString::FromUtf8(newName),
                        isNew, params)) {
    return kExitSuccess;
  }
  return RefusedName(params, true);
}
