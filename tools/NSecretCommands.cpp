#include "tools/NSecretCommands.h"

#include <CLI/CLI.hpp>

#include <algorithm>

#include "base/NUnicodeString.h"
#include "config/NSecretKeyring.h"
#include "platform/NConsole.h"
#include "tools/NToolOutput.h"
#include "tools/NToolStore.h"

namespace {

// A passphrase, from the terminal without echo or a line of stdin.
bool ReadPassphrase(const std::string& prompt, bool fromStdin, NUnicodeString* passphrase) {
  if (!fromStdin) NErr(prompt);
  std::string line;
  if (!NReadStandardLine(&line, false)) {
    NErr("cfgdeck: no passphrase was given (" + prompt.substr(0, prompt.find(':')) + ")\n");
    return false;
  }
  *passphrase = NUnicodeString::FromUtf8(line);
  std::fill(line.begin(), line.end(), '\0');
  return true;
}

int Failed(const std::string& what, const NReportMessageParams& params) {
  std::string text = params.GetText().ToUtf8();
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  NErr("cfgdeck passphrase: " + what + ": " + text + "\n");
  return kExitFailure;
}

const char* ProtectionName(NSecretProtection protection) {
  switch (protection) {
    case NSecretProtection::kPassphrase:
      return "passphrase";
    case NSecretProtection::kSystemKeyring:
      return "system keyring";
    case NSecretProtection::kKeyFile:
      return "key file";
  }
  return "";
}

}  // namespace

NSecretCommands::NSecretCommands(CLI::App& app) {
  m_passphrase = app.add_subcommand("passphrase", "The configuration passphrase, which protects saved passwords");
  m_passphrase->require_subcommand(1);
  m_status = m_passphrase->add_subcommand("status", "Print what protects the encrypted values");
  m_set = m_passphrase->add_subcommand("set", "Set a passphrase where there is none; every encrypted value is "
                                              "encrypted anew");
  m_change = m_passphrase->add_subcommand("change", "Replace the passphrase; every encrypted value is encrypted anew");
  m_clear = m_passphrase->add_subcommand(
      "clear", "Remove the passphrase; every encrypted value is encrypted anew with the key the system keeps");
  for (CLI::App* command : {m_status, m_set, m_change, m_clear}) {
    command->add_flag("--stdin", m_stdin,
                      "Read the passphrases from standard input, one a line: the current one first, then the new");
  }
  for (CLI::App* command : {m_set, m_change}) {
    command
        ->add_option("--work-factor", m_workFactor,
                     "PBKDF2 iterations (default: as many as take about 0.3 s on this machine)")
        ->option_text("N")
        ->check(CLI::Range(NSecretKeyring::kMinimumIterations, kPbkdf2MaxIterations));
  }
}

bool NSecretCommands::Parsed() const { return m_passphrase->parsed(); }

int NSecretCommands::Run(const std::string& configFolder, const std::string& appName) {
  NToolStore store(configFolder, appName);
  if (m_status->parsed()) return Status(configFolder);
  if (m_set->parsed()) return Change(configFolder, false, true);
  if (m_change->parsed()) return Change(configFolder, true, true);
  return Change(configFolder, true, false);
}

bool NSecretCommands::OpenSecrets(const std::string& configFolder, bool fromStdin) {
  const auto keyring = NSecretKeyring::Use(NUnicodeString::FromUtf8(configFolder));
  NReportMessageParams params;
  NUnicodeString passphrase;
  if (keyring->HasPassphrase(params) &&
      !ReadPassphrase("Configuration passphrase: ", fromStdin, &passphrase)) {
    return false;
  }
  if (params.GetCode() == 0 && keyring->Unlock(passphrase, params)) return true;
  Failed("the secrets of '" + configFolder + "' do not open", params);
  return false;
}

int NSecretCommands::Status(const std::string& configFolder) {
  const auto keyring = NSecretKeyring::Use(NUnicodeString::FromUtf8(configFolder));
  NReportMessageParams params;
  const bool hasPassphrase = keyring->HasPassphrase(params);
  if (params.GetCode() != 0) return Failed("cannot read the folder", params);
  std::string text = std::string("Passphrase=") + (hasPassphrase ? "set" : "none") + "\n";
  if (hasPassphrase) {
    text += "Protection=passphrase\n";
  } else {
    NSecretKey key;
    if (!keyring->Key(nullptr, &key, params)) return Failed("no key for the folder", params);
    text += std::string("Protection=") + ProtectionName(*keyring->Protection()) + "\n";
    text += "Key kept in=" + keyring->KeptIn().ToUtf8() + "\n";
  }
  const bool pending = keyring->IsChangePending(params);
  text += std::string("Change pending=") + (pending ? "true" : "false") + "\n";
  NOut(text);
  return kExitSuccess;
}

int NSecretCommands::Change(const std::string& configFolder, bool needsCurrent, bool setsNew) {
  const auto keyring = NSecretKeyring::Use(NUnicodeString::FromUtf8(configFolder));
  NReportMessageParams params;
  const bool hasPassphrase = keyring->HasPassphrase(params);
  if (params.GetCode() != 0) return Failed("cannot read the folder", params);
  if (needsCurrent != hasPassphrase) {
    NErr(hasPassphrase ? "cfgdeck passphrase set: a passphrase is set already; use 'cfgdeck passphrase change'\n"
                       : "cfgdeck passphrase: no passphrase is set\n");
    return kExitFailure;
  }
  NUnicodeString current, next;
  if (needsCurrent && !ReadPassphrase("Current passphrase: ", m_stdin, &current)) return kExitFailure;
  if (!keyring->Unlock(current, params)) return Failed("the folder does not open", params);
  if (setsNew) {
    NUnicodeString repeated;
    if (!ReadPassphrase("New passphrase: ", m_stdin, &next)) return kExitFailure;
    if (!m_stdin && !ReadPassphrase("Repeat the new passphrase: ", false, &repeated)) return kExitFailure;
    if (next.empty()) {
      NErr("cfgdeck passphrase: the new passphrase is empty; use 'cfgdeck passphrase clear' to remove it\n");
      return kExitFailure;
    }
    if (!m_stdin && repeated != next) {
      NErr("cfgdeck passphrase: the two new passphrases differ; nothing was changed\n");
      return kExitFailure;
    }
  }
  const std::uint32_t workFactor =
      m_workFactor != 0 ? m_workFactor : NSecretKeyring::MeasureIterations(0.3);
  std::size_t keys = 0;
  const bool terminal = NIsTerminal(NStandardStream::kError);
  auto progress = [&](std::size_t done) {
    keys = done;
    if (terminal && done % 64 == 0) NErr("\rEncrypting anew: " + std::to_string(done) + " keys");
  };
  const bool changed = keyring->ChangePassphrase(next, workFactor, progress, params);
  if (terminal && keys >= 64) NErr("\n");
  std::fill(current.begin(), current.end(), u'\0');
  std::fill(next.begin(), next.end(), u'\0');
  if (!changed) return Failed("the passphrase was not changed", params);
  std::string text = !setsNew ? std::string("Passphrase removed")
                              : (needsCurrent ? "Passphrase changed" : "Passphrase set") +
                                    std::string(" (work factor ") + std::to_string(workFactor) + ")";
  NOut(text + "; every encrypted value in the folder's " + std::to_string(keys) + " keys is encrypted anew\n");
  return kExitSuccess;
}
