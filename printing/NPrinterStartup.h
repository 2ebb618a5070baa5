#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "location/NReportMessageParams.h"

// Status messages of the printer service.
inline constexpr std::uint32_t kMsgPrinterPreparing = 0x61380200;
inline constexpr std::uint32_t kMsgPrinterInitializing = 0x61380201;
inline constexpr std::uint32_t kMsgPrinterInitSucceeded = 0x61380202;
inline constexpr std::uint32_t kMsgPrinterInitFailed = 0xE1380203;
inline constexpr std::uint32_t kMsgPrinterStatusUnavailable = 0x61380204;
inline constexpr std::uint32_t kMsgPrinterInitTimedOut = 0xE1380205;
inline constexpr std::uint32_t kMsgPrinterStatusDetail = 0xE1380206;  // %1: the failure, %2: its detail
// The reason to give Suspend before the computer hibernates.
inline constexpr std::uint32_t kMsgPrinterSuspendedForHibernation = 0xA1380209;

// The start-up of a printing back end: a probe run on a detached worker
// thread, watched by a detached watchdog thread that declares a time-out,
// with a state and a status message that any thread may read. One mutex
// guards the state, the status and the start-up parameters; the probe and
// the notifier run outside it.
//
// States: kSuspended (also: never started) -> kInitializing by the first
// Initialize or by Resume; kInitializing -> kSucceeded or kFailed by the
// worker, -> kFailed by the watchdog's time-out; kSucceeded or kFailed ->
// kSuspended by Suspend. The worker sets its result even after a time-out,
// so a late success still ends in kSucceeded.
//
// The threads hold a share of the object, so it lives until the last of
// them ends. PrinterBase keeps the process's one instance.
class NPrinterStartup : public std::enable_shared_from_this<NPrinterStartup> {
 public:
  enum State : int { kSuspended = 0, kInitializing = 1, kSucceeded = 2, kFailed = 3 };

  // Starts the back end; on failure fills the params (or leaves them empty
  // when it has nothing to say). Called on the worker thread.
  using Probe = std::function<bool(NReportMessageParams&)>;
  // Told the result of each start and of each suspension, with the status.
  // Called on the worker thread or on Suspend's caller's: it must be safe on
  // any thread.
  using Notifier = std::function<void(bool, const NReportMessageParams&)>;

  static std::shared_ptr<NPrinterStartup> Create();

  NPrinterStartup(const NPrinterStartup&) = delete;
  NPrinterStartup& operator=(const NPrinterStartup&) = delete;

  // The first call with a probe remembers the timeout (milliseconds; 0
  // declares the time-out at once), the probe and the notifier, and starts.
  // Every later call does nothing.
  void Initialize(std::uint64_t timeout, Probe probe, Notifier notifier);
  // From a finished state only: back to kSuspended with `reason` as the
  // status, and the notifier told (false, reason).
  void Suspend(const NReportMessageParams& reason);
  // Starts again with the remembered parameters, unless nothing was
  // remembered yet or a start is under way.
  void Resume();

  State GetState() const;
  NReportMessageParams GetStatus() const;

  // From now on the threads end without touching anything but this object:
  // no status texts are looked up and no notifier is called. For the
  // process's exit, when the statics those need are about to be destroyed:
  // an exit hook does it for PrinterBase's instance; the owner of any other
  // must do it before the process exits while its threads may still run.
  void Abandon();

 private:
  NPrinterStartup();

  // Called without the mutex, the state just set to kInitializing.
  void StartWatchdog();
  void Watchdog();
  void Worker();
  // A start that could not get its thread fails as a probe would.
  void ThreadFailed();

  mutable std::mutex m_mutex;
  State m_state = kSuspended;
  NReportMessageParams m_status;
  bool m_remembered = false;
  std::uint64_t m_timeout = 0;
  Probe m_probe;
  Notifier m_notifier;
  bool m_abandoned = false;
};
