#include "config/NSessionName.h"

#include <algorithm>
#include <memory>

#include "config/NSession.h"
#include "config/NSessionPath.h"
#include "uicore/NAppName.h"
#include "uicore/NMessageBox.h"
#include "store/NProfileStoreFactory.h"

namespace {

bool Refuse(std::uint32_t code, NReportMessageParams& params) {
  params.SetCode(code);
  return false;
}

bool IsReservedDeviceName(std::u16string_view name) {
  NUnicodeString upper;
  for (const char16_t c : name) upper += c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c;
  static constexpr std::u16string_view kDevices[] = {
      u"CON",  u"PRN",  u"AUX",  u"NUL",  u"COM1", u"COM2", u"COM3", u"COM4", u"COM5", u"COM6", u"COM7", u"COM8",
      u"COM9", u"LPT1", u"LPT2", u"LPT3", u"LPT4", u"LPT5", u"LPT6", u"LPT7", u"LPT8", u"LPT9", u"CLOCK$"};
  return std::any_of(std::begin(kDevices), std::end(kDevices), [&upper](std::u16string_view device) {
    return upper == device || (upper.size() > device.size() && upper.starts_with(device) && upper[device.size()] == u'.');
  });
}

bool SessionExists(std::u16string_view path) {
  std::unique_ptr<NProfileStore> store = NCreateProfileStore();
  return store && NSession::Exists(*store, path);
}

}  // namespace

bool NCheckSessionName(std::u16string_view location, std::u16string_view oldName, std::u16string_view newName,
                       bool isNew, NReportMessageParams& params) {
  if (newName.empty()) return Refuse(kMsgNameEmpty, params);
  for (const char16_t illegal : u"\\/:*?\"<>|") {
    if (illegal == u'\0' || newName.find(illegal) == std::u16string_view::npos) continue;
    params.SetCode(kMsgNameIllegalCharacter);
    params.AddArgument(std::u16string_view(&illegal, 1));  // %1!c! takes its first character
    return false;
  }
  if (IsReservedDeviceName(newName)) {
    params.SetCode(kMsgNameReservedDevice);
    params.AddArgument(NUnicodeString(newName));
    return false;
  }
  bool clash;
  if (isNew) {
    clash = SessionExists(NJoinSessionPath(location, newName));
  } else {
    if (newName == oldName) return true;
    // A change of letter case alone names the same session.
    clash = SessionExists(NJoinSessionPath(NSessionFolderOf(location), newName)) &&
            NUnicodeString::CompareIgnoreCase(newName, oldName) != 0;
  }
  if (clash) {
    params.SetCode(kMsgNameInUse);
    params.AddArgument(NUnicodeString(newName));
    return false;
  }
  return true;
}

bool ValidateSessionName(const NUnicodeString& location, const NUnicodeString& oldName, const NUnicodeString& newName,
                         bool isNew, void* parent) {
  NReportMessageParams params;
  if (NCheckSessionName(location, oldName, newName, isNew, params)) return true;
  const unsigned icon = params.GetCode() == kMsgNameInUse ? kMessageBoxIconWarning : kMessageBoxIconInformation;
  NMessageBox(parent, params.GetCode(), params.GetText(), NGetAppName(), kMessageBoxOk | icon);
  return false;
}
