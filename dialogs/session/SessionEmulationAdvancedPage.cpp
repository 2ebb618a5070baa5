#include "dialogs/session/SessionEmulationAdvancedPage.h"

SessionEmulationAdvancedPage::SessionEmulationAdvancedPage(ISessionConfig& session) : NPropertyTreePage(u"Advanced") {
  SessionConfig& config = session.Config();
  TerminalConfig& terminal = config.m_terminal;
  NForm& form = Form();

  form.Group(u"Host data");
  form.CheckBox(u"Local echo", terminal.m_localEcho);
  form.CheckBox(u"Strip 8th bit", terminal.m_strip8thBit);
  form.CheckBox(u"Translate incoming CR to CRLF", terminal.m_translateIncomingCrToCrlf);
  form.CheckBox(u"Dumb terminal ignores CRLF", terminal.m_dumbTerminalIgnoresCrlf);
  form.CheckBox(u"Raw EOL mode", config.m_rawEolMode);
  form.CheckBox(u"SGR 0 resets ANSI colour", terminal.m_sgrZeroResetsAnsiColor);
  form.CheckBox(u"SCO line wrap", terminal.m_scoLineWrap);
  form.CheckBox(u"Hard reset on ESC c", terminal.m_hardResetOnEscC);
  form.CheckBox(u"Ignore shift out sequence", terminal.m_ignoreShiftOutSequence);
  form.CheckBox(u"Ignore window title change requests", terminal.m_ignoreWindowTitleChangeRequests);
  form.CheckBox(u"WaitForStrings ignores colour", terminal.m_waitForStringsIgnoresColor);
  form.Text(u"Ident string", config.m_identString);

  form.Group(u"Character sets");
  form.Text(u"Output transformer", terminal.m_outputTransformerName);
  form.Number(u"Default character set (SCS)", terminal.m_defaultScs, 0, 255);
  form.Text(u"User font map", terminal.m_userFontMap);
  form.Text(u"User line drawing map", terminal.m_userLineDrawingMap);
  form.CheckBox(u"Use Unicode line drawing characters", terminal.m_useUnicodeLineDrawing);
  form.CheckBox(u"Use symbolic names for non-printable characters", terminal.m_useSymbolicNamesForNonPrintable);

  form.Group(u"Display");
  NFormControl& tab = form.CheckBox(u"Display tabs", terminal.m_displayTab);
  form.Text(u"Tab display string", terminal.m_displayTabString).EnabledWhenChecked(tab);
  form.CheckBox(u"Audio bell", terminal.m_audioBell);
  form.CheckBox(u"Visual bell", terminal.m_visualBell);
  form.CheckBox(u"Scroll to clear screen", terminal.m_scrollToClear);
  form.CheckBox(u"Scroll to bottom on output", terminal.m_scrollToBottomOnOutput);
  form.CheckBox(u"Scroll to bottom on keypress", terminal.m_scrollToBottomOnKeypress);

  form.Group(u"Mouse and clipboard");
  form.CheckBox(u"CUA copy and paste", terminal.m_cuaCopyPaste);
  form.CheckBox(u"Shift forces local mouse operations", terminal.m_shiftForcesLocalMouseOperations);
  form.CheckBox(u"Send scroll wheel events to remote", config.m_sendScrollWheelEventsToRemote);
  form.CheckBox(u"Position cursor on left click", config.m_positionCursorOnLeftClick);
  form.CheckBox(u"Copy translates ANSI line drawing characters", terminal.m_copyTranslatesAnsiLineDrawing);
  form.CheckBox(u"Copy as RTF and plain text", terminal.m_copyAsRtfAndPlainText);
  NFormControl& delimiters = form.CheckBox(u"Use word delimiter characters", config.m_useWordDelimiterChars);
  form.Text(u"Word delimiter characters", config.m_wordDelimiterChars).EnabledWhenChecked(delimiters);
  form.EndGroup();
}
