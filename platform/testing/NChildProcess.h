#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The running test binary started again as a real second process that runs
// one test of its own (the child's side), as LevelDB's tests do. The child
// gets the parent's environment, less GTEST_* variables (sharding and report
// files would skip the child's test or overwrite the parent's report), plus
// `environment` ("NAME=value" entries), and the write end of a pipe in the
// variable `readyVariable`, through which it says it is ready. Its output
// goes to `log`. Killed and reaped when destroyed. POSIX only.
class NChildProcess {
 public:
  NChildProcess(std::string_view test, std::vector<std::string> environment, const std::string& log,
                std::string_view readyVariable);
  NChildProcess(const NChildProcess&) = delete;
  NChildProcess& operator=(const NChildProcess&) = delete;
  ~NChildProcess();

  bool Started() const { return m_pid > 0 && m_ready >= 0; }
  // Waits until the child writes a byte to its ready pipe; false when it
  // ended first or `limit` passed.
  bool WaitReady(std::chrono::seconds limit);
  bool Running();
  // The wait status, once the child has ended.
  int Wait();
  // Never once reaped: the number may belong to another process by then.
  void Signal(int signal);

 private:
  pid_t m_pid = -1;
  int m_ready = -1;
  std::optional<int> m_waitStatus;
};
