#pragma once

#include <cstdint>

#include "base/NUnicodeString.h"
#include "base/NUnknown.h"

class IReportMessageParams;

// A network end point as a log records it: the address as text (empty when
// there is none) and the port.
struct NLogEndpoint {
  NUnicodeString address;
  std::uint16_t port = 0;
};

// One record to be logged. The operations are declared in the order of the
// record's values; that order is fixed.
class ILogEvent : public NUnknown {
 public:
  static constexpr NInterfaceId kIID = {0x3f0b9a61, 0x75c2, 0x4e13, {0xa8, 0x2d, 0x6e, 0x41, 0x90, 0x1b, 0xc7, 0x3a}};

  virtual std::uint64_t GetTime() const = 0;  // Windows file time; 0 when unknown
  virtual std::uint32_t GetSession() const = 0;  // 0: none
  virtual std::uint32_t GetTopic() const = 0;
  virtual const NLogEndpoint& GetClient() const = 0;
  virtual const NLogEndpoint& GetServer() const = 0;
  virtual const NUnicodeString& GetUserName() const = 0;
  virtual const NUnicodeString& GetMethod() const = 0;
  virtual const NUnicodeString& GetUriStem() const = 0;
  virtual std::uint32_t GetStatus() const = 0;
  virtual std::uint64_t GetBytesClientToServer() const = 0;
  virtual std::uint64_t GetBytesServerToClient() const = 0;
  virtual const IReportMessageParams* GetMessage() const = 0;  // may be null
};
