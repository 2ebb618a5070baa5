#include "config/SessionConfig.h"

#include <gtest/gtest.h>

#include <set>

#include "config/NConfigTestFolder.h"

namespace {

class SessionConfigTest : public testing::Test {
 protected:
  // The key of session `name`, read afresh.
  std::unique_ptr<NProfileKey> Session(const std::string& name = "s") { return m_folder.Key("Sessions\\" + name); }

  void Store(const std::string& name, NConfigTestFolder::Values values) { m_folder.Write("Sessions\\" + name, values); }

  // A string value of session "s" as its file holds it, or "(absent)".
  NUnicodeString Stored(std::u16string_view name) { return m_folder.String("Sessions\\s", name); }

  std::unique_ptr<SessionConfig> Loaded(const std::string& name = "s") {
    auto config = std::make_unique<SessionConfig>();
    NReportMessageParams params;
    EXPECT_TRUE(config->Load(*Session(name), params)) << params.GetText().ToUtf8();
    return config;
  }

  NConfigTestFolder m_folder;
};

// The session's, the connection's and the terminal's values share one key.
TEST_F(SessionConfigTest, EachNameIsDeclaredOnceAcrossTheKeyAndDefaultsOfEachKindHold) {
  const SessionConfig config;
  std::set<std::u16string_view> names;
  for (const NProfileData* field : config.AllFields()) {
    EXPECT_TRUE(names.insert(field->Name()).second) << NUnicodeString(field->Name()).ToUtf8();
  }
  EXPECT_EQ(config.m_terminal.Fields().size(), 90u);
  // The default emulation, Xterm, switches columns.
  EXPECT_TRUE(config.m_terminal.m_enableColumnSwitching.Get());
  EXPECT_EQ(config.m_terminal.m_fontFamily.Get(), u"Lucida Console");
  EXPECT_EQ(config.m_zmodemReceiveCommand.Get(), u"rz\r");
  EXPECT_EQ(config.m_scpShellPrompts.Get(), NStringArray{u"\"? \",0,\"\\n\""});
  EXPECT_TRUE(config.m_isSession.Get());
}

TEST_F(SessionConfigTest, EmulationNamesAndTheColumnSwitchingDefaultThatFollowsThem) {
  Store("ansi", {{u"Emulation", u"ANSI"}});
  Store("vt", {{u"Emulation", u"VT220"}});
  Store("stored", {{u"Emulation", u"ANSI"}, {u"Enable 80-132 Column Switching", 1}});
  Store("s", {{u"Emulation", u"SCO-ANSI"}});
  EXPECT_FALSE(Loaded("ansi")->m_terminal.m_enableColumnSwitching.Get());
  EXPECT_TRUE(Loaded("vt")->m_terminal.m_enableColumnSwitching.Get());
  EXPECT_TRUE(Loaded("stored")->m_terminal.m_enableColumnSwitching.Get()) << "a stored value wins";
  EXPECT_EQ(Loaded()->m_terminal.m_emulation.Get(), u"SCOANSI") << "the same emulation as SCOANSI";
  EXPECT_EQ(TerminalConfig::CanonicalEmulation(u"sco-ansi"), u"SCOANSI");
  EXPECT_EQ(TerminalConfig::CanonicalEmulation(u"VT100"), u"VT100");
}

TEST_F(SessionConfigTest, OldLoginScriptIsConvertedOnceAndWrittenAtOnce) {
  Store("s", {{u"Login Script", u"login:\tme\tPassword:\tsecret\"x"}});
  const ProfileExpectSendList script = Loaded()->LoginScript();
  ASSERT_EQ(script.Pairs().size(), 2u);
  EXPECT_EQ(script.Pairs()[0].expect, u"login:");
  EXPECT_EQ(script.Pairs()[1].send, u"secret\"x");
  // What the first load left on disk.
  NStringArray v3;
  ASSERT_TRUE(Session()->GetMultiStringValue(u"Login Script V3", &v3));
  EXPECT_EQ(v3[1], u"\"Password:\",\"secret\"\"x\",0");
  EXPECT_EQ(Stored(u"Login Script"), u"") << "blanked, so the conversion never runs twice";
  Store("s", {{u"Login Script V3", NStringArray()}});
  EXPECT_TRUE(Loaded()->LoginScript().IsEmpty()) << "the second load reads V3 alone";
}

TEST_F(SessionConfigTest, NewerLoginScriptFormWinsAndV3IsLeftAlone) {
  Store("s", {{u"Login Script", u"a\tb"}, {u"Login Script V2", NStringArray{u"ok>\tgo"}}});
  ProfileExpectSendList script = Loaded()->LoginScript();
  ASSERT_EQ(script.Pairs().size(), 1u);
  EXPECT_EQ(script.Pairs()[0].expect, u"ok>");
  EXPECT_EQ(script.Pairs()[0].send, u"go");
  EXPECT_EQ(Stored(u"Login Script V2"), u"");
  Store("both", {{u"Login Script V3", NStringArray{u"\"x\",\"y\",1"}}, {u"Login Script", u"old\tone"}});
  script = Loaded("both")->LoginScript();
  ASSERT_EQ(script.Pairs().size(), 1u);
  EXPECT_TRUE(script.Pairs()[0].hide);
  EXPECT_EQ(m_folder.String("Sessions\\both", u"Login Script"), u"old\tone") << "nothing to convert when V3 is there";
}

TEST_F(SessionConfigTest, OlderNamesCarryForwardOnlyWhenTheNewestIsAbsent) {
  Store("s", {{u"Monitor Password", u"old-secret"},
              {u"PGP Upload Command", u"pgp -e"},
              {u"PGP Download Command", u"pgp -d"},
              {u"PGP Download Command V2", u"gpg -d"},
              {u"Enable 80/132 Column Switching", 0},
              {u"Keymap v2", NStringArray{u"F1=help"}},
              {u"Keymap", u"ignored;too"}});
  auto config = Loaded();
  EXPECT_EQ(config->m_monitorPassword.Get().Stored(), u"old-secret");
  EXPECT_EQ(config->m_pgpUploadCommand.Get(), u"pgp -e");
  EXPECT_EQ(config->m_pgpDownloadCommand.Get(), u"gpg -d") << "the newest name wins";
  EXPECT_FALSE(config->m_terminal.m_enableColumnSwitching.Get());
  EXPECT_EQ(config->m_terminal.m_keymap.Get(), NStringArray{u"F1=help"});
  NReportMessageParams params;
  ASSERT_TRUE(config->Save(*Session(), false, params)) << params.GetText().ToUtf8();
  EXPECT_EQ(Stored(u"Monitor Password V2"), u"old-secret") << "converted values reach their new name";
  EXPECT_EQ(m_folder.Dword("Sessions\\s", u"Enable 80-132 Column Switching"), 0u);
}

TEST_F(SessionConfigTest, ANewestNameHeldAsAnotherKindStillBlocksTheOlderOnes) {
  Store("s", {{u"Keymap v3", u"not a list"},
              {u"Keymap", u"F1=help"},
              {u"Enable 80-132 Column Switching", u"yes"},
              {u"Enable 80/132 Column Switching", 0},
              {u"Login Script V3", u"not a list"},
              {u"Login Script", u"login:\tme"},
              {u"Monitor Password V2", 7},
              {u"Monitor Password", u"old-secret"}});
  auto loaded = Loaded();
  EXPECT_TRUE(loaded->m_terminal.m_keymap.Get().empty());
  EXPECT_FALSE(loaded->m_terminal.m_keymap.IsModified());
  EXPECT_FALSE(loaded->m_terminal.m_enableColumnSwitching.IsModified());
  EXPECT_TRUE(loaded->LoginScript().IsEmpty());
  EXPECT_EQ(loaded->m_monitorPassword.Get().Stored(), u"");
  EXPECT_FALSE(loaded->IsModified());
  EXPECT_EQ(Stored(u"Login Script"), u"login:\tme") << "no conversion was written";
}

TEST_F(SessionConfigTest, ASaveRefusingAValueWritesNothing) {
  SessionConfig config;
  config.m_titleBar = NUnicodeString(u"two\nlines");
  NReportMessageParams params;
  EXPECT_FALSE(config.Save(*Session(), true, params));
  EXPECT_NE(params.GetText().ToUtf8().find("Title Bar"), std::string::npos) << params.GetText().ToUtf8();
  EXPECT_FALSE(std::filesystem::exists(m_folder.Root() / "Sessions" / "s.ini"));
}

TEST(ProfileExpectSendListTest, StringsRoundTripAndBadLinesAreRefused) {
  ProfileExpectSendList list;
  list.Add({NUnicodeString(u"say \"hi\","), NUnicodeString(u""), true});
  list.Add({NUnicodeString(u""), NUnicodeString(u"x"), false});
  ProfileExpectSendList back;
  ASSERT_TRUE(ProfileExpectSendList::FromStrings(list.ToStrings(), &back));
  EXPECT_EQ(back, list);
  for (const char16_t* bad : {u"\"a\",\"b\"", u"\"a\",\"b\",2", u"a,b,0", u"\"a,\"b\",0", u"\"a\";\"b\",0"}) {
    EXPECT_FALSE(ProfileExpectSendList::FromStrings(NStringArray{bad}, &back)) << NUnicodeString(bad).ToUtf8();
  }
  EXPECT_TRUE(ProfileExpectSendList::FromVersion1(u"").IsEmpty());
  EXPECT_EQ(ProfileExpectSendList::FromVersion1(u"only").Pairs().size(), 1u);
}

}  // namespace
