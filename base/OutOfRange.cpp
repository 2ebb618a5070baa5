#include "base/OutOfRange.h"

#include <string>

OutOfRange::OutOfRange(std::size_t index, std::size_t count)
    : std::out_of_range("index " + std::to_string(index) + " outside an array of " +
                        std::to_string(count)),
      m_index(index),
      m_count(count) {}

// Out of line so that the vtable and type information live in the library.
OutOfRange::~OutOfRange() = default;
