#include "dialogs/global/GlobalSoundPage.h"

GlobalSoundPage::GlobalSoundPage(GlobalConfig& global) : NPropertyTreePage(u"Sound") {
  NForm& form = Form();
  constexpr std::u16string_view kSounds = u"Sound files (*.wav)";
  form.File(u"Connected", global.m_connectSoundFile, NUnicodeString(kSounds));
  form.File(u"Disconnected", global.m_disconnectSoundFile, NUnicodeString(kSounds));
  form.File(u"Transfer complete", global.m_transferCompleteSoundFile, NUnicodeString(kSounds));
  form.File(u"Error", global.m_errorSoundFile, NUnicodeString(kSounds));
}
