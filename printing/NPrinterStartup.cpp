#include "printing/NPrinterStartup.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <thread>

#include "platform/NDetachedThread.h"

namespace {

// Long enough for any caller, short enough that the deadline cannot
// overflow the clock.
constexpr std::uint64_t kLongestTimeout = 100ull * 366 * 24 * 3600 * 1000;

// A message's text without its line end, to go into another message.
NUnicodeString Inline(const NReportMessageParams& params) {
  NUnicodeString text = params.GetText();
  while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.pop_back();
  return text;
}

// The status after a failed probe: the failure, with the probe's own
// message beside it when it has one worth showing.
NReportMessageParams FailureStatus(const NReportMessageParams& probe) {
  NReportMessageParams failed(kMsgPrinterInitFailed);
  if (probe.GetCode() == 0 || probe.GetCode() == kMsgPrinterStatusUnavailable) return failed;
  NReportMessageParams status(kMsgPrinterStatusDetail);
  status.AddArgument(Inline(failed));
  status.AddArgument(Inline(probe));
  return status;
}

}  // namespace

NPrinterStartup::NPrinterStartup() : m_status(kMsgPrinterPreparing) {}

std::shared_ptr<NPrinterStartup> NPrinterStartup::Create() {
  return std::shared_ptr<NPrinterStartup>(new NPrinterStartup);
}

void NPrinterStartup::Initialize(std::uint64_t timeout, Probe probe, Notifier notifier) {
  {
    std::lock_guard lock(m_mutex);
    if (m_remembered || !probe) return;
    m_remembered = true;
    m_timeout = timeout;
    m_probe = std::move(probe);
    m_notifier = std::move(notifier);
    if (m_state != kSuspended) return;
    m_state = kInitializing;
    m_status = NReportMessageParams(kMsgPrinterInitializing);
  }
  StartWatchdog();
}

void NPrinterStartup::Suspend(const NReportMessageParams& reason) {
  Notifier notifier;
  {
    std::lock_guard lock(m_mutex);
    if (m_state != kSucceeded && m_state != kFailed) return;
    m_state = kSuspended;
    m_status = reason;
    notifier = m_notifier;
  }
  if (notifier) notifier(false, reason);
}

void NPrinterStartup::Resume() {
  {
    std::lock_guard lock(m_mutex);
    if (!m_remembered || m_state == kInitializing) return;
    m_state = kInitializing;
    m_status = NReportMessageParams(kMsgPrinterInitializing);
  }
  StartWatchdog();
}

NPrinterStartup::State NPrinterStartup::GetState() const {
  std::lock_guard lock(m_mutex);
  return m_state;
}

NReportMessageParams NPrinterStartup::GetStatus() const {
  std::lock_guard lock(m_mutex);
  return m_status;
}

void NPrinterStartup::Abandon() {
  std::lock_guard lock(m_mutex);
  m_abandoned = true;
}

void NPrinterStartup::StartWatchdog() {
  if (!NStartDetachedThread([self = shared_from_this()] { self->Watchdog(); })) ThreadFailed();
}

void NPrinterStartup::Watchdog() {
  std::uint64_t timeout;
  {
    std::lock_guard lock(m_mutex);
    timeout = m_timeout;
  }
  if (!NStartDetachedThread([self = shared_from_this()] { self->Worker(); })) {
    ThreadFailed();
    return;
  }
  if (timeout > 0) {
    std::this_thread::sleep_until(std::chrono::steady_clock::now() +
                                  std::chrono::milliseconds(std::min(timeout, kLongestTimeout)));
  }
  std::lock_guard lock(m_mutex);
  if (m_state == kInitializing) {
    m_state = kFailed;
    m_status = NReportMessageParams(kMsgPrinterInitTimedOut);
  }
}

void NPrinterStartup::Worker() {
  Probe probe;
  {
    std::lock_guard lock(m_mutex);
    probe = m_probe;
  }
  NReportMessageParams result;
  bool succeeded = false;
  try {
    succeeded = probe(result);
  } catch (const std::exception&) {
    // A probe that throws has failed without saying why.
    result.Clear();
  }
  Notifier notifier;
  NReportMessageParams status;
  {
    std::lock_guard lock(m_mutex);
    // Abandon holds the mutex too, so the texts below are never looked up
    // once the exit has begun.
    if (m_abandoned) return;
    status = succeeded ? NReportMessageParams(kMsgPrinterInitSucceeded) : FailureStatus(result);
    m_state = succeeded ? kSucceeded : kFailed;
    m_status = status;
    notifier = m_notifier;
  }
  if (notifier) notifier(succeeded, status);
}

void NPrinterStartup::ThreadFailed() {
  const NReportMessageParams status(kMsgPrinterInitFailed);
  Notifier notifier;
  {
    std::lock_guard lock(m_mutex);
    if (m_state != kInitializing) return;
    m_state = kFailed;
    m_status = status;
    notifier = m_notifier;
  }
  if (notifier) notifier(false, status);
}
