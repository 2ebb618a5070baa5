#pragma once

#include <optional>
#include <string>

// Sets an environment variable of this process, or with nullopt removes it,
// for as long as the object lives; then puts back what was there. On Windows
// both the C runtime's copy of the environment and the system's (which
// GetEnvironmentVariableW reads) change. The environment is the process's:
// tests using this must not run concurrently with others that read it.
class NScopedEnvironment {
 public:
  NScopedEnvironment(std::string name, const std::optional<std::u16string>& value);
  ~NScopedEnvironment();
  NScopedEnvironment(const NScopedEnvironment&) = delete;
  NScopedEnvironment& operator=(const NScopedEnvironment&) = delete;

  // The variable's value now; nullopt when it is not set.
  static std::optional<std::u16string> Get(const std::string& name);
  // Sets, or with nullopt removes, without restoring anything later.
  static void Set(const std::string& name, const std::optional<std::u16string>& value);

 private:
  std::string m_name;
  std::optional<std::u16string> m_old;
};
