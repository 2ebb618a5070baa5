#include "dialogs/session/SessionEmulationModesPage.h"

SessionEmulationModesPage::SessionEmulationModesPage(ISessionConfig& session, bool liveModes)
    : NPropertyTreePage(u"Modes") {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  if (liveModes) form.Label(u"These modes apply to the connected session when you press OK.");

  form.Group(u"Initial modes");
  form.CheckBox(u"Cursor key mode", terminal.m_cursorKeyMode);
  form.CheckBox(u"Keypad mode", terminal.m_keypadMode);
  form.CheckBox(u"Line wrap", terminal.m_lineWrap);
  form.CheckBox(u"Newline mode", terminal.m_newlineMode);

  form.Group(u"Switching by the host");
  NFormControl& columns = form.CheckBox(u"Enable 80-132 column switching", terminal.m_enableColumnSwitching);
  form.CheckBox(u"Ignore column switching when maximized or full screen", terminal.m_ignoreColumnSwitchingWhenMaximized)
      .EnabledWhenChecked(columns);
  form.CheckBox(u"Enable cursor key mode switching", terminal.m_enableCursorKeyModeSwitching);
  form.CheckBox(u"Enable keypad mode switching", terminal.m_enableKeypadModeSwitching);
  form.CheckBox(u"Enable line wrap mode switching", terminal.m_enableLineWrapModeSwitching);
  form.CheckBox(u"Enable alternate screen switching", terminal.m_enableAlternateScreenSwitching);

  form.Group(u"Scrolling");
  NFormControl& jump = form.CheckBox(u"Jump scroll", terminal.m_jumpScroll);
  form.CheckBox(u"Minimize drawing while jump scrolling", terminal.m_minimizeDrawingWhileJumpScrolling)
      .EnabledWhenChecked(jump);
  form.EndGroup();
}
