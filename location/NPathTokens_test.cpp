#include "location/NPathTokens.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "platform/NPlatform.h"

namespace {

// `root` and then `names`, each after the system's separator, as an
// expansion writes the part after the token.
std::u16string Under(std::u16string_view root, std::initializer_list<std::u16string_view> names) {
  std::u16string path(root);
  for (const std::u16string_view name : names) {
    path += NPlatform::Default().PathSeparator();
    path += name;
  }
  return path;
}

NPathTokenRoots Roots() {
  NPathTokenRoots roots;
  roots.config = u"/home/k/.config/app/Config";
  roots.install = u"/opt/app";
  roots.userData = u"/home/k/.config/app/";  // holds the configuration folder too
  roots.sshData = u"/home/k/.ssh";
  return roots;
}

TEST(NPathTokensTest, EachTokenExpandsToItsRootWithTheSystemsSeparators) {
  const NPathTokenRoots roots = Roots();
  EXPECT_EQ(NExpandPathTokens(u"${NSW_CONFIG_PATH}\\Keymaps\\vt.key", roots),
            Under(u"/home/k/.config/app/Config", {u"Keymaps", u"vt.key"}));
  EXPECT_EQ(NExpandPathTokens(u"${NSW_INSTALL_PATH}\\Help", roots), Under(u"/opt/app", {u"Help"}));
  EXPECT_EQ(NExpandPathTokens(u"${NSW_USER_DATA_PATH}\\Logs/a.log", roots),
            Under(u"/home/k/.config/app", {u"Logs", u"a.log"}));
  EXPECT_EQ(NExpandPathTokens(u"${NSW_SSH_DATA_PATH}", roots), u"/home/k/.ssh");
  // Only at the start, only known roots, only the exact token.
  EXPECT_EQ(NExpandPathTokens(u"/x/${NSW_CONFIG_PATH}\\a", roots), u"/x/${NSW_CONFIG_PATH}\\a");
  EXPECT_EQ(NExpandPathTokens(u"${nsw_config_path}\\a", roots), u"${nsw_config_path}\\a");
  EXPECT_EQ(NExpandPathTokens(u"${NSW_CONFIG_PATH}\\a", NPathTokenRoots()), u"${NSW_CONFIG_PATH}\\a");
  EXPECT_EQ(NExpandPathTokens(u"C:\\plain\\path", roots), u"C:\\plain\\path");
}

TEST(NPathTokensTest, CollapsingTakesTheFirstRootInTokenOrder) {
  const NPathTokenRoots roots = Roots();
  // Under both the configuration and the user data folder: the first token.
  EXPECT_EQ(NCollapsePathTokens(u"/home/k/.config/app/Config/Keymaps/vt.key", roots),
            u"${NSW_CONFIG_PATH}\\Keymaps\\vt.key");
  EXPECT_EQ(NCollapsePathTokens(u"/home/k/.config/app/Logs/a.log", roots), u"${NSW_USER_DATA_PATH}\\Logs\\a.log");
  EXPECT_EQ(NCollapsePathTokens(u"/opt/app", roots), u"${NSW_INSTALL_PATH}");
  EXPECT_EQ(NCollapsePathTokens(u"/home/k/.ssh/id_ed25519", roots), u"${NSW_SSH_DATA_PATH}\\id_ed25519");
  // Whole names and exact case only.
  EXPECT_EQ(NCollapsePathTokens(u"/opt/application/x", roots), u"/opt/application/x");
  EXPECT_EQ(NCollapsePathTokens(u"/OPT/app/x", roots), u"/OPT/app/x");
  // A later root is used when an earlier one is not known.
  NPathTokenRoots partial = roots;
  partial.config.clear();
  EXPECT_EQ(NCollapsePathTokens(u"/home/k/.config/app/Config/x", partial), u"${NSW_USER_DATA_PATH}\\Config\\x");
}

TEST(NPathTokensTest, RootsWithTheirOwnSeparatorsAndTheProcessRoots) {
  NPathTokenRoots roots;
  roots.config = u"C:\\Users\\K\\Config\\";
  roots.install = u"/";
  EXPECT_EQ(NCollapsePathTokens(u"C:/Users/K/Config/Sessions", roots), u"${NSW_CONFIG_PATH}\\Sessions");
  EXPECT_EQ(NCollapsePathTokens(u"/usr/share/x", roots), u"${NSW_INSTALL_PATH}\\usr\\share\\x");
  EXPECT_EQ(NExpandPathTokens(u"${NSW_INSTALL_PATH}\\usr\\share\\x", roots), Under(u"/usr", {u"share", u"x"}));

  NSetPathTokenRoots(Roots());
  const std::u16string path = Under(u"/home/k/.ssh", {u"known_hosts"});
  EXPECT_EQ(NCollapsePathTokens(path), u"${NSW_SSH_DATA_PATH}\\known_hosts");
  EXPECT_EQ(NExpandPathTokens(NCollapsePathTokens(path)), path);
  NSetPathTokenRoots(NPathTokenRoots());
  EXPECT_EQ(NCollapsePathTokens(path), path);
}

}  // namespace
