#include "dialogs/global/GlobalSslPage.h"

GlobalSslPage::GlobalSslPage(GlobalConfig& global) : NPropertyTreePage(u"TLS") {
  NForm& form = Form();
  form.Label(u"A client certificate proves who connects to servers that ask for one.");
  form.File(u"Client certificate", global.m_certificatePath, u"Certificates (*.pfx *.p12 *.pem)");
}
