#pragma once

#include <string_view>

#include "base/NStringArray.h"
#include "config/NProfile.h"

// The terminal settings of a session: emulation, screen, colours, fonts,
// keyboard and modes. A sub-record of SessionConfig, under the session's key.
class TerminalConfig final : public NProfileRecord {
 public:
  // The emulations "Emulation" accepts. "SCO-ANSI" is the same emulation as
  // "SCOANSI", under the spelling older sessions used: it is accepted and
  // read as "SCOANSI" (CanonicalEmulation).
  static const NStringArray& EmulationNames();
  // The terminal types offered for TN3270.
  static const NStringArray& Tn3270TerminalTypes();
  // The name an emulation is known by: "SCO-ANSI" becomes "SCOANSI"; other
  // names stay as they are.
  static NUnicodeString CanonicalEmulation(std::u16string_view name);
  // Whether the emulation switches between 80 and 132 columns (the VT family
  // and xterm), which is the default of "Enable 80-132 Column Switching".
  static bool SupportsColumnSwitching(std::u16string_view emulation);

  TerminalConfig();

  // Reads every field, carrying the older names forward (newest name wins;
  // an older one is read only when the newest is absent, and converted).
  void Load(const NProfileKey& key);

  NProfileString m_emulation{this, u"Emulation", NUnicodeString(u"Xterm")};
  NProfileBool m_ansiColor{this, u"ANSI Color"};
  NProfileBool m_colorSchemeOverridesAnsiColor{this, u"Color Scheme Overrides Ansi Color"};
  NProfileInt m_defaultScs{this, u"Default SCS"};
  NProfileBool m_useGlobalAnsiColors{this, u"Use Global ANSI Colors"};
  NProfileStruct<NColorTable> m_ansiColorRgb{this, u"ANSI Color RGB", NDefaultAnsiColors()};
  NProfileStruct<NWindowPlacement> m_windowPlacement{this, u"Window Placement"};
  NProfileBool m_isFullScreen{this, u"Is Full Screen"};
  NProfileInt m_rows{this, u"Rows", 24};
  NProfileInt m_cols{this, u"Cols", 80};
  NProfileInt m_scrollback{this, u"Scrollback", 500};
  NProfileBool m_syncViewRows{this, u"Sync View Rows"};
  NProfileBool m_syncViewCols{this, u"Sync View Cols"};
  NProfileInt m_resizeMode{this, u"Resize Mode"};
  NProfileBool m_horizontalScrollbar{this, u"Horizontal Scrollbar"};
  NProfileBool m_verticalScrollbar{this, u"Vertical Scrollbar"};
  NProfileColor m_foreground{this, u"Foreground", 0x000000};
  NProfileColor m_background{this, u"Background", 0xFFFFFF};
  NProfileColor m_bold{this, u"Bold", 0x000000};
  NProfileString m_fontFamily{this, u"Font Family", NUnicodeString(u"Lucida Console")};
  NProfileInt m_fontSize{this, u"Font Size", 10};
  NProfileString m_colorScheme{this, u"Color Scheme"};
  NProfileStruct<NLogFont> m_normalFont{this, u"Normal Font v2", NLogFont::Make(u"Lucida Console", -13)};
  NProfileStruct<NLogFont> m_narrowFont{this, u"Narrow Font v2", NLogFont::Make(u"Lucida Console", -11)};
  NProfileBool m_useNarrowFont{this, u"Use Narrow Font"};
  NProfileString m_outputTransformerName{this, u"Output Transformer Name", NUnicodeString(u"UTF-8")};
  NProfileBool m_useUnicodeLineDrawing{this, u"Use Unicode Line Drawing"};
  NProfileBool m_blinkingCursor{this, u"Blinking Cursor"};
  NProfileInt m_cursorStyle{this, u"Cursor Style"};
  NProfileBool m_useCursorColor{this, u"Use Cursor Color"};
  NProfileColor m_cursorColor{this, u"Cursor Color"};
  NProfileBool m_mapDelete{this, u"Map Delete"};
  NProfileBool m_mapBackspace{this, u"Map Backspace"};
  NProfileString m_keymapName{this, u"Keymap Name"};
  NProfileString m_keymapFilename{this, u"Keymap Filename"};
  NProfileBool m_useAlternateKeyboard{this, u"Use Alternate Keyboard"};
  NProfileBool m_emacsMode{this, u"Emacs Mode"};
  NProfileBool m_emacsMode8Bit{this, u"Emacs Mode 8 Bit"};
  NProfileBool m_preserveAltGr{this, u"Preserve Alt-Gr"};
  NProfileStrings m_keymap{this, u"Keymap v3"};
  NProfileBool m_jumpScroll{this, u"Jump Scroll", true};
  NProfileBool m_minimizeDrawingWhileJumpScrolling{this, u"Minimize Drawing While Jump Scrolling"};
  NProfileBool m_keypadMode{this, u"Keypad Mode"};
  NProfileBool m_lineWrap{this, u"Line Wrap", true};
  NProfileBool m_cursorKeyMode{this, u"Cursor Key Mode"};
  NProfileBool m_newlineMode{this, u"Newline Mode"};
  NProfileBool m_enableColumnSwitching{this, u"Enable 80-132 Column Switching",
                                       SupportsColumnSwitching(m_emulation.Get())};
  NProfileBool m_ignoreColumnSwitchingWhenMaximized{this,
                                                    u"Ignore 80-132 Column Switching When Maximized or Full Screen"};
  NProfileBool m_enableCursorKeyModeSwitching{this, u"Enable Cursor Key Mode Switching", true};
  NProfileBool m_enableKeypadModeSwitching{this, u"Enable Keypad Mode Switching", true};
  NProfileBool m_enableLineWrapModeSwitching{this, u"Enable Line Wrap Mode Switching", true};
  NProfileBool m_enableAlternateScreenSwitching{this, u"Enable Alternate Screen Switching", true};
  NProfileBool m_waitForStringsIgnoresColor{this, u"WaitForStrings Ignores Color"};
  NProfileBool m_sgrZeroResetsAnsiColor{this, u"SGR Zero Resets ANSI Color", true};
  NProfileBool m_scoLineWrap{this, u"SCO Line Wrap"};
  NProfileBool m_displayTab{this, u"Display Tab"};
  NProfileString m_displayTabString{this, u"Display Tab String"};
  NProfileBool m_audioBell{this, u"Audio Bell", true};
  NProfileBool m_visualBell{this, u"Visual Bell"};
  NProfileBool m_scrollToClear{this, u"Scroll To Clear", true};
  NProfileBool m_closeOnDisconnect{this, u"Close On Disconnect"};
  NProfileBool m_clearOnDisconnect{this, u"Clear On Disconnect"};
  NProfileBool m_scrollToBottomOnOutput{this, u"Scroll To Bottom On Output", true};
  NProfileBool m_scrollToBottomOnKeypress{this, u"Scroll To Bottom On Keypress", true};
  NProfileBool m_cuaCopyPaste{this, u"CUA Copy Paste"};
  NProfileBool m_useTerminalType{this, u"Use Terminal Type"};
  NProfileString m_terminalType{this, u"Terminal Type"};
  NProfileString m_answerback{this, u"Answerback"};
  NProfileBool m_useAnswerback{this, u"Use Answerback"};
  NProfileBool m_usePosition{this, u"Use Position"};
  NProfileInt m_xPosition{this, u"X Position"};
  NProfileBool m_xPositionRelativeLeft{this, u"X Position Relative Left", true};
  NProfileInt m_yPosition{this, u"Y Position"};
  NProfileBool m_yPositionRelativeTop{this, u"Y Position Relative Top", true};
  NProfileBool m_localEcho{this, u"Local Echo"};
  NProfileBool m_strip8thBit{this, u"Strip 8th Bit"};
  NProfileBool m_shiftForcesLocalMouseOperations{this, u"Shift Forces Local Mouse Operations", true};
  NProfileBool m_ignoreWindowTitleChangeRequests{this, u"Ignore Window Title Change Requests"};
  NProfileBool m_copyTranslatesAnsiLineDrawing{this, u"Copy Translates ANSI Line Drawing Characters"};
  NProfileBool m_copyAsRtfAndPlainText{this, u"Copy to clipboard as RTF and plain text"};
  NProfileBool m_translateIncomingCrToCrlf{this, u"Translate Incoming CR To CRLF"};
  NProfileBool m_dumbTerminalIgnoresCrlf{this, u"Dumb Terminal Ignores CRLF"};
  NProfileBool m_useSymbolicNamesForNonPrintable{this, u"Use Symbolic Names For Non-Printable Characters"};
  NProfileBool m_userButtonBar{this, u"User Button Bar"};
  NProfileString m_userButtonBarName{this, u"User Button Bar Name"};
  NProfileBool m_showChatWindow{this, u"Show Chat Window"};
  NProfileString m_userFontMap{this, u"User Font Map"};
  NProfileString m_userLineDrawingMap{this, u"User Line Drawing Map"};
  NProfileBool m_hardResetOnEscC{this, u"Hard Reset on ESC c"};
  NProfileBool m_ignoreShiftOutSequence{this, u"Ignore Shift Out Sequence"};
};
