#pragma once

#include <utility>

// Owns one reference to an NUnknown-derived object. Copying adds a reference,
// destruction releases one. Adopt takes over a reference the caller already
// holds (for example that of a newly created object).
template <typename T>
class NUnknownPointer {
 public:
  NUnknownPointer() = default;
  NUnknownPointer(std::nullptr_t) {}
  NUnknownPointer(const NUnknownPointer& other) : m_object(other.m_object) {
    if (m_object) m_object->AddRef();
  }
  NUnknownPointer(NUnknownPointer&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
  ~NUnknownPointer() { Reset(); }

  NUnknownPointer& operator=(NUnknownPointer other) noexcept {
    std::swap(m_object, other.m_object);
    return *this;
  }

  static NUnknownPointer Adopt(T* object) {
    NUnknownPointer p;
    p.m_object = object;
    return p;
  }
  static NUnknownPointer Share(T* object) {
    if (object) object->AddRef();
    return Adopt(object);
  }

  void Reset() {
    if (T* object = std::exchange(m_object, nullptr)) object->Release();
  }
  T* Detach() { return std::exchange(m_object, nullptr); }

  T* Get() const { return m_object; }
  T* operator->() const { return m_object; }
  T& operator*() const { return *m_object; }
  explicit operator bool() const { return m_object != nullptr; }

 private:
  T* m_object = nullptr;
};
