#include "dialogs/session/SessionPrintingPage.h"

SessionPrintingPage::SessionPrintingPage(ISessionConfig& session, bool printerAvailable)
    : NPropertyTreePage(u"Printing") {
  SessionConfig& config = session.Config();
  NForm& form = Form();
  if (!printerAvailable) form.Label(u"No printer is available: the settings are kept for when one is.");
  NFormControl& useGlobal = form.CheckBox(u"Use global print settings", config.m_useGlobalPrintSettings);
  form.Number(u"Eject page interval (seconds)", config.m_ejectPageInterval, 0, 3600)
      .EnabledWhen([printerAvailable] { return printerAvailable; })
      .EnabledWhenUnchecked(useGlobal);
}
