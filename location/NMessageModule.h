#pragma once

#include <cstdint>
#include <string>

// A source of message templates by code: the library's own table, or the
// message table of another module that reports through this library.
// Implementations are immutable after construction and thread-safe.
class NMessageModule {
 public:
  NMessageModule() = default;
  NMessageModule(const NMessageModule&) = delete;
  NMessageModule& operator=(const NMessageModule&) = delete;
  virtual ~NMessageModule() = default;

  // Stores the template of `code`, insertions unexpanded, and returns true;
  // returns false and leaves *text untouched when the module has none.
  virtual bool FindTemplate(std::uint32_t code, std::u16string* text) const = 0;

  // The library's own message table; lives for the whole process.
  static const NMessageModule& Library();
};
