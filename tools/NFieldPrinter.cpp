#include "tools/NFieldPrinter.h"

#include <nlohmann/json.hpp>

#include "config/NProfile.h"
#include "config/NSecretFormat.h"
#include "tools/NToolOutput.h"

namespace {

std::string Hex(const NBytes& bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string hex;
  hex.reserve(bytes.size() * 2);
  for (const char byte : bytes) {
    hex += kDigits[static_cast<unsigned char>(byte) >> 4];
    hex += kDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return hex;
}

nlohmann::ordered_json Json(const NFieldValue& value) {
  switch (value.kind) {
    case NFieldValue::Kind::kBoolean:
      return value.boolean;
    case NFieldValue::Kind::kNumber:
      return value.number;
    case NFieldValue::Kind::kString:
      return value.text.ToUtf8();
    case NFieldValue::Kind::kStrings: {
      nlohmann::ordered_json strings = nlohmann::ordered_json::array();
      for (const NUnicodeString& text : value.strings) strings.push_back(text.ToUtf8());
      return strings;
    }
    case NFieldValue::Kind::kBytes:
      return Hex(value.bytes);
  }
  return nullptr;
}

std::string Plain(const NFieldValue& value) {
  switch (value.kind) {
    case NFieldValue::Kind::kString:
      return value.text.ToUtf8();
    case NFieldValue::Kind::kBytes:
      return Hex(value.bytes);
    default:
      return Json(value).dump();
  }
}

}  // namespace

std::string NFormatFields(const std::vector<NProfileData*>& fields, bool json, std::u16string_view keyPath,
                          bool showSecrets) {
  auto describe = [&](const NProfileData* field) {
    NFieldValue value = field->Describe();
    const auto* secret = dynamic_cast<const NProfileEncrypted*>(field);
    if (!secret || secret->Get().IsEmpty()) return value;
    NUnicodeString plain;
    NReportMessageParams params;
    if (!showSecrets) {
      value.text = u"(encrypted)";
    } else if (secret->Get().Plain(NSecretPlace(keyPath, field->Name()), &plain, params)) {
      value.text = std::move(plain);
    } else {
      value.text = u"(encrypted)";
      NErr("cfgdeck: " + params.GetText().ToUtf8() + "\n");
    }
    return value;
  };
  if (json) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const NProfileData* field : fields) object[NUnicodeString(field->Name()).ToUtf8()] = Json(describe(field));
    return object.dump(2) + "\n";
  }
  std::string lines;
  for (const NProfileData* field : fields) {
    lines += NUnicodeString(field->Name()).ToUtf8() + "=" + Plain(describe(field)) + "\n";
  }
  return lines;
}
