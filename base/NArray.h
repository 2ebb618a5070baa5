#pragma once

#include <cstddef>
#include <initializer_list>
#include <vector>

#include "base/OutOfRange.h"

// The growable array of the system: a std::vector whose indexing is always
// checked. An index outside [0, Count()) throws OutOfRange instead of reading
// past the end, because indices often come from files and other processes.
template <typename T>
class NArray : public std::vector<T> {
 public:
  using Base = std::vector<T>;
  using Base::Base;
  NArray() = default;
  NArray(std::initializer_list<T> items) : Base(items) {}

  std::size_t Count() const noexcept { return this->size(); }
  bool IsEmpty() const noexcept { return this->empty(); }

  T& operator[](std::size_t index) { return Base::operator[](CheckIndex(index)); }
  const T& operator[](std::size_t index) const { return Base::operator[](CheckIndex(index)); }

  void Add(const T& item) { this->push_back(item); }
  void Add(T&& item) { this->push_back(std::move(item)); }

  void RemoveAt(std::size_t index) { this->erase(this->begin() + static_cast<std::ptrdiff_t>(CheckIndex(index))); }

 private:
  std::size_t CheckIndex(std::size_t index) const {
    if (index >= this->size()) throw OutOfRange(index, this->size());
    return index;
  }
};
