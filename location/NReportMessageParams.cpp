#include "location/NReportMessageParams.h"

#include <vector>

#include "location/NMessageFormatter.h"
#include "location/NMessageModule.h"
#include "platform/NPlatform.h"

namespace {

constexpr std::u16string_view kFallbackTemplate = u"Could not retrieve the error text for error code 0x%1!08x!.\r\n";

// Expands `templ` with the params' arguments, all of them text.
NUnicodeString Expand(std::u16string_view templ, const NStringArray& arguments) {
  std::vector<NFormatArgument> args(arguments.begin(), arguments.end());
  NUnicodeString text;
  NMessageFormatter::Format(templ, args, &text);
  return text;
}

}  // namespace

NReportMessageParams::NReportMessageParams() = default;

NReportMessageParams::NReportMessageParams(std::uint32_t code) : m_code(code) {}

NReportMessageParams::NReportMessageParams(const NReportMessageParams& other)
    : IReportMessageParams(),
      m_code(other.m_code),
      m_source(other.m_source),
      m_arguments(other.m_arguments),
      m_text(other.m_text),
      m_textLength(other.m_textLength),
      m_resolved(other.m_resolved) {}

NReportMessageParams& NReportMessageParams::operator=(const NReportMessageParams& other) {
  m_code = other.m_code;
  m_source = other.m_source;
  m_arguments = other.m_arguments;
  m_text = other.m_text;
  m_textLength = other.m_textLength;
  m_resolved = other.m_resolved;
  return *this;
}

NReportMessageParams::~NReportMessageParams() = default;

bool NReportMessageParams::QueryInterface(const NInterfaceId& iid, void** object) {
  if (iid == IReportMessageParams::kIID) {
    AddRef();
    *object = static_cast<IReportMessageParams*>(this);
    return true;
  }
  return NUnknown::QueryInterface(iid, object);
}

void NReportMessageParams::SetCode(std::uint32_t code) {
  m_code = code;
  DropText();
}

void NReportMessageParams::SetSource(const NMessageModule* source) {
  m_source = source;
  DropText();
}

void NReportMessageParams::AddArgument(std::u16string_view text) {
  m_arguments.Add(NUnicodeString(text));
  DropText();
}

void NReportMessageParams::AddUnsigned(std::uint32_t value) {
  AddArgument(NMessageFormatter::FormatOne(u"u", NFormatArgument::Unsigned(value)));
}

void NReportMessageParams::AddSigned(std::int32_t value) {
  AddArgument(NMessageFormatter::FormatOne(u"d", NFormatArgument::Signed(value)));
}

void NReportMessageParams::AddUnsigned64(std::uint64_t value) {
  AddArgument(NMessageFormatter::FormatOne(u"I64u", NFormatArgument::Unsigned(value)));
}

void NReportMessageParams::AddSigned64(std::int64_t value) {
  AddArgument(NMessageFormatter::FormatOne(u"I64d", NFormatArgument::Signed(value)));
}

void NReportMessageParams::Clear() {
  m_code = 0;
  m_source = nullptr;
  m_arguments.clear();
  DropText();
}

const NUnicodeString& NReportMessageParams::GetText() const {
  if (!m_resolved) Resolve();
  return m_text;
}

std::size_t NReportMessageParams::GetTextLength() const {
  if (!m_resolved) Resolve();
  return m_textLength;
}

void NReportMessageParams::DropText() {
  m_text.clear();
  m_textLength = 0;
  m_resolved = false;
}

void NReportMessageParams::Resolve() const {
  NPlatform& platform = NPlatform::Default();
  std::u16string templ;
  m_text.clear();
  if ((m_code & kCustomerFlag) == 0) {
    if (platform.LookupSystemMessage(m_code, &templ) || platform.LookupNtStatusMessage(m_code, &templ)) {
      m_text = Expand(templ, m_arguments);
    }
  }
  if (m_text.empty() && m_source && m_source->FindTemplate(m_code, &templ)) m_text = Expand(templ, m_arguments);
  if (m_text.empty() && NMessageModule::Library().FindTemplate(m_code, &templ)) m_text = Expand(templ, m_arguments);
  if (m_text.empty()) {
    const NFormatArgument code = NFormatArgument::Unsigned(m_code);
    NMessageFormatter::Format(kFallbackTemplate, std::span<const NFormatArgument>(&code, 1), &m_text);
  }
  m_textLength = m_text.size();
  m_resolved = true;
}
