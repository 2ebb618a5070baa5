#include "tools/NCommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>

#include "base/NUnicodeString.h"
#include "location/NReportMessageParams.h"
#include "platform/NConsole.h"
#include "platform/NPlatform.h"

namespace {

// A message code: 0x followed by hex digits, or decimal; 32 bits.
bool ParseCode(std::string_view text, std::uint32_t* code) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *code, base);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

std::string Utf8(std::u16string_view text) { return NUnicodeString(text).ToUtf8(); }

}  // namespace

void NCommandLine::Out(std::string_view text) { NWriteStandard(NStandardStream::kOutput, text); }

void NCommandLine::Error(std::string_view text) { NWriteStandard(NStandardStream::kError, text); }

int NCommandLine::Run(const std::vector<std::string>& args) {
  CLI::App app("cfgdeck: inspect and change a cfgdeck configuration folder.\n"
               "Without a command, prints an overview of the configuration folder.",
               "cfgdeck");
  app.option_defaults()->always_capture_default();
  app.add_option("--config", m_configFolder, "The configuration folder (default: the current folder)")
      ->option_text("DIR");

  std::string code;
  std::vector<std::string> messageArguments;
  CLI::App* message = app.add_subcommand("message", "Print the text of a message code with its arguments");
  message->add_option("CODE", code, "The message code: 0x followed by hex digits, or decimal")->required();
  message->add_option("ARG", messageArguments, "Insertion arguments %1, %2, ...");

  // CLI11 takes the arguments last first, without the program name.
  std::vector<std::string> reversed(args.rbegin(), args.rend());
  if (!reversed.empty()) reversed.pop_back();
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    Out(app.help());
    return kSuccess;
  } catch (const CLI::CallForAllHelp&) {
    Out(app.help("", CLI::AppFormatMode::All));
    return kSuccess;
  } catch (const CLI::ParseError& e) {
    // A subcommand's --help raises CallForHelp from within the subcommand.
    Error(std::string("cfgdeck: ") + e.what() + "\nRun 'cfgdeck --help' for usage.\n");
    return kUsage;
  }

  if (m_configFolder.empty()) m_configFolder = ".";
  if (message->parsed()) return Message(code, messageArguments);
  return Overview();
}

int NCommandLine::Message(const std::string& code, const std::vector<std::string>& arguments) {
  std::uint32_t value = 0;
  if (!ParseCode(code, &value)) {
    Error("cfgdeck message: '" + code + "' is not a 32-bit message code (0x followed by hex digits, or decimal)\n");
    return kUsage;
  }
  NReportMessageParams params(value);
  for (const std::string& argument : arguments) params.AddArgument(NUnicodeString::FromUtf8(argument));
  Out(params.GetText().ToUtf8());
  return kSuccess;
}

int NCommandLine::Overview() {
  NPlatform& platform = NPlatform::Default();
  const NUnicodeString folder = NUnicodeString::FromUtf8(m_configFolder);
  Out("Configuration folder: " + m_configFolder + "\n");
  if (!platform.IsFolder(folder)) {
    Error("cfgdeck: the configuration folder '" + m_configFolder + "' does not exist\n");
    return kFailure;
  }
  std::vector<NFolderEntry> entries;
  if (NStatus status = platform.ListFolder(folder, &entries); !status) {
    NReportMessageParams params(status.Code());
    Error("cfgdeck: cannot list '" + m_configFolder + "': " + params.GetText().ToUtf8());
    return kFailure;
  }
  std::sort(entries.begin(), entries.end(), [](const NFolderEntry& a, const NFolderEntry& b) {
    return NUnicodeString::CompareIgnoreCase(a.name, b.name) < 0;
  });
  Out("Keys:\n");
  for (const NFolderEntry& entry : entries) {
    if (entry.kind == NPathKind::kFolder) {
      Out("  " + Utf8(entry.name) + "\\ (folder)\n");
    } else if (entry.kind == NPathKind::kFile && entry.name.size() > 4 &&
               NUnicodeString::CompareIgnoreCase(std::u16string_view(entry.name).substr(entry.name.size() - 4),
                                                 u".ini") == 0) {
      Out("  " + Utf8(std::u16string_view(entry.name).substr(0, entry.name.size() - 4)) + "\n");
    }
  }
  return kSuccess;
}
