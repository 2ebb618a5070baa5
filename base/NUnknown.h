#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>

#include "base/NExport.h"

// Identifies an interface for QueryInterface, in the layout of a GUID.
struct NInterfaceId {
  std::uint32_t data1;
  std::uint16_t data2;
  std::uint16_t data3;
  std::uint8_t data4[8];

  friend bool operator==(const NInterfaceId& a, const NInterfaceId& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
  }
};

// The reference-counting base of the system's interface objects. An object is
// born with one reference, owned by its creator; Release drops one and calls
// DeleteThis when the count reaches zero. The count is atomic, so references
// may be taken and dropped on any thread; the object itself is not made
// thread-safe by this. An object that lives on the stack or inside another
// object is simply never released to zero.
class NUnknown {
 public:
  static constexpr NInterfaceId kIID = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

  NUnknown(const NUnknown&) = delete;
  NUnknown& operator=(const NUnknown&) = delete;

  // On success stores an added reference in *object and returns true; on
  // failure stores null and returns false.
  virtual bool QueryInterface(const NInterfaceId& iid, void** object) {
    if (iid == kIID) {
      AddRef();
      *object = this;
      return true;
    }
    *object = nullptr;
    return false;
  }

  std::uint32_t AddRef() noexcept { return m_refCount.fetch_add(1, std::memory_order_relaxed) + 1; }

  std::uint32_t Release() noexcept {
    const std::uint32_t left = m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) DeleteThis();
    return left;
  }

 protected:
  NUnknown() = default;
  virtual ~NUnknown() = default;

  // Destroys the object once the last reference is gone.
  virtual void DeleteThis() { delete this; }

 private:
  std::atomic<std::uint32_t> m_refCount{1};
};
