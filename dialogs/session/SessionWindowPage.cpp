#include "dialogs/session/SessionWindowPage.h"

#include <cstdint>

SessionWindowPage::SessionWindowPage(ISessionConfig& session) : NPropertyTreePage(u"Window") {
  SessionConfig& config = session.Config();
  TerminalConfig& terminal = config.m_terminal;
  NForm& form = Form();

  form.Group(u"Size");
  form.CheckBox(u"Full screen", terminal.m_isFullScreen);
  form.CheckBox(u"Horizontal scroll bar", terminal.m_horizontalScrollbar);
  form.CheckBox(u"Vertical scroll bar", terminal.m_verticalScrollbar);
  form.CheckBox(u"Synchronize view to rows", terminal.m_syncViewRows);
  form.CheckBox(u"Synchronize view to columns", terminal.m_syncViewCols);
  form.Choice(u"On resize", terminal.m_resizeMode,
              {{u"Change number of rows and columns", std::int64_t{0}},
               {u"Change font size", std::int64_t{1}},
               {u"Keep size", std::int64_t{2}}});

  form.Group(u"Position");
  NFormControl& position = form.CheckBox(u"Use position", terminal.m_usePosition);
  form.Number(u"X position", terminal.m_xPosition, -100000, 100000).EnabledWhenChecked(position);
  form.CheckBox(u"X position from the left edge", terminal.m_xPositionRelativeLeft).EnabledWhenChecked(position);
  form.Number(u"Y position", terminal.m_yPosition, -100000, 100000).EnabledWhenChecked(position);
  form.CheckBox(u"Y position from the top edge", terminal.m_yPositionRelativeTop).EnabledWhenChecked(position);

  form.Group(u"Bars");
  form.CheckBox(u"Show Wyse label line", config.m_showWyseLabelLine);
  NFormControl& buttonBar = form.CheckBox(u"Show button bar", terminal.m_userButtonBar);
  form.Text(u"Button bar name", terminal.m_userButtonBarName).EnabledWhenChecked(buttonBar);
  form.CheckBox(u"Show chat window", terminal.m_showChatWindow);
  form.EndGroup();
}
