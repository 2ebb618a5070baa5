#pragma once

// Test doubles for the printer service's start-up: a probe the test
// releases when it chooses, and a notifier that records its calls.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "location/NReportMessageParams.h"
#include "printing/NPrinterStartup.h"

// How long a test waits for a thread before it gives up.
inline constexpr std::chrono::seconds kPatience{20};

// A probe that blocks until released, then answers as told. Shared with
// the threads, which may outlive the test's own reference.
class NProbeGate : public std::enable_shared_from_this<NProbeGate> {
 public:
  static std::shared_ptr<NProbeGate> Create() { return std::shared_ptr<NProbeGate>(new NProbeGate); }

  NPrinterStartup::Probe Probe() {
    return [self = shared_from_this()](NReportMessageParams& params) { return self->Run(params); };
  }

  // Lets every waiting and later probe return `succeeded`, filling the
  // params with `failure` when it fails.
  void Open(bool succeeded, const NReportMessageParams& failure = NReportMessageParams()) {
    std::lock_guard lock(m_mutex);
    m_open = true;
    m_succeeded = succeeded;
    m_failure = failure;
    m_changed.notify_all();
  }
  // Makes later probes wait again.
  void Close() {
    std::lock_guard lock(m_mutex);
    m_open = false;
  }
  bool WaitForCalls(int count) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] { return m_calls >= count; });
  }
  bool WaitForReturns(int count) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] { return m_returns >= count; });
  }
  int Calls() {
    std::lock_guard lock(m_mutex);
    return m_calls;
  }

 private:
  NProbeGate() = default;

  bool Run(NReportMessageParams& params) {
    std::unique_lock lock(m_mutex);
    ++m_calls;
    m_changed.notify_all();
    m_changed.wait(lock, [&] { return m_open; });
    if (!m_succeeded) params = m_failure;
    ++m_returns;
    m_changed.notify_all();
    return m_succeeded;
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_open = false;
  bool m_succeeded = true;
  NReportMessageParams m_failure;
  int m_calls = 0;
  int m_returns = 0;
};

// The notifier's calls: the result, the status code and text, and the
// thread that made each.
class NNotifierLog : public std::enable_shared_from_this<NNotifierLog> {
 public:
  struct Call {
    bool succeeded;
    std::uint32_t code;
    std::string text;
    std::thread::id thread;
  };

  static std::shared_ptr<NNotifierLog> Create() { return std::shared_ptr<NNotifierLog>(new NNotifierLog); }

  NPrinterStartup::Notifier Notifier() {
    return [self = shared_from_this()](bool succeeded, const NReportMessageParams& status) {
      self->Record(succeeded, status);
    };
  }

  bool WaitForCalls(std::size_t count) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, kPatience, [&] { return m_calls.size() >= count; });
  }
  std::vector<Call> Calls() {
    std::lock_guard lock(m_mutex);
    return m_calls;
  }

 private:
  NNotifierLog() = default;

  void Record(bool succeeded, const NReportMessageParams& status) {
    Call call{succeeded, status.GetCode(), status.GetText().ToUtf8(), std::this_thread::get_id()};
    std::lock_guard lock(m_mutex);
    m_calls.push_back(std::move(call));
    m_changed.notify_all();
  }

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<Call> m_calls;
};

// Waits until `condition` holds; false when the patience runs out first.
inline bool NEventually(const std::function<bool()>& condition) {
  const auto limit = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}
