#include "dialogs/session/SessionFileTransferAdvancedPage.h"

#include <cstdint>

#include "config/NControlCodecs.h"

SessionFileTransferAdvancedPage::SessionFileTransferAdvancedPage(ISessionConfig& session)
    : NPropertyTreePage(u"Advanced") {
  SessionConfig& config = session.Config();
  NForm& form = Form();

  form.Group(u"Highlighting");
  NFormControl& style = form.Choice(
      u"Highlighting style", config.m_highlightingStyle,
      {{u"None", std::int64_t{0}}, {u"Keywords", std::int64_t{1}}, {u"Regular expressions", std::int64_t{2}}});
  const auto highlights = [&style] {
    const std::int64_t* chosen = std::get_if<std::int64_t>(&style.Value());
    return chosen && *chosen != 0;
  };
  form.CheckBox(u"Highlight in reverse video", config.m_highlightReverseVideo).EnabledWhen(highlights);
  form.CheckBox(u"Highlight in bold", config.m_highlightBold).EnabledWhen(highlights);
  form.CheckBox(u"Highlight in colour", config.m_highlightColor).EnabledWhen(highlights);
  form.Text(u"Keyword set", config.m_keywordSet).EnabledWhen(highlights);

  form.Group(u"Session monitor");
  form.Text(u"Listen address", config.m_monitorListenAddress);
  form.Text(u"Monitor user name", config.m_monitorUsername);
  form.Password(u"Monitor password", config.m_monitorPassword);
  form.CheckBox(u"Allow remote input", config.m_monitorAllowRemoteInput);
  form.EndGroup();
}
