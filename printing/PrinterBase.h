#pragma once

#include <cstdint>

#include "base/NExport.h"
#include "base/NUnknown.h"
#include "config/NMarginData.h"
#include "location/NReportMessageParams.h"
#include "printing/NPrinterStartup.h"

// Margin checks.
inline constexpr std::uint32_t kMsgMarginLeftMinimum = 0xE138020A;    // %1: the minimum
inline constexpr std::uint32_t kMsgMarginRightMinimum = 0xE138020B;   // %1: the minimum
inline constexpr std::uint32_t kMsgMarginTopMinimum = 0xE138020C;     // %1: the minimum
inline constexpr std::uint32_t kMsgMarginBottomMinimum = 0xE138020D;  // %1: the minimum
inline constexpr std::uint32_t kMsgMarginsOffPage = 0xE138020E;
inline constexpr std::uint32_t kMsgMarginsInvalid = 0xE138020F;  // %1: the failure lines

// The process's printer service: the start-up of the printing back end (a
// worker thread under a watchdog, see NPrinterStartup), its status, and the
// margin arithmetic against a device's limits, which a derived class
// supplies. Margins are in inches.
class CFGDECK_API PrinterBase : public NUnknown {
 public:
  using Probe = NPrinterStartup::Probe;
  using Notifier = NPrinterStartup::Notifier;

  // Left, right, top, bottom.
  struct Margins {
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
  };

  // Where the device prints on its paper.
  struct MarginLimits {
    double leftOffset = 0;  // the paper's left edge to the printable area
    double printableWidth = 0;
    double topOffset = 0;  // the paper's top edge to the printable area
    double printableHeight = 0;
    double pageWidth = 0;
    double pageHeight = 0;
  };

  enum class Margin { kLeft, kRight, kTop, kBottom };

  enum class MarginValidationResult {
    kValid,
    kNoLimits,  // the device's limits could not be had
    kLeftBelowMinimum,
    kRightBelowMinimum,
    kTopBelowMinimum,
    kBottomBelowMinimum,
    kNoPrintableArea,  // off the page, or opposite margins overlap
  };

  // The process's start-up (NPrinterStartup): the first call remembers the
  // parameters and starts; later calls do nothing.
  static void Initialize(std::uint64_t timeout, Probe probe, Notifier notifier);
  static void Suspend(const NReportMessageParams& reason);
  static void Resume();
  static NReportMessageParams GetStatus();
  static bool HasInitializationSucceeded();
  // 0 suspended or never started, 1 initialising, 2 succeeded, 3 failed or
  // timed out.
  static int GetState();

  // Three decimals: x * 1000 + 0.5 truncated toward zero, over 1000. Half
  // rounds up for non-negative values; a negative value is truncated
  // toward zero after the 0.5 is added.
  static double RoundMargin(double value);

  // Turns margins into the edges of the printed area, measured from the
  // printable area's left and top: left - left offset, page width - right -
  // left offset, top - top offset, page height - bottom - top offset.
  // `limits` receives the device's limits; false, with their params, when
  // they cannot be had.
  bool CalculateMargins(Margins& margins, MarginLimits& limits, NReportMessageParams& params);

  // Checks one margin against its minimum (the part of the paper the device
  // cannot print on), and that the margins leave a printable area. `value`
  // receives that margin's minimum, rounded, whenever the limits could be
  // had. Margins compare at RoundMargin's precision.
  MarginValidationResult ValidateMargin(const NMarginData& margins, Margin margin, double& value,
                                        NReportMessageParams& params);
  // Checks all four and the printable area; every failure is one line of
  // kMsgMarginsInvalid. The result names the first.
  MarginValidationResult ValidateMargins(const NMarginData& margins, NReportMessageParams& params);

  // The current device's limits.
  virtual bool CalculateMarginLimits(MarginLimits& limits, NReportMessageParams& params) = 0;

 protected:
  PrinterBase() = default;
  ~PrinterBase() override = default;
};
