#include "dialogs/session/SessionXModemZModemPage.h"

#include <cstdint>

SessionXModemZModemPage::SessionXModemZModemPage(ISessionConfig& session) : NPropertyTreePage(u"X/Y/Zmodem") {
  SessionConfig& config = session.Config();
  NForm& form = Form();

  form.Group(u"Folders");
  form.Folder(u"Upload folder", config.m_uploadDirectory);
  form.Folder(u"Download folder", config.m_downloadDirectory);

  form.Group(u"Xmodem");
  form.Choice(u"Send packet size", config.m_xmodemSendPacketSize,
              {{u"128 bytes", std::int64_t{128}}, {u"1024 bytes", std::int64_t{1024}}});

  form.Group(u"Zmodem");
  NFormControl& disable = form.CheckBox(u"Disable Zmodem", config.m_disableZmodem);
  form.Text(u"Receive command", config.m_zmodemReceiveCommand).EnabledWhenUnchecked(disable);
  form.CheckBox(u"Use 32-bit CRC", config.m_zmodemUses32BitCrc).EnabledWhenUnchecked(disable);
  form.CheckBox(u"Force 1024-byte packets", config.m_force1024ForZmodem).EnabledWhenUnchecked(disable);
  form.CheckBox(u"Encode DEL characters", config.m_zmodemEncodesDel).EnabledWhenUnchecked(disable);
  form.CheckBox(u"Lower-case all-caps file names on upload", config.m_zmodemLowerCaseUploads)
      .EnabledWhenUnchecked(disable);
  form.CheckBox(u"Send init when upload starts", config.m_sendZmodemInitWhenUploadStarts).EnabledWhenUnchecked(disable);
  form.EndGroup();
}
