#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/NPrinterDevices.h"
#include "tools/NToolOutput.h"

namespace CLI {
class App;
}

class NReportMessageParams;

// The tool's "key-string" and "printer" commands:
//   key-string VALUE            KeyModifiersToString(VALUE), a tab, GetUnmodifiedKey(VALUE) in decimal
//   printer status [--timeout MS]
//                               starts the printer service, waits for its word or the time-out, and prints
//                               the state (0-3), a tab and the status text
//   printer margins LEFT RIGHT TOP BOTTOM
//                               rounds the margins (inches) and checks them against the default printer;
//                               prints one line per margin: its name, the rounded margin and the edge of the
//                               printed area, tab-separated
// A failure goes to stderr as "cfgdeck: 0x<code>: <text>" and exits 1.
class NKeyPrinterCommands {
 public:
  using Output = std::function<void(std::string_view)>;

  static constexpr std::uint64_t kDefaultTimeout = 10000;

  // Adds the commands to `app`, which must outlive this object, as must
  // `devices`.
  explicit NKeyPrinterCommands(CLI::App& app, Output out = NOut, Output err = NErr,
                               NPrinterDevices& devices = NPrinterDevices::Default());

  // Whether the parsed command line named one of the commands.
  bool Parsed() const;
  // Runs that command; returns the tool's exit status.
  int Run();

 private:
  int KeyString();
  int Status();
  int Margins();
  int Failed(const NReportMessageParams& params);

  Output m_out;
  Output m_err;
  NPrinterDevices& m_devices;
  CLI::App* m_keyString = nullptr;
  CLI::App* m_printer = nullptr;
  CLI::App* m_status = nullptr;
  CLI::App* m_margins = nullptr;
  std::string m_value;
  std::uint64_t m_timeout = kDefaultTimeout;
  std::array<double, 4> m_marginValues{};
};
