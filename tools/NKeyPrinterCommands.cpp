#include "tools/NKeyPrinterCommands.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <thread>

#include "base/NUnicodeString.h"
#include "dialogs/NPackedKey.h"
#include "location/NReportMessageParams.h"
#include "printing/NFormatInches.h"
#include "printing/Printer.h"

namespace {

// 0x followed by hex digits, or decimal; 32 bits.
bool ParseValue(std::string_view text, std::uint32_t* value) {
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *value, base);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

// A message's text on one line of the tool's output.
std::string Inline(const NReportMessageParams& params) {
  std::string text = params.GetText().ToUtf8();
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
  return text;
}

}  // namespace

NKeyPrinterCommands::NKeyPrinterCommands(CLI::App& app, Output out, Output err, NPrinterDevices& devices)
    : m_out(std::move(out)), m_err(std::move(err)), m_devices(devices) {
  m_keyString = app.add_subcommand(
      "key-string", "Print a packed key value's modifier texts, a tab, and the key without its modifiers in decimal");
  m_keyString->add_option("VALUE", m_value, "The packed key value: 0x followed by hex digits, or decimal")->required();
  m_printer = app.add_subcommand("printer", "The printer service");
  m_printer->require_subcommand(1);
  m_status = m_printer->add_subcommand(
      "status", "Start the printer service, wait for it, and print its state (0-3), a tab, and its status");
  m_status->add_option("--timeout", m_timeout, "Milliseconds the back end has to start (default 10000)")
      ->option_text("MS")
      ->check(CLI::Validator(
          [](std::string& text) {
            // CLI11 would wrap a negative number around into the unsigned range.
            return text.rfind('-', 0) == 0 ? std::string("a timeout cannot be negative") : std::string();
          },
          "MS"));
  m_margins = m_printer->add_subcommand(
      "margins",
      "Round margins (inches) and check them against the default printer; print per margin its name, "
      "the rounded margin and the edge of the printed area");
  const char* const names[] = {"LEFT", "RIGHT", "TOP", "BOTTOM"};
  for (std::size_t i = 0; i < m_marginValues.size(); ++i) {
    m_margins->add_option(names[i], m_marginValues[i], "A margin in inches")->required();
  }
}

bool NKeyPrinterCommands::Parsed() const { return m_keyString->parsed() || m_printer->parsed(); }

int NKeyPrinterCommands::Run() {
  if (m_keyString->parsed()) return KeyString();
  if (m_status->parsed()) return Status();
  return Margins();
}

int NKeyPrinterCommands::Failed(const NReportMessageParams& params) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "cfgdeck: 0x%08x: ", params.GetCode());
  m_err(prefix + Inline(params) + "\n");
  return kExitFailure;
}

int NKeyPrinterCommands::KeyString() {
  std::uint32_t value = 0;
  if (!ParseValue(m_value, &value)) {
    m_err("cfgdeck key-string: '" + m_value + "' is not a 32-bit value (0x followed by hex digits, or decimal)\n");
    return kExitUsage;
  }
  m_out(KeyModifiersToString(value).ToUtf8() + "\t" + std::to_string(GetUnmodifiedKey(value)) + "\n");
  return kExitSuccess;
}

int NKeyPrinterCommands::Status() {
  // Shared with the notifier, which may still run after this returns.
  struct Word {
    std::mutex mutex;
    std::condition_variable arrived;
    bool told = false;
  };
  const auto word = std::make_shared<Word>();
  Printer::Initialize(m_timeout, [word](bool, const NReportMessageParams&) {
    std::lock_guard lock(word->mutex);
    word->told = true;
    word->arrived.notify_all();
  });
  {
    std::unique_lock lock(word->mutex);
    // A year is as good as forever here, and cannot overflow the clock.
    const std::uint64_t wait = std::min<std::uint64_t>(m_timeout, 366ull * 24 * 3600 * 1000);
    word->arrived.wait_for(lock, std::chrono::milliseconds(wait), [&] { return word->told; });
  }
  // Without a word the watchdog decides, an instant after the time-out.
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  while (PrinterBase::GetState() == NPrinterStartup::kInitializing && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const int state = PrinterBase::GetState();
  const NReportMessageParams status = PrinterBase::GetStatus();
  m_out(std::to_string(state) + "\t" + Inline(status) + "\n");
  return state == NPrinterStartup::kSucceeded ? kExitSuccess : Failed(status);
}

int NKeyPrinterCommands::Margins() {
  NReportMessageParams params;
  if (!Printer::SelectCurrentPrinter(std::u16string_view(), false, params, m_devices)) return Failed(params);
  const NUnknownPointer<Printer> printer = Printer::GetCurrentPrinter();
  const NMarginData margins{PrinterBase::RoundMargin(m_marginValues[0]), PrinterBase::RoundMargin(m_marginValues[1]),
                            PrinterBase::RoundMargin(m_marginValues[2]), PrinterBase::RoundMargin(m_marginValues[3])};
  if (printer->ValidateMargins(margins, params) != PrinterBase::MarginValidationResult::kValid) return Failed(params);
  PrinterBase::Margins edges{margins.left, margins.right, margins.top, margins.bottom};
  PrinterBase::MarginLimits limits;
  if (!printer->CalculateMargins(edges, limits, params)) return Failed(params);
  const struct {
    const char* name;
    double margin;
    double edge;
  } lines[] = {{"left", margins.left, edges.left},
               {"right", margins.right, edges.right},
               {"top", margins.top, edges.top},
               {"bottom", margins.bottom, edges.bottom}};
  std::string text;
  for (const auto& line : lines) {
    text += std::string(line.name) + "\t" + NFormatInches(line.margin).ToUtf8() + "\t" +
            NFormatInches(line.edge).ToUtf8() + "\n";
  }
  m_out(text);
  return kExitSuccess;
}
