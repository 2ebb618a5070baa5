#include "platform/testing/NChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

extern char** environ;

NChildProcess::NChildProcess(std::string_view test, std::vector<std::string> environment, const std::string& log,
                             std::string_view readyVariable) {
  int fds[2];
  if (::pipe2(fds, O_CLOEXEC) != 0) return;
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (std::strncmp(*variable, "GTEST_", 6) != 0) variables.emplace_back(*variable);
  }
  for (std::string& variable : environment) variables.push_back(std::move(variable));
  variables.push_back(std::string(readyVariable) + "=" + std::to_string(fds[1]));
  std::vector<char*> envp;
  for (std::string& variable : variables) envp.push_back(variable.data());
  envp.push_back(nullptr);
  std::string program = "child";
  std::string filter = "--gtest_filter=" + std::string(test);
  char* argv[] = {program.data(), filter.data(), nullptr};

  m_pid = ::fork();
  if (m_pid == 0) {
    // Only async-signal-safe calls until exec.
    ::fcntl(fds[1], F_SETFD, 0);
    const int out = ::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (out >= 0) {
      ::dup2(out, STDOUT_FILENO);
      ::dup2(out, STDERR_FILENO);
    }
    ::execve("/proc/self/exe", argv, envp.data());
    ::_exit(127);
  }
  ::close(fds[1]);
  if (m_pid > 0) {
    m_ready = fds[0];
  } else {
    ::close(fds[0]);
  }
}

NChildProcess::~NChildProcess() {
  if (Running()) {
    ::kill(m_pid, SIGKILL);
    Wait();
  }
  if (m_ready >= 0) ::close(m_ready);
}

bool NChildProcess::WaitReady(std::chrono::seconds limit) {
  pollfd ready{.fd = m_ready, .events = POLLIN, .revents = 0};
  int polled;
  do {
    polled = ::poll(&ready, 1, static_cast<int>(limit.count() * 1000));
  } while (polled < 0 && errno == EINTR);
  char byte = 0;
  return polled == 1 && ::read(m_ready, &byte, 1) == 1;
}

bool NChildProcess::Running() {
  if (m_pid <= 0 || m_waitStatus) return false;
  int status = 0;
  if (::waitpid(m_pid, &status, WNOHANG) == m_pid) m_waitStatus = status;
  return !m_waitStatus;
}

int NChildProcess::Wait() {
  if (!m_waitStatus) {
    int status = 0;
    while (::waitpid(m_pid, &status, 0) == -1 && errno == EINTR) {
    }
    m_waitStatus = status;
  }
  return *m_waitStatus;
}

void NChildProcess::Signal(int signal) {
  if (m_pid > 0 && !m_waitStatus) ::kill(m_pid, signal);
}
