#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/NPrinterDevices.h"

// Printers a test makes up: named printers with their paper, a default
// printer, and failures to give. Thread-safe, since the printer service's
// probe runs on its own thread.
class NFakePrinterDevices final : public NPrinterDevices {
 public:
  void Add(std::u16string_view name, const NPrinterPageArea& area) {
    std::lock_guard lock(m_mutex);
    m_printers[std::u16string(name)] = area;
  }
  // A printer that is there but tells nothing of its paper.
  void AddWithoutPaper(std::u16string_view name, const NPrinterError& error) {
    std::lock_guard lock(m_mutex);
    m_printers[std::u16string(name)] = std::nullopt;
    m_paperErrors[std::u16string(name)] = error;
  }
  void SetDefault(std::u16string_view name) {
    std::lock_guard lock(m_mutex);
    m_default = name;
  }
  void FailStart(const NPrinterError& error) {
    std::lock_guard lock(m_mutex);
    m_startError = error;
  }

  bool Start(NPrinterError* error) override {
    std::lock_guard lock(m_mutex);
    if (!m_startError) return true;
    *error = *m_startError;
    return false;
  }

  bool FindDefaultPrinter(std::u16string* name, NPrinterError* error) override {
    std::lock_guard lock(m_mutex);
    if (m_default.empty()) {
      *error = NPrinterError{NPrinterError::Kind::kNoDefaultPrinter, 0, {}};
      return false;
    }
    *name = m_default;
    return true;
  }

  bool HasPrinter(std::u16string_view name) override {
    std::lock_guard lock(m_mutex);
    return m_printers.count(std::u16string(name)) != 0;
  }

  bool GetPageArea(std::u16string_view name, NPrinterPageArea* area, NPrinterError* error) override {
    std::lock_guard lock(m_mutex);
    const auto it = m_printers.find(std::u16string(name));
    if (it == m_printers.end()) {
      *error = NPrinterError{NPrinterError::Kind::kNoSuchPrinter, 0, std::u16string(name)};
      return false;
    }
    if (!it->second) {
      *error = m_paperErrors[it->first];
      return false;
    }
    *area = *it->second;
    return true;
  }

 private:
  std::mutex m_mutex;
  std::map<std::u16string, std::optional<NPrinterPageArea>> m_printers;
  std::map<std::u16string, NPrinterError> m_paperErrors;
  std::u16string m_default;
  std::optional<NPrinterError> m_startError;
};
