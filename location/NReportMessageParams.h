#pragma once

#include <cstdint>
#include <string_view>

#include "base/NExport.h"
#include "base/NStringArray.h"
#include "base/NUnicodeString.h"
#include "base/NUnknown.h"

class NMessageModule;

// The carrier of a failure, as seen by hosts.
class IReportMessageParams : public NUnknown {
 public:
  static constexpr NInterfaceId kIID = {0x6a1c0f3e, 0x2b47, 0x4d8e, {0x9c, 0x51, 0x13, 0x8a, 0x0e, 0x72, 0xd4, 0x05}};

  virtual std::uint32_t GetCode() const = 0;
  virtual const NUnicodeString& GetText() const = 0;
  virtual std::size_t GetTextLength() const = 0;
};

// Why an operation failed: a 32-bit message code, the module whose table
// holds its text, and the insertion arguments. A caller creates one empty
// (code 0), passes it by reference to an operation that returns bool, and on
// false reads it; on true the operation left it untouched.
//
// The text is resolved on first request and cached: a system code (customer
// bit clear) from the system's tables, then the NTSTATUS table; then the
// source module's table; then the library's own; and failing all of them
// "Could not retrieve the error text for error code 0x%1!08x!.\r\n". So
// asking for the text never fails.
//
// Belongs to one thread at a time; a copy can be handed to another thread.
class CFGDECK_API NReportMessageParams : public IReportMessageParams {
 public:
  static constexpr std::uint32_t kCustomerFlag = 0x20000000;

NReportMessageParams();
explicit NReportMessageParams(std::uint32_t code);
NReportMessageParams(const NReportMessageParams& other);
NReportMessageParams& operator=(const NReportMessageParams& other);
~NReportMessageParams() override;

bool QueryInterface(const NInterfaceId& iid, void** object) override;

  // Setting the code or the source, or adding an argument, drops a text
  // resolved before.
void SetCode(std::uint32_t code);
  std::uint32_t GetCode() const override { return m_code; }

  // Null means the library's own table.
void SetSource(const NMessageModule* source);
  const NMessageModule* GetSource() const { return m_source; }

void AddArgument(std::u16string_view text);
  // Numbers become text when they are added: "%1!u!" and "%1!d!", or their
  // 64-bit forms.
void AddUnsigned(std::uint32_t value);
void AddSigned(std::int32_t value);
void AddUnsigned64(std::uint64_t value);
void AddSigned64(std::int64_t value);
  const NStringArray& GetArguments() const { return m_arguments; }

  // Empties the params: code 0, no source, no arguments, no text.
void Clear();

const NUnicodeString& GetText() const override;
std::size_t GetTextLength() const override;

 private:
  void Resolve() const;
  void DropText();

  std::uint32_t m_code = 0;
  const NMessageModule* m_source = nullptr;
  NStringArray m_arguments;
  mutable NUnicodeString m_text;
  mutable std::size_t m_textLength = 0;
  mutable bool m_resolved = false;
};
