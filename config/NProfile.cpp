#include "config/NProfile.h"

#include "config/NSecretKeys.h"

bool NProfileSz::Read(const NProfileKey& key, std::u16string_view name, NFileTime* value) {
  NUnicodeString stored;
  if (!key.GetStringValue(name, &stored)) return false;
  const std::string digits = stored.ToUtf8();
  std::uint64_t ticks = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), ticks);
  if (error != std::errc() || end != digits.data() + digits.size()) return false;
  value->ticks = ticks;
  return true;
}

bool NProfileSz::Write(NProfileKey& key, std::u16string_view name, const NEncryptedString& value) {
  NUnicodeString stored;
  NReportMessageParams params;
  if (!value.ToStore(NSecretPlace(key.GetPath(), name), &stored, params)) {
    NNoteSecretRefusal(params);
    return false;
  }
  return key.SetStringValue(name, stored);
}

bool NProfileSz::Write(NProfileKey& key, std::u16string_view name, const NFileTime& value) {
  return key.SetStringValue(name, NUnicodeString::FromUtf8(std::to_string(value.ticks)));
}

NFieldValue NProfileSz::Describe(const NFileTime& value) {
  NFieldValue out;
  out.number = static_cast<std::int64_t>(value.ticks);
  return out;
}

bool NProfileBinary::Read(const NProfileKey& key, std::u16string_view name, NBytes* value) {
  std::uint32_t length = 0;
  if (!key.GetBinaryValue(name, nullptr, &length)) return false;
  NBytes bytes(length, '\0');
  if (!key.GetBinaryValue(name, bytes.data(), &length)) return false;
  bytes.resize(length);
  *value = std::move(bytes);
  return true;
}

bool NProfileEscapedSz::Read(const NProfileKey& key, std::u16string_view name, NUnicodeString* value) {
  NUnicodeString stored;
  if (!key.GetStringValue(name, &stored)) return false;
  NUnicodeString text;
  for (std::size_t i = 0; i < stored.size(); ++i) {
    if (stored[i] != u'\\' || i + 1 == stored.size()) {
      text += stored[i];
      continue;
    }
    const char16_t next = stored[++i];
    text += next == u'r' ? u'\r' : next == u'n' ? u'\n' : next;
  }
  *value = std::move(text);
  return true;
}

bool NProfileEscapedSz::Write(NProfileKey& key, std::u16string_view name, const NUnicodeString& value) {
  NUnicodeString stored;
  for (const char16_t c : value) {
    if (c == u'\r') {
      stored += u"\\r";
    } else if (c == u'\n') {
      stored += u"\\n";
    } else if (c == u'\\') {
      stored += u"\\\\";
    } else {
      stored += c;
    }
  }
  return key.SetStringValue(name, stored);
}
