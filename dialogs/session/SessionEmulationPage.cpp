#include "dialogs/session/SessionEmulationPage.h"

#include <cstdint>
#include <string>

#include "dialogs/NMessageText.h"

namespace {

NUnicodeString Decimal(int n) { return NUnicodeString::FromUtf8(std::to_string(n)); }

std::vector<NChoiceItem> Emulations(const NUnicodeString& stored) {
  std::vector<NChoiceItem> items;
  for (const NUnicodeString& name : TerminalConfig::EmulationNames()) {
    // The older spelling is read as "SCOANSI"; offering both would show one
    // emulation twice.
    if (name != u"SCO-ANSI") items.push_back({name, name});
  }
  NOfferStoredChoice(items, stored);
  return items;
}

}  // namespace

SessionEmulationPage::SessionEmulationPage(ISessionConfig& session, int columnLimit, int globalMaxColumns)
    : NPropertyTreePage(u"Emulation") {
  TerminalConfig& terminal = session.Config().m_terminal;
  NForm& form = Form();
  form.Choice(u"Emulation", terminal.m_emulation, Emulations(terminal.m_emulation.Get()));
  form.CheckBox(u"ANSI colour", terminal.m_ansiColor);
  NFormControl& useType = form.CheckBox(u"Use terminal type", terminal.m_useTerminalType);
  form.Text(u"Terminal type", terminal.m_terminalType).EnabledWhenChecked(useType);

  form.Group(u"Size");
  form.Number(u"Rows", terminal.m_rows, 1, 1000);
  const int maximum = columnLimit > 0 && columnLimit < globalMaxColumns ? columnLimit : globalMaxColumns;
  // The range is checked on OK rather than while typing, so that the
  // refusal can say where the limit is raised.
  form.Number(NUnicodeString(kColumnsLabel), terminal.m_cols, 1, INT32_MAX)
      .Validate([maximum, globalMaxColumns](const NControlValue& value) -> std::optional<NUnicodeString> {
        const std::int64_t* columns = std::get_if<std::int64_t>(&value);
        if (columns && *columns >= 1 && *columns <= maximum) return std::nullopt;
        return ColumnsMessage(1, maximum, globalMaxColumns);
      });
  form.Number(u"Scrollback buffer (lines)", terminal.m_scrollback, 0, 1000000);

  form.Group(u"Answerback");
  NFormControl& useAnswerback = form.CheckBox(u"Use answerback", terminal.m_useAnswerback);
  form.Text(u"Answerback string", terminal.m_answerback).EnabledWhenChecked(useAnswerback);
  form.EndGroup();
  form.CheckBox(u"Use alternate keyboard", terminal.m_useAlternateKeyboard);
}

NUnicodeString SessionEmulationPage::ColumnsMessage(int minimum, int maximum, int globalMaximum) {
  return NMessageText(kMsgColumnsOutOfRange, {Decimal(minimum), Decimal(maximum), Decimal(globalMaximum)});
}

bool SessionEmulationPage::OnValidate(NPageFailure& failure) {
  if (NPropertyTreePage::OnValidate(failure)) return true;
  if (failure.control && failure.control->Label() == kColumnsLabel) failure.code = kMsgColumnsOutOfRange;
  return false;
}
