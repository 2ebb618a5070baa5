#include "dialogs/global/GlobalAutoSessionPage.h"

#include "dialogs/NMessageText.h"

namespace {

constexpr std::uint32_t kMsgAutoSessionNotSpecified = 0xE1380005;

}  // namespace

GlobalAutoSessionPage::GlobalAutoSessionPage(GlobalConfig& global) : NPropertyTreePage(u"Default Session") {
  NForm& form = Form();
  form.Group(u"On startup");
  NFormControl& useAuto = form.CheckBox(NUnicodeString(kUseAutoSessionLabel), global.m_useAutoSession);
  form.Text(NUnicodeString(kAutoSessionNameLabel), global.m_autoSessionName)
      .EnabledWhenChecked(useAuto)
      .Validate([](const NControlValue& value) -> std::optional<NUnicodeString> {
        const NUnicodeString* name = std::get_if<NUnicodeString>(&value);
        if (name && name->find_first_not_of(u' ') != NUnicodeString::npos) return std::nullopt;
        return NMessageText(kMsgAutoSessionNotSpecified);
      });
  form.CheckBox(u"Reconnect the sessions open at the last exit", global.m_useRememberedSessions);
  form.CheckBox(u"Use the default session's colours on startup", global.m_useDefaultSessionColorOnStartup);
  form.EndGroup();
}

bool GlobalAutoSessionPage::OnValidate(NPageFailure& failure) {
  if (NPropertyTreePage::OnValidate(failure)) return true;
  failure.code = kMsgAutoSessionNotSpecified;
  return false;
}
