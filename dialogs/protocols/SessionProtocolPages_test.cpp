#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "base/NUnknownPointer.h"
#include "config/ISessionConfig.h"
#include "config/NConfigTestFolder.h"
#include "dialogs/protocols/NProtocolTable.h"
#include "dialogs/protocols/SessionProtocolPage.h"
#include "uicore/NPropertyTreeDialog.h"

namespace {

// The field's number or text as a control holds it.
NControlValue Held(const NFieldValue& value) {
  return value.kind == NFieldValue::Kind::kString ? NControlValue(value.text) : NControlValue(value.number);
}

struct Edit {
  std::u16string_view protocol, label;
  NControlValue value;
  std::u16string_view valueName;  // of the field the control must write
};

// Each protocol's own port above all: a page bound to another protocol's
// port field looks right and connects to the wrong one.
const Edit kEdits[] = {
    {u"SSH2", u"Port", std::int64_t{2222}, u"Port"},
    {u"SSH1", u"Port", std::int64_t{2201}, u"Port"},
    {u"Telnet", u"Port", std::int64_t{2323}, u"Telnet Port"},
    {u"RLogin", u"Port", std::int64_t{1513}, u"RLogin Port"},
    {u"Serial", u"Baud rate", std::int64_t{115200}, u"Baud Rate"},
    {u"TAPI", u"Phone number", NUnicodeString(u"555 0100"), u"Phone Number"},
    {u"Local Shell", u"Shell command", NUnicodeString(u"/bin/zsh -l"), u"Shell Command"},
    {u"TN3270", u"Port", std::int64_t{2023}, u"TN3270 Port"},
    {u"TN3270", u"Terminal type", NUnicodeString(u"IBM-3278-4"), u"Terminal Type"},
    {u"FTP", u"Port", std::int64_t{2121}, u"FTP Port"},
    {u"SFTP", u"Port", std::int64_t{2202}, u"Port"},
    {u"SCP", u"Port", std::int64_t{2203}, u"Port"},
    {u"FTPS", u"Port", std::int64_t{9990}, u"FTPS Port"},
};

TEST(SessionProtocolPagesTest, EachRegisteredPageIsTitledByItsProtocolAndStoresIntoItsOwnFields) {
  NConfigTestFolder folder;
  folder.Write("Sessions\\s", {{u"Is Session", 1}});
  NReportMessageParams params;
  auto session = NUnknownPointer<ISessionConfig>::Adopt(NOpenSession(u"s", false, params));
  ASSERT_TRUE(session) << params.GetText().ToUtf8();
  NProtocolTable::ResetForTesting();
  NProtocolTable::LoadModules();
  NPropertyTreeDialog dialog(u"Session Options", 0, nullptr, nullptr);
  NPropertyTreePage connection(u"Connection");
  dialog.AddPage(&connection);
  std::set<std::string> edited, listed;
  std::size_t pages = 0;
  for (const Edit& edit : kEdits) listed.insert(NUnicodeString(edit.protocol).ToUtf8());
  for (std::size_t i = 0; i < NProtocolTable::Count(); ++i) {
    const NProtocolEntry& entry = NProtocolTable::Entry(i);
    pages += entry.factory ? 1 : 0;
    for (const Edit& edit : kEdits) {
      if (!entry.factory || entry.name != edit.protocol) continue;
      SCOPED_TRACE(entry.name.ToUtf8() + " / " + NUnicodeString(edit.label).ToUtf8());
      edited.insert(entry.name.ToUtf8());
      std::unique_ptr<SessionProtocolPage> page = entry.factory(dialog, 0, *session, connection);
      EXPECT_EQ(page->Title().ToUtf8(), entry.name.ToUtf8());
      std::set<NUnicodeString> labels;  // a control is found by its label
      for (const auto& shown : page->Form().Controls()) EXPECT_TRUE(labels.insert(shown->Label()).second);
      ASSERT_TRUE(page->OnSetActive());
      NFormControl* control = page->Form().Find(edit.label);
      ASSERT_NE(control, nullptr);
      EXPECT_EQ(control->SetValue(edit.value), NEditResult::kDone);
      EXPECT_TRUE(page->OnOK());
      const std::vector<NProfileData*> fields = session->Config().AllFields();
      auto field = std::find_if(fields.begin(), fields.end(), [&](auto* f) { return f->Name() == edit.valueName; });
      ASSERT_NE(field, fields.end());
      EXPECT_EQ(Held((*field)->Describe()), edit.value);
    }
  }
  EXPECT_EQ(edited, listed) << "a protocol of this test has no page";
  EXPECT_EQ(edited.size(), pages) << "a page is not tried here";
  NProtocolTable::ResetForTesting();
}

}  // namespace
