#pragma once

#include <cstddef>
#include <stdexcept>

#include "base/NExport.h"

// Thrown by NArray when an index lies outside the array. Exported so that a
// host can catch it across the library boundary.
class CFGDECK_API OutOfRange : public std::out_of_range {
 public:
  OutOfRange(std::size_t index, std::size_t count);
  ~OutOfRange() override;

  std::size_t Index() const noexcept { return m_index; }
  std::size_t Count() const noexcept { return m_count; }

 private:
  std::size_t m_index;
  std::size_t m_count;
};
