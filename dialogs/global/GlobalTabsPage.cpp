#include "dialogs/global/GlobalTabsPage.h"

namespace {

constexpr std::uint32_t kMsgStatusIndicatorChanged = 0x61380027;

// Each session state: the sample's caption and its two colour controls.
struct State {
  const char16_t* caption;
  const char16_t* indicator;
  const char16_t* background;
};
constexpr State kStates[] = {
    {u"Connected", u"Connected", u"Connected background"},
    {u"Disconnected", u"Disconnected", u"Disconnected background"},
    {u"New input", u"New input", u"New input background"},
    {u"Inactive", u"Inactive", u"Inactive background"},
    {u"Locked", u"Locked", u"Locked background"},
};

std::int64_t NumberOf(const NForm& form, std::u16string_view label, std::int64_t fallback) {
  const NFormControl* control = form.Find(label);
  const std::int64_t* number = control ? std::get_if<std::int64_t>(&control->Value()) : nullptr;
  return number ? *number : fallback;
}

}  // namespace

std::vector<NSampleTab> GlobalTabsPage::SampleTabControl::Tabs() const {
  const bool bar = NumberOf(m_form, kStyleLabel, 0) == 0;
  const int width = static_cast<int>(NumberOf(m_form, u"Status indicator width", 2));
  std::vector<NSampleTab> tabs;
  for (const State& state : kStates) {
    tabs.push_back({state.caption, static_cast<std::uint32_t>(NumberOf(m_form, state.indicator, 0)),
                    static_cast<std::uint32_t>(NumberOf(m_form, state.background, 0xFFFFFF)), bar, width});
  }
  return tabs;
}

GlobalTabsPage::GlobalTabsPage(GlobalConfig& global, NUnicodeString appName)
    : NAnnouncingPage(u"Tabs/Tiling", std::move(appName)), m_samples(Form()) {
  NForm& form = Form();
  // First, so that it stays in sight while the colours below are edited.
  form.SampleTabs(u"Sample tabs", [this] { return m_samples.Tabs(); });
  form.Group(u"Tabs");
  NFormControl& tabs = form.CheckBox(u"Show session tabs", global.m_showSessionTabs);
  form.CheckBox(u"Open sessions in a tab", global.m_openSessionsInTab);
  form.CheckBox(u"Reuse disconnected tabs", global.m_reuseDisconnectedTabs);
  form.CheckBox(u"Show tabs only when several are open", global.m_showMultipleTabsOnly).EnabledWhenChecked(tabs);
  form.CheckBox(u"Close button on tabs", global.m_closeButtonOnTabs).EnabledWhenChecked(tabs);
  form.CheckBox(u"Confirm closing several tabs", global.m_confirmCloseMultipleTabs);
  form.CheckBox(u"Switch tabs in the order last used", global.m_enableTabSwitchingHistory);
  form.CheckBox(u"Large tab bar", global.m_useLargeTabBar).EnabledWhenChecked(tabs);
  form.Number(u"Minimum tab width", global.m_minTabWidth, 20, 400).EnabledWhenChecked(tabs);
  form.Radio(u"Tab position", global.m_tabLocation, {{u"Top", std::int64_t{0}}, {u"Bottom", std::int64_t{1}}})
      .EnabledWhenChecked(tabs);
  form.Choice(u"Double-clicking a tab", global.m_doubleClickAction,
              {{u"Does nothing", std::int64_t{0}},
               {u"Clones the session", std::int64_t{1}},
               {u"Renames the tab", std::int64_t{2}},
               {u"Disconnects the session", std::int64_t{3}}});

  form.Group(u"Status indicators");
  NFormControl& status = form.CheckBox(u"Show status indicators", global.m_showStatusIndicators);
  Announce(form.Radio(NUnicodeString(kStyleLabel), global.m_statusIndicatorStyle,
                      {{u"A bar along the tab", std::int64_t{0}}, {u"The whole tab", std::int64_t{1}}})
               .EnabledWhenChecked(status),
           kMsgStatusIndicatorChanged);
  form.Number(u"Status indicator width", global.m_statusIndicatorWidth, 1, 10).EnabledWhenChecked(status);
  NProfileColor* const indicators[] = {&global.m_connectedColor, &global.m_disconnectedColor, &global.m_newInputColor,
                                       &global.m_inactivityColor, &global.m_lockedColor};
  NProfileColor* const backgrounds[] = {&global.m_backgroundConnectedColor, &global.m_backgroundDisconnectedColor,
                                        &global.m_backgroundNewInputColor, &global.m_backgroundInactivityColor,
                                        &global.m_backgroundLockedColor};
  for (std::size_t i = 0; i < std::size(kStates); ++i) {
    form.Color(kStates[i].indicator, *indicators[i]).EnabledWhenChecked(status);
    form.Color(kStates[i].background, *backgrounds[i]).EnabledWhenChecked(status);
  }
  NFormControl& inactivity = form.CheckBox(u"Show inactivity", global.m_showInactivityStatus);
  form.Number(u"Inactive after (ms)", global.m_inactivityTimeoutValue, 1000, 3600000).EnabledWhenChecked(inactivity);
  form.EndGroup();
}
