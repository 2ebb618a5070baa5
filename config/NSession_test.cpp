#include "config/NSession.h"

#include "base/NUnknownPointer.h"

#include <gtest/gtest.h>

#include "config/NConfigTestFolder.h"
#include "config/NSessionName.h"
#include "uicore/NMessageBox.h"

namespace {

class NSessionTest : public testing::Test {
 protected:
  // Writes a session key holding `values`, and "Is Session".
  void MakeSession(const std::string& path, NConfigTestFolder::Values values) {
    m_folder.Write("Sessions\\" + path, {{u"Is Session", 1}});
    m_folder.Write("Sessions\\" + path, values);
  }

  std::optional<std::uint32_t> Dword(const std::string& path, std::u16string_view name) {
    return m_folder.Dword("Sessions\\" + path, name);
  }

  NUnknownPointer<ISessionConfig> Open(std::u16string_view path, bool readOnly = false) {
    return NUnknownPointer<ISessionConfig>::Adopt(NOpenSession(path, readOnly, m_params));
  }

  NConfigTestFolder m_folder;
  NReportMessageParams m_params;
};

TEST_F(NSessionTest, NewSessionsStartFromDefaultButKeepTheirOwnConnection) {
  MakeSession("Default", {{u"Rows", 40},
                          {u"Hostname", u"template.example"},
                          {u"Emulation", u"VT220"},
                          {u"Password V2", u"template password"}});
  auto session = NUnknownPointer<ISessionConfig>::Adopt(NCreateSession(u"Lab\\new", m_params));
  ASSERT_TRUE(session) << m_params.GetText().ToUtf8();
  EXPECT_EQ(session->Config().m_terminal.m_rows.Get(), 40);
  EXPECT_EQ(session->Config().m_terminal.m_emulation.Get(), u"VT220");
  EXPECT_EQ(session->Config().m_connect.m_hostname.Get(), u"");
  EXPECT_EQ(session->Config().m_connect.m_password.Get().Stored(), u"") << "a password names one connection too";
  ASSERT_TRUE(session->Save(m_params)) << m_params.GetText().ToUtf8();
  EXPECT_EQ(Dword("Lab\\new", u"Is Session"), 1u);
  EXPECT_EQ(Dword("Lab\\new", u"Cols"), 80u) << "a new session is written whole";
  NReportMessageParams taken;
  EXPECT_EQ(NCreateSession(u"Lab\\new", taken), nullptr);
  EXPECT_NE(taken.GetCode(), 0u);
}

TEST_F(NSessionTest, OnlyKeysWithIsSessionOpenAndLockedOnesAreReadOnly) {
  MakeSession("Lab\\a", {});
  MakeSession("a", {});
  EXPECT_FALSE(Open(u"Lab")) << "a folder is no session";
  EXPECT_FALSE(Open(u"Lab\\missing"));
  auto a = Open(u"Lab\\a");
  ASSERT_TRUE(a);
  EXPECT_EQ(a->Name(), u"a");
  EXPECT_FALSE(a->IsReadOnly());
  NSetSessionLocked(u"a", true);
  auto locked = Open(u"a");
  ASSERT_TRUE(locked);
  EXPECT_TRUE(locked->IsReadOnly());
  locked->Config().m_terminal.m_rows = 50;
  EXPECT_FALSE(locked->Save(m_params));
  NSetSessionLocked(u"a", false);
  auto readOnly = Open(u"a", true);
  EXPECT_TRUE(readOnly->IsReadOnly());
  readOnly->SetLockedByHost(false);
  EXPECT_TRUE(readOnly->IsReadOnly()) << "opened read-only stays read-only";
}

TEST_F(NSessionTest, CopyRenameAndDelete) {
  MakeSession("Lab\\a", {{u"Rows", 33}});
  auto a = Open(u"Lab\\a");
  ASSERT_TRUE(a);
  auto copy = NUnknownPointer<ISessionConfig>::Adopt(a->Copy(u"Other\\b", m_params));
  ASSERT_TRUE(copy) << m_params.GetText().ToUtf8();
  EXPECT_EQ(Dword("Other\\b", u"Rows"), 33u);
  EXPECT_EQ(a->Copy(u"Other\\b", m_params), nullptr) << "a copy never overwrites";
  ASSERT_TRUE(a->Rename(u"c", m_params)) << m_params.GetText().ToUtf8();
  EXPECT_EQ(a->Path(), u"Lab\\c");
  EXPECT_EQ(Dword("Lab\\c", u"Rows"), 33u);
  EXPECT_FALSE(std::filesystem::exists(m_folder.Root() / "Sessions" / "Lab" / "a.ini"));
  ASSERT_TRUE(a->Rename(u"C", m_params)) << m_params.GetText().ToUtf8();
  EXPECT_EQ(a->Path(), u"Lab\\C");
  EXPECT_EQ(Dword("Lab\\C", u"Rows"), 33u);
  const std::filesystem::directory_iterator lab(m_folder.Root() / "Sessions" / "Lab");
  EXPECT_EQ(std::distance(lab, {}), 1) << "a change of case leaves one file";
  ASSERT_TRUE(copy->Delete(m_params));
  EXPECT_FALSE(std::filesystem::exists(m_folder.Root() / "Sessions" / "Other" / "b.ini"));
}

TEST_F(NSessionTest, PreEditTracksChangesOfTheEdit) {
  MakeSession("a", {});
  auto a = Open(u"a");
  a->PreEdit();
  EXPECT_FALSE(a->IsModified());
  a->Config().m_terminal.m_cols = 132;
  EXPECT_TRUE(a->IsModified());
  a->Config().m_terminal.m_cols = 80;
  EXPECT_FALSE(a->IsModified());
}

TEST_F(NSessionTest, DefaultChangesReachEverySessionButTheReadOnlyOnes) {
  MakeSession("Default", {{u"Rows", 24}, {u"Cols", 80}});
  MakeSession("one", {{u"Rows", 30}, {u"Cols", 100}});
  MakeSession("Lab\\two", {{u"Rows", 31}});
  MakeSession("Lab\\Deep\\three", {{u"Rows", 32}});
  NSetSessionLocked(u"Lab\\two", true);
  auto defaults = Open(u"Default");
  defaults->PreEdit();
  defaults->Config().m_terminal.m_rows = 50;
  std::uint32_t sessions = 0, updated = 0;
  ASSERT_TRUE(defaults->ApplyDefaultChanges(&sessions, &updated, m_params)) << m_params.GetText().ToUtf8();
  NSetSessionLocked(u"Lab\\two", false);
  EXPECT_EQ(sessions, 3u);
  EXPECT_EQ(updated, 2u);
  EXPECT_EQ(Dword("one", u"Rows"), 50u);
  EXPECT_EQ(Dword("one", u"Cols"), 100u) << "only the changed values are copied";
  EXPECT_EQ(Dword("Lab\\Deep\\three", u"Rows"), 50u);
  EXPECT_EQ(Dword("Lab\\two", u"Rows"), 31u);
}

TEST_F(NSessionTest, NameRulesInTheirOrder) {
  MakeSession("Lab\\abc", {});
  const struct {
    std::u16string_view location, oldName, newName;
    bool isNew;
    std::uint32_t code;  // 0: accepted
    const char* text;    // the message, when refused
  } cases[] = {
      {u"Lab", u"", u"", true, kMsgNameEmpty, "The name must be specified."},
      {u"Lab", u"", u"a*b/c", true, kMsgNameIllegalCharacter, "The name contains an illegal character: ' / '"},
      {u"Lab", u"", u"a|b:c", true, kMsgNameIllegalCharacter, "The name contains an illegal character: ' : '"},
      {u"Lab", u"", u"COM1", true, kMsgNameReservedDevice, "COM1 is a reserved device name"},
      {u"Lab", u"", u"lpt9.log", true, kMsgNameReservedDevice, "lpt9.log is a reserved device name"},
      {u"Lab", u"", u"clock$", true, kMsgNameReservedDevice, "clock$ is a reserved device name"},
      {u"Lab", u"", u"COM10", true, 0, ""},
      {u"Lab", u"", u"CONSOLE", true, 0, ""},
      {u"Lab", u"", u"abc", true, kMsgNameInUse, "'abc' is already in use."},
      {u"Lab\\abc", u"abc", u"ABC", false, 0, ""},
      {u"Lab\\abc", u"abc", u"abc", false, 0, ""},
      {u"Lab\\x", u"x", u"abc", false, kMsgNameInUse, "'abc' is already in use."},
      {u"x", u"x", u"abc", false, 0, ""},  // a session at the top: the top has no "abc"
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(NUnicodeString(c.location).ToUtf8() + ": " + NUnicodeString(c.newName).ToUtf8());
    NReportMessageParams params;
    EXPECT_EQ(NCheckSessionName(c.location, c.oldName, c.newName, c.isNew, params), c.code == 0);
    EXPECT_EQ(params.GetCode(), c.code);
    if (c.code) {
      EXPECT_NE(params.GetText().ToUtf8().find(c.text), std::string::npos) << params.GetText().ToUtf8();
    }
  }
}

TEST_F(NSessionTest, ValidateSessionNameShowsTheFirstFailure) {
  MakeSession("abc", {});
  NClearShownMessageBoxes();
  EXPECT_FALSE(ValidateSessionName(NUnicodeString(u""), NUnicodeString(), NUnicodeString(u"abc"), true, nullptr));
  EXPECT_TRUE(ValidateSessionName(NUnicodeString(u""), NUnicodeString(), NUnicodeString(u"new"), true, nullptr));
  const std::vector<NShownMessageBox> shown = NShownMessageBoxes();
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].text.ToUtf8().rfind("'abc' is already in use.", 0), 0u);
  EXPECT_EQ(shown[0].style & kMessageBoxIconMask, kMessageBoxIconWarning);
}

}  // namespace
