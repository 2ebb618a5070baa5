#include "printing/PrinterBase.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

#include "location/NMessageModule.h"
#include "platform/NPlatform.h"
#include "printing/NFormatInches.h"

namespace {

void AbandonAtExit();

NPrinterStartup& ProcessStartup() {
  // Never freed: the detached threads may outlive every static.
  static const std::shared_ptr<NPrinterStartup>* const owner = [] {
    // Whatever the threads look up is created before the exit hook is
    // registered, and so destroyed only after the hook has run.
    NPlatform::Default();
    NMessageModule::Library();
    const auto* created = new std::shared_ptr<NPrinterStartup>(NPrinterStartup::Create());
    std::atexit(&AbandonAtExit);
    return created;
  }();
  return **owner;
}

void AbandonAtExit() { ProcessStartup().Abandon(); }

// One margin's check: its value, its minimum, and how a failure reads.
struct MarginCheck {
  double margin;
  double minimum;
  std::uint32_t message;
  PrinterBase::MarginValidationResult failure;
};

MarginCheck CheckOf(PrinterBase::Margin which, const NMarginData& m, const PrinterBase::MarginLimits& limits) {
  using Result = PrinterBase::MarginValidationResult;
  // The device cannot print on the paper outside its printable area; a
  // device that claims more than its paper is held to the paper.
  switch (which) {
    case PrinterBase::Margin::kLeft:
      return {m.left, std::max(0.0, limits.leftOffset), kMsgMarginLeftMinimum, Result::kLeftBelowMinimum};
    case PrinterBase::Margin::kRight:
      return {m.right, std::max(0.0, limits.pageWidth - limits.leftOffset - limits.printableWidth),
              kMsgMarginRightMinimum, Result::kRightBelowMinimum};
    case PrinterBase::Margin::kTop:
      return {m.top, std::max(0.0, limits.topOffset), kMsgMarginTopMinimum, Result::kTopBelowMinimum};
    case PrinterBase::Margin::kBottom:
      break;
  }
  return {m.bottom, std::max(0.0, limits.pageHeight - limits.topOffset - limits.printableHeight),
          kMsgMarginBottomMinimum, Result::kBottomBelowMinimum};
}

bool BelowMinimum(const MarginCheck& check) {
  return PrinterBase::RoundMargin(check.margin) < PrinterBase::RoundMargin(check.minimum);
}

NReportMessageParams MinimumMessage(const MarginCheck& check) {
  NReportMessageParams params(check.message);
  params.AddArgument(NFormatInches(check.minimum));
  return params;
}

// The edges, as CalculateMargins gives them, enclose some area.
bool HasPrintableArea(const PrinterBase::Margins& edges) {
  return PrinterBase::RoundMargin(edges.left) < PrinterBase::RoundMargin(edges.right) &&
         PrinterBase::RoundMargin(edges.top) < PrinterBase::RoundMargin(edges.bottom);
}

PrinterBase::Margins MarginsOf(const NMarginData& data) { return {data.left, data.right, data.top, data.bottom}; }

}  // namespace

void PrinterBase::Initialize(std::uint64_t timeout, Probe probe, Notifier notifier) {
  ProcessStartup().Initialize(timeout, std::move(probe), std::move(notifier));
}

void PrinterBase::Suspend(const NReportMessageParams& reason) { ProcessStartup().Suspend(reason); }

void PrinterBase::Resume() { ProcessStartup().Resume(); }

NReportMessageParams PrinterBase::GetStatus() { return ProcessStartup().GetStatus(); }

bool PrinterBase::HasInitializationSucceeded() { return ProcessStartup().GetState() == NPrinterStartup::kSucceeded; }

int PrinterBase::GetState() { return ProcessStartup().GetState(); }

double PrinterBase::RoundMargin(double value) {
  // Beyond the 32-bit range (or not a number) the conversion would be
  // undefined; such margins are nonsense anyway, so they saturate.
  const double scaled = value * 1000.0 + 0.5;
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
  if (std::isnan(scaled)) return 0;
  return static_cast<std::int32_t>(std::clamp(scaled, kLowest, kHighest)) / 1000.0;
}

bool PrinterBase::CalculateMargins(Margins& margins, MarginLimits& limits, NReportMessageParams& params) {
  if (!CalculateMarginLimits(limits, params)) return false;
  margins.left = margins.left - limits.leftOffset;
  margins.right = limits.pageWidth - margins.right - limits.leftOffset;
  margins.top = margins.top - limits.topOffset;
  margins.bottom = limits.pageHeight - margins.bottom - limits.topOffset;
  return true;
}

PrinterBase::MarginValidationResult PrinterBase::ValidateMargin(const NMarginData& margins, Margin margin,
                                                                double& value, NReportMessageParams& params) {
  MarginLimits limits;
  Margins edges = MarginsOf(margins);
  if (!CalculateMargins(edges, limits, params)) return MarginValidationResult::kNoLimits;
  const MarginCheck check = CheckOf(margin, margins, limits);
  value = RoundMargin(check.minimum);
  if (BelowMinimum(check)) {
    params = MinimumMessage(check);
    return check.failure;
  }
  if (!HasPrintableArea(edges)) {
    params = NReportMessageParams(kMsgMarginsOffPage);
    return MarginValidationResult::kNoPrintableArea;
  }
  return MarginValidationResult::kValid;
}

PrinterBase::MarginValidationResult PrinterBase::ValidateMargins(const NMarginData& margins,
                                                                 NReportMessageParams& params) {
  MarginLimits limits;
  Margins edges = MarginsOf(margins);
  if (!CalculateMargins(edges, limits, params)) return MarginValidationResult::kNoLimits;
  MarginValidationResult result = MarginValidationResult::kValid;
  NUnicodeString lines;
  for (const Margin which : {Margin::kLeft, Margin::kRight, Margin::kTop, Margin::kBottom}) {
    const MarginCheck check = CheckOf(which, margins, limits);
    if (!BelowMinimum(check)) continue;
    lines += MinimumMessage(check).GetText();
    if (result == MarginValidationResult::kValid) result = check.failure;
  }
  if (!HasPrintableArea(edges)) {
    lines += NReportMessageParams(kMsgMarginsOffPage).GetText();
    if (result == MarginValidationResult::kValid) result = MarginValidationResult::kNoPrintableArea;
  }
  if (result != MarginValidationResult::kValid) {
    params = NReportMessageParams(kMsgMarginsInvalid);
    params.AddArgument(lines);
  }
  return result;
}
