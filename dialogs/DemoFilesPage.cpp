#include "dialogs/DemoFilesPage.h"

namespace {

// A sound must be a wave file; no sound at all is fine.
std::optional<NUnicodeString> WaveFileOrNone(const NControlValue& value) {
  const NUnicodeString& path = std::get<NUnicodeString>(value);
  if (path.empty() || NFoldText(path).ends_with(u".wav")) return std::nullopt;
  return NUnicodeString(u"The connect sound must be a .wav file.");
}

}  // namespace

DemoFilesPage::DemoFilesPage(GlobalConfig& global) : NPropertyTreePage(u"Files") {
  NForm& form = Form();
  form.File(u"Connect sound", global.m_connectSoundFile, u"Sound files (*.wav)").Validate(WaveFileOrNone);
  form.Folder(u"Initial local folder", global.m_initialLocalFolder);
  NFormControl& sessions = form.StringList(u"Remembered sessions", global.m_rememberedSessions);
  form.Button(u"Forget remembered sessions", [&sessions] { sessions.SetValue(NStringArray()); });
}
