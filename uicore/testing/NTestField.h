#pragma once

// A record field for tests of the frame: a value, its default, and how
// often it was set.
template <typename T>
struct NTestField {
  T value{};
  T initial{};
  int sets = 0;

  const T& Get() const { return value; }
  const T& Default() const { return initial; }
  void Set(T v) {
    value = std::move(v);
    ++sets;
  }
};
