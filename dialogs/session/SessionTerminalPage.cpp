#include "dialogs/session/SessionTerminalPage.h"

SessionTerminalPage::SessionTerminalPage(ISessionConfig& session) : NPropertyTreePage(u"Terminal") {
  SessionConfig& config = session.Config();
  TerminalConfig& terminal = config.m_terminal;
  NForm& form = Form();

  form.Group(u"Idle handling");
  NFormControl& idle = form.CheckBox(u"Send a string when idle", config.m_idleCheck);
  form.Text(u"Idle string", config.m_idleString).EnabledWhenChecked(idle);
  form.Number(u"Idle timeout (seconds)", config.m_idleTimeout, 1, 86400).EnabledWhenChecked(idle);
  NFormControl& noOp = form.CheckBox(u"Send protocol NO-OP when idle", config.m_idleNoOpCheck);
  form.Number(u"NO-OP timeout (seconds)", config.m_idleNoOpTimeout, 1, 86400).EnabledWhenChecked(noOp);

  form.Group(u"On disconnect");
  form.CheckBox(u"Close on disconnect", terminal.m_closeOnDisconnect);
  form.CheckBox(u"Clear screen on disconnect", terminal.m_clearOnDisconnect);

  form.Group(u"Send delays");
  form.Number(u"Keyboard character delay (ms)", config.m_keyboardCharSendDelay, 0, 60000);
  form.Number(u"Line send delay (ms)", config.m_lineSendDelay, 0, 60000);
  form.Number(u"Character send delay (ms)", config.m_characterSendDelay, 0, 60000);

  form.Group(u"Window");
  NFormControl& title = form.CheckBox(u"Use window title", config.m_useTitleBar);
  form.Text(u"Window title", config.m_titleBar).EnabledWhenChecked(title);
  form.CheckBox(u"Always on top", config.m_alwaysOnTop);
  form.CheckBox(u"Disable resize", config.m_disableResize);
  form.EndGroup();
}
